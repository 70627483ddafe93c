// CSystemClock: the base clock as an object of its own that an application may adjust.

#pragma once

#include "dshow/reference_clock.h"

class CSystemClock : public CBaseReferenceClock, public IAMClockAdjust, public IPersist {
  public:
    CSystemClock(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT* phr);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IAMClockAdjust
    STDMETHODIMP SetClockDelta(REFERENCE_TIME delta) override;

    // IPersist
    STDMETHODIMP GetClassID(CLSID* pClsID) override;
};
