// Uses the filter "Mira Vantrel" from a module file that need not be registered.
//
//   unregistered PATH\TavoResample.ax
//
// What a program takes from here is the class Module.

#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>

#include "vantrel_settings.h"

using Microsoft::WRL::ComPtr;

// A loaded module. All objects from it are released before it goes: that unloads it.
class Module {
  public:
    // Takes a full path: a bare name would be looked for in the folders of the system and of
    // others.
    explicit Module(const wchar_t* path)
        : module_(LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {}
    ~Module() {
        if (module_ != nullptr && CanUnload()) FreeLibrary(module_);
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    bool IsLoaded() const { return module_ != nullptr; }
    bool CanUnload() const {
        using Function = HRESULT(STDAPICALLTYPE*)();
        const Function canUnload = Find<Function>("DllCanUnloadNow");
        return canUnload != nullptr && canUnload() == S_OK;
    }
    // What CoCreateInstance is for a class that is registered.
    HRESULT Create(REFCLSID clsid, REFIID iid, void** object) const {
        ComPtr<IClassFactory> factory;
        const HRESULT hr = Factory(clsid, factory);
        return FAILED(hr) ? hr : factory->CreateInstance(nullptr, iid, object);
    }
    // Lets CoCreateInstance find a class in this process until CoRevokeClassObject: property frames
    // make their pages with it.
    HRESULT Announce(REFCLSID clsid, DWORD* cookie) const {
        ComPtr<IClassFactory> factory;
        const HRESULT hr = Factory(clsid, factory);
        return FAILED(hr) ? hr
                          : CoRegisterClassObject(clsid, factory.Get(), CLSCTX_INPROC_SERVER,
                                                  REGCLS_MULTIPLEUSE, cookie);
    }

  private:
    template <typename Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

    HRESULT Factory(REFCLSID clsid, ComPtr<IClassFactory>& factory) const {
        using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        const Function getClass = Find<Function>("DllGetClassObject");
        return getClass == nullptr ? E_NOINTERFACE : getClass(clsid, IID_PPV_ARGS(&factory));
    }

    HMODULE module_;
};

static HRESULT MakePage(const Module& module) {
    DWORD cookie = 0;
    HRESULT hr = module.Announce(CLSID_ResamplePropertyPage, &cookie);
    if (FAILED(hr)) return hr;
    ComPtr<IPropertyPage> page;
    hr = CoCreateInstance(CLSID_ResamplePropertyPage, nullptr, CLSCTX_INPROC, IID_PPV_ARGS(&page));
    CoRevokeClassObject(cookie);
    return hr;
}

static int Use(const Module& module) {
    ComPtr<IGraphBuilder> graph;
    ComPtr<IBaseFilter> resizer;
    ComPtr<IVantrelSettings> settings;
    HRESULT hr = module.Create(CLSID_VantrelFilter, IID_PPV_ARGS(&resizer));
    if (SUCCEEDED(hr)) hr = resizer.As(&settings);
    if (SUCCEEDED(hr)) {
        hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC, IID_PPV_ARGS(&graph));
    }
    if (SUCCEEDED(hr)) hr = graph->AddFilter(resizer.Get(), L"Resizer");
    if (SUCCEEDED(hr)) hr = MakePage(module);
    if (FAILED(hr)) {
        std::fprintf(stderr, "error 0x%08lx\n", static_cast<unsigned long>(hr));
        return 1;
    }
    int width = 0, height = 0;
    settings->SetOutputSize(640, 360);
    settings->GetOutputSize(&width, &height);
    std::printf("In a graph, set to %dx%d.\n", width, height);
    return 0;
}

int wmain(int count, wchar_t** values) {
    if (count != 2) {
        std::fprintf(stderr, "Usage: unregistered PATH\\TavoResample.ax\n");
        return 2;
    }
    if (FAILED(CoInitialize(nullptr))) return 1;
    int code = 1;
    {
        const Module module(values[1]);
        if (module.IsLoaded()) {
            code = Use(module);
            std::printf("%s\n", module.CanUnload() ? "Unloading." : "Still in use.");
        } else {
            std::fprintf(stderr, "%ls: error %lu (is it of this program's bitness?)\n", values[1],
                         GetLastError());
        }
    }
    CoUninitialize();
    return code;
}
