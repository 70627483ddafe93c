// Owning interface pointer and COM apartment for tests.
//
//   ComApartment com;                                  // first thing in main or in a fixture
//   ComPtr<IGraphBuilder> graph = CreateObject<IGraphBuilder>(CLSID_FilterGraph);
//   ComPtr<IMediaControl> control = graph.As<IMediaControl>();   // empty if it has none
//   pin->ConnectedTo(peer.Put());                      // Put releases what was held before
//
// Nothing here knows the product's own base classes: what a test sees must not depend on them.
#pragma once

#include <objbase.h>
#include <windows.h>

#include <utility>

namespace tavo_test {

template <typename T>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    // Adds a reference.
    explicit ComPtr(T* pointer) : pointer_(pointer) {
        if (pointer_) pointer_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.pointer_) {}
    ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ~ComPtr() { Reset(); }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    // Takes over a reference that the caller owns.
    static ComPtr Adopt(T* pointer) {
        ComPtr result;
        result.pointer_ = pointer;
        return result;
    }

    void Reset() {
        if (T* old = std::exchange(pointer_, nullptr)) old->Release();
    }
    T* Get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    T& operator*() const { return *pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }
    T** Put() {
        Reset();
        return &pointer_;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }
    T* Detach() { return std::exchange(pointer_, nullptr); }

    template <typename U>
    ComPtr<U> As() const {
        return As<U>(__uuidof(U));
    }
    template <typename U>
    ComPtr<U> As(REFIID iid) const {
        ComPtr<U> result;
        if (pointer_ && FAILED(pointer_->QueryInterface(iid, result.PutVoid()))) {
            result.Detach();
        }
        return result;
    }

  private:
    T* pointer_ = nullptr;
};

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
