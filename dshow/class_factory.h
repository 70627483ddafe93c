// CClassFactory: makes objects of one class of the module. For the inside of this library.

#pragma once

#include "dshow/base_object.h"
#include "dshow/module.h"
#include "dshow/platform.h"

// Counts as an object of the module, with a count of 0 at birth. Safe on all threads.
class CClassFactory final : public IClassFactory, public CBaseObject {
  public:
    explicit CClassFactory(const CFactoryTemplate* pTemplate);

    // Server locks held on the whole module.
    static bool IsLocked();

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // An aggregated object is asked for IUnknown only, and hands out the non-delegating one.
    STDMETHODIMP CreateInstance(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) override;
    STDMETHODIMP LockServer(BOOL lock) override;

  private:
    static volatile LONG m_locks;

    const CFactoryTemplate* const m_template;
    volatile LONG m_cRef = 0;
};
