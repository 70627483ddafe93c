// Memory between two inaccessible pages. An access beyond the guarded end faults, and the program
// says so and exits; a write beyond another end is found afterwards.
//
//   GuardedBuffer buffer(size, BufferGuard::kPageAfter);   // reading data()[size] faults
//   EXPECT_TRUE(buffer.Intact());                          // nothing around it was written

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo::test {

enum class BufferGuard {
    kCanary,      // canaries on both sides, at least 64 bytes each
    kPageAfter,   // ends at an inaccessible page, so it is aligned only as its size allows
    kPageBefore,  // begins at one
};

// Not safe for use by two threads at a time.
class GuardedBuffer {
  public:
    GuardedBuffer() = default;
    GuardedBuffer(size_t size, BufferGuard guard, size_t align = 16);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // Makes it a buffer of another size, all bytes set to fill. Reuses the memory that there is, if
    // it is large enough. Never null. What the buffer held is lost.
    uint8_t* Place(size_t size, BufferGuard guard, uint8_t fill, size_t align = 1);

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }

    // True while the canaries are whole. They fill the accessible memory around the buffer, up to
    // a page on either side.
    bool Intact() const;

  private:
    void Reserve(size_t size);
    void Release();

    uint8_t* pages_ = nullptr;  // the first accessible byte
    size_t capacity_ = 0;       // accessible bytes
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
    size_t canariesBefore_ = 0;
    size_t canariesAfter_ = 0;
};

// Names what is being tried, for the message at a fault.
void SetCurrentTrial(const char* text);

}  // namespace tavo::test
