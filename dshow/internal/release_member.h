// Releases interfaces that base classes hold in bare members.

#pragma once

#include <utility>

namespace tavo::dshow {

// Clears the member before it releases the object.
template <typename T>
void ReleaseMember(T*& member) {
    if (T* p = std::exchange(member, nullptr)) p->Release();
}

}  // namespace tavo::dshow
