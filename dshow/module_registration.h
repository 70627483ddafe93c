// Registration of the module's classes and filters.

#pragma once

#include "dshow/platform.h"
#include "dshow/setup_types.h"

// Registers (or unregisters) every class of g_Templates, and those with setup data with the filter
// mapper too. Doing either twice is S_OK. Unregistering takes the filters out of the mapper first;
// when that fails the classes stay.
STDAPI AMovieDllRegisterServer2(BOOL bRegister);

// One filter with the mapper, in the default category; S_FALSE without setup data.
STDAPI AMovieSetupRegisterFilter2(const AMOVIESETUP_FILTER* psetupdata, IFilterMapper2* pIFM2,
                                  BOOL bRegister);
