// The module as COM sees it: its table of classes, its instance handle and its entry points.
//
// How a module uses this layer:
//   - it defines g_Templates and g_cTemplates (neither is const);
//   - its DllMain passes its arguments on to DllEntryPoint and returns the result. That reference
//     also pulls the object file of DllGetClassObject and DllCanUnloadNow out of the static
//     library;
//   - its .def file exports DllGetClassObject, DllCanUnloadNow, DllRegisterServer and
//     DllUnregisterServer PRIVATE and without decoration. The first two are here, the last two are
//     the module's own, over AMovieDllRegisterServer2.
// A program that links this library and uses a property page or the entry points defines the table
// too, and sets g_hInst or calls DllEntryPoint.

#pragma once

#include "dshow/base_object.h"
#include "dshow/platform.h"
#include "dshow/setup_types.h"

// Makes an object with a count of 0; null or a failure in *phr when that fails.
typedef CUnknown*(CALLBACK* LPFNNewCOMObject)(LPUNKNOWN pUnkOuter, HRESULT* phr);
// Called when the module is loaded and unloaded, under the loader lock.
typedef void(CALLBACK* LPFNInitRoutine)(BOOL bLoading, const CLSID* rclsid);

// One class of the module.
class CFactoryTemplate {
  public:
    const WCHAR* m_Name;
    const CLSID* m_ClsID;
    LPFNNewCOMObject m_lpfnNew;
    LPFNInitRoutine m_lpfnInit;                       // may be null
    const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;  // null: no filter

    BOOL IsClassID(REFCLSID rclsid) const { return IsEqualCLSID(*m_ClsID, rclsid); }
    CUnknown* CreateInstance(LPUNKNOWN pUnk, HRESULT* phr) const { return m_lpfnNew(pUnk, phr); }
};

extern CFactoryTemplate g_Templates[];
extern int g_cTemplates;

// The module's own instance handle; string and dialog resources come from it.
extern HINSTANCE g_hInst;

// mingw's start-up code calls a function of this name too, once more than DllMain does and before
// the module's constructors have run. Under a symbol of its own this one is not taken for that.
#ifdef __MINGW32__
#define TAVO_DLL_ENTRY_SYMBOL __asm__("tavo_dshow_dll_entry_point")
#else
#define TAVO_DLL_ENTRY_SYMBOL
#endif

// Remembers the handle and calls the init routines of the table. Always TRUE.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE hInstance, ULONG reason,
                                     LPVOID reserved) TAVO_DLL_ENTRY_SYMBOL;

#undef TAVO_DLL_ENTRY_SYMBOL
