// The module's instance handle and entry points. They stay in one file: the module's DllMain refers
// to DllEntryPoint, and so brings the exported functions in with it.

#include "dshow/module.h"

#include <new>

#include "dshow/class_factory.h"
#include "dshow/helpers.h"

HINSTANCE g_hInst = nullptr;

namespace {

void CallInitRoutines(BOOL loading) {
    for (int i = 0; i < g_cTemplates; ++i) {
        const CFactoryTemplate& entry = g_Templates[i];
        if (entry.m_lpfnInit) entry.m_lpfnInit(loading, entry.m_ClsID);
    }
}

}  // namespace

extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE hInstance, ULONG reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_hInst = hInstance;
        CallInitRoutines(TRUE);
    } else if (reason == DLL_PROCESS_DETACH) {
        CallInitRoutines(FALSE);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;

    for (int i = 0; i < g_cTemplates; ++i) {
        if (!g_Templates[i].IsClassID(rclsid)) continue;
        auto* factory = new (std::nothrow) CClassFactory(&g_Templates[i]);
        CheckPointer(factory, E_OUTOFMEMORY);
        return GetInterface(static_cast<IClassFactory*>(factory), ppv);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return !CClassFactory::IsLocked() && CBaseObject::ObjectsActive() == 0 ? S_OK : S_FALSE;
}
