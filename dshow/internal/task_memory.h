// Owners of task memory and of media type records, for the inside of this library.

#pragma once

#include <memory>

#include "dshow/media_type.h"
#include "dshow/platform.h"

namespace tavo::dshow {

struct TaskMemoryFree {
    void operator()(void* p) const { CoTaskMemFree(p); }
};
template <typename T>
using TaskMemory = std::unique_ptr<T, TaskMemoryFree>;

// Null without memory.
template <typename T>
TaskMemory<T> AllocateTask(size_t bytes) {
    return TaskMemory<T>(static_cast<T*>(CoTaskMemAlloc(bytes)));
}

struct MediaTypeDelete {
    void operator()(AM_MEDIA_TYPE* p) const { DeleteMediaType(p); }
};
using OwnedMediaType = std::unique_ptr<AM_MEDIA_TYPE, MediaTypeDelete>;

// Any record may be viewed as a CMediaType, which adds neither data nor a table.
inline const CMediaType* ViewMediaType(const AM_MEDIA_TYPE* pmt) {
    return static_cast<const CMediaType*>(pmt);
}

}  // namespace tavo::dshow
