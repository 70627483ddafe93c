// COM apartment and objects for tests.
//
//   ComApartment com;                                  // first thing in main or in a fixture
//   ComPtr<IGraphBuilder> graph = CreateObject<IGraphBuilder>(CLSID_FilterGraph);
//
// Nothing here knows the product's own base classes: what a test sees must not depend on them.
#pragma once

#include <objbase.h>
#include <windows.h>

#include "dshow/com_ptr.h"

namespace tavo_test {

using tavo::ComPtr;

template <typename T>
ComPtr<T> CreateObject(REFCLSID clsid, IUnknown* outer = nullptr) {
    ComPtr<T> result;
    if (FAILED(CoCreateInstance(clsid, outer, CLSCTX_INPROC_SERVER, __uuidof(T), result.PutVoid())))
        result.Detach();
    return result;
}

// The number of references left after one is added and taken away again.
template <typename T>
ULONG RefCount(T* object) {
    object->AddRef();
    return object->Release();
}

// COM for the life of this object; free-threaded by default, as filters are used from any thread.
class ComApartment {
  public:
    explicit ComApartment(DWORD model = COINIT_MULTITHREADED)
        : result_(CoInitializeEx(nullptr, model)) {}
    ~ComApartment() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

  private:
    HRESULT result_;
};

}  // namespace tavo_test
