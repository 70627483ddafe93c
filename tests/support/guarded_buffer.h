// Memory that notices access outside its bounds.
//
//   GuardedBuffer buffer(size, BufferGuard::kPageAfter);   // reading data()[size] faults
//   EXPECT_TRUE(buffer.Intact());                          // kCanary: nothing around was written
//
// kPageAfter ends exactly at a protected page, so that data() is aligned only as `size` allows;
// kPageBefore begins right behind one. kCanary checks 64 bytes on either side, on demand.
#pragma once

#include <windows.h>

#include <cstddef>

namespace tavo_test {

enum class BufferGuard { kCanary, kPageAfter, kPageBefore };

class GuardedBuffer {
  public:
    GuardedBuffer(size_t size, BufferGuard guard, size_t align = 16);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    BYTE* data() const { return data_; }
    size_t size() const { return size_; }
    // The bytes around the buffer, as far as they can be written at all, are as they were made.
    bool Intact() const;

  private:
    BYTE* pages_ = nullptr;  // the whole reservation; committed from usable_ on
    BYTE* usable_ = nullptr;
    size_t usableSize_ = 0;
    BYTE* data_ = nullptr;
    size_t size_;
};

}  // namespace tavo_test
