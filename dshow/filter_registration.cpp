// AMovieSetupRegisterFilter2.

#include "dshow/helpers.h"
#include "dshow/module_registration.h"

STDAPI AMovieSetupRegisterFilter2(const AMOVIESETUP_FILTER* psetupdata, IFilterMapper2* pIFM2,
                                  BOOL bRegister) {
    CheckPointer(psetupdata, S_FALSE);
    CheckPointer(pIFM2, E_POINTER);

    // Also before registering, so that nothing of an older version's entry stays.
    HRESULT hr = pIFM2->UnregisterFilter(nullptr, nullptr, *psetupdata->clsID);
    if (bRegister) {
        REGFILTER2 entry = {};
        entry.dwVersion = 1;
        entry.dwMerit = psetupdata->dwMerit;
        entry.cPins = psetupdata->nPins;
        entry.rgPins = psetupdata->lpPin;
        hr = pIFM2->RegisterFilter(*psetupdata->clsID, psetupdata->strName, nullptr, nullptr,
                                   nullptr, &entry);
    }
    return hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? NOERROR : hr;
}
