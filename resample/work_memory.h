// What a kernel keeps besides pictures: plans of columns, rows between two blends. Kernels allocate
// nothing, and their callers may have little stack.

#pragma once

#include <cstdint>

namespace tavo {

// One of the few large pieces that all threads share, or, while other kernels hold them all, a
// small one of its own. The bytes written are the same: with less memory fewer columns are planned
// at once, and the picture is gone through more often.
class WorkMemory {
  public:
    // How many kernels may run at a time before one has to do with less.
    static constexpr int32_t kSharedPieces = 8;
    static constexpr int32_t kSharedBytes = 40 * 1024;
    // Leaves enough for calls: a kernel uses 16 KB of stack at the most.
    static constexpr int32_t kOwnBytes = 9728;

    WorkMemory();
    ~WorkMemory();
    WorkMemory(const WorkMemory&) = delete;
    WorkMemory& operator=(const WorkMemory&) = delete;

    bool IsShared() const { return piece_ >= 0; }
    // At a multiple of 64.
    uint8_t* Bytes() { return bytes_; }
    int32_t Size() const { return IsShared() ? kSharedBytes : kOwnBytes; }

  private:
    int32_t piece_ = -1;
    uint8_t* bytes_ = own_;
    alignas(64) uint8_t own_[kOwnBytes];
};

}  // namespace tavo
