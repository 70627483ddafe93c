// Memory that borders on an inaccessible page, so that a single byte read or written beyond it ends
// the program, with canaries on the side that has no such page.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo::test {

enum class Guard {
    Behind,   // the byte after the buffer cannot be touched
    InFront,  // the byte before it cannot
};

// One piece of memory between two guard pages, placed anew for every trial and grown when needed.
class GuardedBuffer {
  public:
    GuardedBuffer() = default;
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // size bytes next to the guard page, all set to fill; canaries beside them. Never null.
    uint8_t* Place(size_t size, Guard guard, uint8_t fill);

    // True while the canaries of the last placement are whole.
    bool CanariesIntact() const;

  private:
    void Reserve(size_t size);
    void Release();

    uint8_t* pages_ = nullptr;  // the first accessible page
    size_t capacity_ = 0;       // accessible bytes
    uint8_t* canaries_ = nullptr;
};

// Names what is being tried, for the message when a guard page is hit.
void SetCurrentTrial(const char* text);

}  // namespace tavo::test
