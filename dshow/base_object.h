// CBaseObject, INonDelegatingUnknown and CUnknown: the count of the module's live objects,
// reference counting and aggregation.

#pragma once

#include "dshow/helpers.h"
#include "dshow/platform.h"

// Counts the live objects of the module, so that the module knows when it may be unloaded.
// Safe on all threads. The name serves debugging only and is not kept.
class CBaseObject {
  public:
    CBaseObject(LPCTSTR pName);
#ifdef UNICODE
    CBaseObject(LPCSTR pName);
#endif
    ~CBaseObject();
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;

    static LONG ObjectsActive();

  private:
    static volatile LONG m_liveObjects;
};

// The object's own IUnknown, as opposed to that of its owner. The three methods stand alone and in
// this order: a pointer to it is also used as an IUnknown.
struct INonDelegatingUnknown {
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID riid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;
};

// Base of every COM object here. It is born with a count of 0: whoever creates it takes the first
// reference. Given an outer object it belongs to that one (aggregation): all interfaces delegate
// to the owner, and the owner is not counted. Counting is atomic.
class CUnknown : public INonDelegatingUnknown, public CBaseObject {
  public:
    // phr is never touched here; derived constructors report failure through it.
    CUnknown(LPCTSTR pName, LPUNKNOWN pUnk);
    CUnknown(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT* phr);
#ifdef UNICODE
    CUnknown(LPCSTR, LPUNKNOWN pUnk) : CUnknown(NAME(""), pUnk) {}
    CUnknown(LPCSTR, LPUNKNOWN pUnk, HRESULT* phr) : CUnknown(NAME(""), pUnk, phr) {}
#endif
    virtual ~CUnknown();

    // The outer object, or this object's own unknown; not counted.
    LPUNKNOWN GetOwner() const { return m_owner; }

    // Derived classes answer their own interfaces with GetInterface, then call this one, which
    // knows IID_IUnknown only: E_POINTER without ppv, E_NOINTERFACE with a null *ppv.
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    // The last release deletes the object. Meanwhile the count is 1, so that a destructor may
    // take and release references on its own object.
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

  protected:
    volatile LONG m_cRef;

  private:
    const LPUNKNOWN m_owner;
};

// Hands out pUnk as it is given, counted through itself, so that an aggregated object's owner is
// counted. Cast to the very interface that was asked for first. E_POINTER without ppv.
STDAPI GetInterface(LPUNKNOWN pUnk, void** ppv);

// IUnknown of an interface, in terms of the owner. Every class that adds an interface to its bases
// repeats it in its public part.
#define DECLARE_IUNKNOWN                                                    \
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {         \
        return GetOwner()->QueryInterface(riid, ppv);                       \
    }                                                                       \
    STDMETHODIMP_(ULONG) AddRef() override { return GetOwner()->AddRef(); } \
    STDMETHODIMP_(ULONG) Release() override { return GetOwner()->Release(); }
