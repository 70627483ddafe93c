// ComPtr: an owning pointer to a COM interface.
//
//   ComPtr<IPin> peer;
//   pin->ConnectedTo(peer.Put());                      // what was held is released first
//   const auto input = peer.As<IMemInputPin>(IID_IMemInputPin);   // null if it has none
//
// It stands alone: streams.h does not bring it, and it needs nothing of the base classes.

#pragma once

#include <unknwn.h>

#include <cstddef>
#include <utility>

namespace tavo {

template <typename Interface>
class ComPtr;

// Another interface of an object, which may be null; null if it has none.
template <typename Interface, typename Object>
ComPtr<Interface> QueryFor(Object* object, REFIID iid) noexcept {
    void* found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(iid, &found))) return {};
    return ComPtr<Interface>::Adopt(static_cast<Interface*>(found));
}

// Null is allowed everywhere but for -> and *.
template <typename Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Adds a reference.
    explicit ComPtr(Interface* pointer) noexcept : pointer_(pointer) {
        if (pointer_ != nullptr) pointer_->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.pointer_) {}
    ComPtr(ComPtr&& other) noexcept : pointer_(other.Detach()) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    // Takes over a reference that the caller owns.
    static ComPtr Adopt(Interface* pointer) noexcept {
        ComPtr adopted;
        adopted.pointer_ = pointer;
        return adopted;
    }
    // Gives the reference to the caller.
    Interface* Detach() noexcept { return std::exchange(pointer_, nullptr); }

    void Reset() noexcept {
        if (Interface* const old = std::exchange(pointer_, nullptr)) old->Release();
    }

    // For calls that hand out a reference.
    Interface** Put() noexcept {
        Reset();
        return &pointer_;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    Interface* Get() const noexcept { return pointer_; }
    Interface* operator->() const noexcept { return pointer_; }
    Interface& operator*() const noexcept { return *pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    // As QueryFor.
    template <typename Other>
    ComPtr<Other> As(REFIID iid) const noexcept {
        return QueryFor<Other>(pointer_, iid);
    }
    template <typename Other>
    ComPtr<Other> As() const noexcept {
        return As<Other>(__uuidof(Other));
    }

  private:
    Interface* pointer_ = nullptr;
};

}  // namespace tavo
