// CBaseObject, CUnknown and GetInterface.

#include "dshow/base_object.h"

#include <algorithm>

volatile LONG CBaseObject::m_liveObjects = 0;

CBaseObject::CBaseObject(LPCTSTR) { InterlockedIncrement(&m_liveObjects); }

#ifdef UNICODE
CBaseObject::CBaseObject(LPCSTR) { InterlockedIncrement(&m_liveObjects); }
#endif

CBaseObject::~CBaseObject() { InterlockedDecrement(&m_liveObjects); }

LONG CBaseObject::ObjectsActive() { return m_liveObjects; }

// The owner of an object of its own is its non-delegating unknown: that interface has the methods
// of IUnknown in the same places.
CUnknown::CUnknown(LPCTSTR pName, LPUNKNOWN pUnk)
    : CBaseObject(pName),
      m_cRef(0),
      m_owner(pUnk ? pUnk
                   : reinterpret_cast<LPUNKNOWN>(static_cast<INonDelegatingUnknown*>(this))) {}

CUnknown::CUnknown(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT*) : CUnknown(pName, pUnk) {}

CUnknown::~CUnknown() = default;

STDMETHODIMP CUnknown::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_IUnknown) {
        auto* self = static_cast<INonDelegatingUnknown*>(this);
        self->NonDelegatingAddRef();
        *ppv = self;
        return NOERROR;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CUnknown::NonDelegatingAddRef() {
    return std::max<LONG>(InterlockedIncrement(&m_cRef), 1);
}

STDMETHODIMP_(ULONG) CUnknown::NonDelegatingRelease() {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count != 0) return std::max<LONG>(count, 1);
    InterlockedIncrement(&m_cRef);
    delete this;
    return 0;
}

STDAPI GetInterface(LPUNKNOWN pUnk, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    *ppv = pUnk;
    pUnk->AddRef();
    return NOERROR;
}
