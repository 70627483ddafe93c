// Scratch memory of kernels: column plans, and rows between two blends. Kernels allocate nothing,
// and their callers may have little stack.

#pragma once

#include <cstdint>

namespace tavo {

// One of a few large pieces that all threads share, or a small one on the stack while other kernels
// hold them all. The picture is the same: less memory makes smaller blocks of columns, and more
// passes.
class WorkMemory {
  public:
    // How many kernels have a large piece at a time.
    static constexpr int32_t kSharedPieces = 8;
    static constexpr int32_t kSharedBytes = 40 * 1024;
    // With its calls, a kernel uses at most 16 KB of stack.
    static constexpr int32_t kOwnBytes = 9856;

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
