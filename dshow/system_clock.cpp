// CSystemClock.

#include "dshow/system_clock.h"

#include "dshow/helpers.h"

CSystemClock::CSystemClock(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT* phr)
    : CBaseReferenceClock(pName, pUnk, phr) {}

STDMETHODIMP CSystemClock::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IPersist) return GetInterface(static_cast<IPersist*>(this), ppv);
    if (riid == IID_IAMClockAdjust) return GetInterface(static_cast<IAMClockAdjust*>(this), ppv);
    return CBaseReferenceClock::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CSystemClock::SetClockDelta(REFERENCE_TIME delta) { return SetTimeDelta(delta); }

STDMETHODIMP CSystemClock::GetClassID(CLSID* pClsID) {
    CheckPointer(pClsID, E_POINTER);
    *pClsID = CLSID_SystemClock;
    return NOERROR;
}
