// A small owning pointer for COM interfaces.

#pragma once

#include <unknwn.h>

#include <utility>

namespace tavo {

template <typename Interface>
class ComPtr {
  public:
    ComPtr() = default;
    // Takes a reference of its own.
    explicit ComPtr(Interface* pointer) : pointer_(pointer) {
        if (pointer_ != nullptr) pointer_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.pointer_) {}
    ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    void Reset() {
        if (pointer_ != nullptr) std::exchange(pointer_, nullptr)->Release();
    }

    // For functions that hand out a counted pointer.
    Interface** Put() {
        Reset();
        return &pointer_;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    Interface* Get() const { return pointer_; }
    Interface* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }

    // Null when the object does not have the interface.
    template <typename Other>
    ComPtr<Other> As(REFIID iid) const {
        ComPtr<Other> other;
        if (pointer_ == nullptr || FAILED(pointer_->QueryInterface(iid, other.PutVoid()))) {
            return {};
        }
        return other;
    }

  private:
    Interface* pointer_ = nullptr;
};

}  // namespace tavo
