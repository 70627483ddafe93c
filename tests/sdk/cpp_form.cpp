// The settings header in C++, compiled as C++11 and C++20, and with CINTERFACE.

#include "vantrel_settings.h"

static_assert(CLSID_VantrelFilter.Data1 == 0x80650fa1 && IID_IVantrelSettings.Data1 == 0x4e0db2c5,
              "the identifiers are constants");

#ifdef CINTERFACE
static_assert(sizeof(IVantrelSettingsVtbl) == 17 * sizeof(void*), "the table has 17 functions");
#else
static_assert(sizeof(VantrelMethodAuto) == 4, "the codes have 32 bits");
static_assert(sizeof(IVantrelSettings) == sizeof(void*), "the interface has no fields");
#endif
