// CClassFactory.

#include "dshow/class_factory.h"

#include "dshow/helpers.h"

volatile LONG CClassFactory::m_locks = 0;

CClassFactory::CClassFactory(const CFactoryTemplate* pTemplate)
    : CBaseObject(NAME("CClassFactory")), m_template(pTemplate) {}

bool CClassFactory::IsLocked() { return m_locks > 0; }

STDMETHODIMP CClassFactory::QueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_IUnknown || riid == IID_IClassFactory) {
        return GetInterface(static_cast<IClassFactory*>(this), ppv);
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CClassFactory::AddRef() { return InterlockedIncrement(&m_cRef); }

STDMETHODIMP_(ULONG) CClassFactory::Release() {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count == 0) delete this;
    return count;
}

STDMETHODIMP CClassFactory::CreateInstance(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    *ppv = nullptr;
    if (pUnkOuter && riid != IID_IUnknown) return E_NOINTERFACE;

    HRESULT hr = NOERROR;
    CUnknown* object = m_template->CreateInstance(pUnkOuter, &hr);
    if (!object) return FAILED(hr) ? hr : E_OUTOFMEMORY;
    if (FAILED(hr)) {
        delete object;
        return hr;
    }
    // If the interface is refused, releasing this reference deletes the object.
    object->NonDelegatingAddRef();
    hr = object->NonDelegatingQueryInterface(riid, ppv);
    object->NonDelegatingRelease();
    return hr;
}

// The count never goes below 0: an unlock too many would cancel the next lock.
STDMETHODIMP CClassFactory::LockServer(BOOL lock) {
    for (;;) {
        const LONG present = m_locks;
        const LONG wanted = lock ? present + 1 : present - 1;
        if (wanted < 0) return NOERROR;
        if (InterlockedCompareExchange(&m_locks, wanted, present) == present) return NOERROR;
    }
}
