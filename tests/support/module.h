// An in-process COM server loaded from its file, without registration.
//
//   Module module(L"TavoResample.ax");
//   ASSERT_TRUE(module.loaded());
//   ComPtr<IBaseFilter> filter = module.Create<IBaseFilter>(clsid);
//   EXPECT_EQ(module.CanUnloadNow(), S_OK);      // after every object is gone
#pragma once

#include <windows.h>

#include "tests/support/com_ptr.h"

namespace tavo_test {

class Module {
  public:
    explicit Module(const wchar_t* path) : handle_(LoadLibraryW(path)) {}
    ~Module() {
        if (handle_) FreeLibrary(handle_);
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    HMODULE handle() const { return handle_; }

    template <typename Function>
    Function Entry(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
    }

    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
        using Type = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
        const auto function = Entry<Type>("DllGetClassObject");
        return function ? function(clsid, iid, object) : E_NOTIMPL;
    }
    HRESULT CanUnloadNow() const { return CallPlain("DllCanUnloadNow"); }
    HRESULT RegisterServer() const { return CallPlain("DllRegisterServer"); }
    HRESULT UnregisterServer() const { return CallPlain("DllUnregisterServer"); }

    template <typename T>
    ComPtr<T> Create(REFCLSID clsid, IUnknown* outer = nullptr) const {
        ComPtr<IClassFactory> factory;
        ComPtr<T> object;
        if (FAILED(GetClassObject(clsid, IID_IClassFactory, factory.PutVoid()))) {
            factory.Detach();
            return object;
        }
        if (FAILED(factory->CreateInstance(outer, __uuidof(T), object.PutVoid()))) object.Detach();
        return object;
    }

  private:
    HRESULT CallPlain(const char* name) const {
        const auto function = Entry<HRESULT(WINAPI*)()>(name);
        return function ? function() : E_NOTIMPL;
    }

    HMODULE handle_;
};

}  // namespace tavo_test
