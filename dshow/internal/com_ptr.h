// ComPtr: a small owning interface pointer, for the inside of this library.

#pragma once

#include <utility>

#include "dshow/platform.h"

namespace tavo::dshow {

// Releases on destruction; null is allowed everywhere.
template <typename T>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    ~ComPtr() { Reset(); }

    // A further reference to p.
    static ComPtr Share(T* p) {
        ComPtr shared;
        if (p) p->AddRef();
        shared.m_p = p;
        return shared;
    }

    ComPtr(ComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    ComPtr& operator=(ComPtr&& other) noexcept {
        std::swap(m_p, other.m_p);
        return *this;
    }

    T* Get() const { return m_p; }
    T* operator->() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

    // For calls that hand out a reference; what was held is released first.
    T** Put() {
        Reset();
        return &m_p;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }
    // Gives the reference to the caller.
    T* Detach() { return std::exchange(m_p, nullptr); }
    void Reset() {
        if (T* p = std::exchange(m_p, nullptr)) p->Release();
    }

  private:
    T* m_p = nullptr;
};

// Another interface of p, or null.
template <typename T>
ComPtr<T> QueryFor(IUnknown* p, REFIID iid) {
    ComPtr<T> result;
    if (p && FAILED(p->QueryInterface(iid, result.PutVoid()))) result.Detach();
    return result;
}

// Releases and clears an interface member.
template <typename T>
void ReleaseMember(T*& member) {
    if (T* p = std::exchange(member, nullptr)) p->Release();
}

}  // namespace tavo::dshow
