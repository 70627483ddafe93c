// The platform's memory allocator, for the inside of this library.

#pragma once

#include "dshow/platform.h"

namespace tavo::dshow {

// *ppAlloc is counted, and null on failure. Needs COM on the calling thread.
inline HRESULT CreateMemoryAllocator(IMemAllocator** ppAlloc) {
    *ppAlloc = nullptr;
    return CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                            reinterpret_cast<void**>(ppAlloc));
}

}  // namespace tavo::dshow
