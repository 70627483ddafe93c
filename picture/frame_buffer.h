// Memory that frames are read from and written to.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tavo {

// A block of memory that a frame is read from or written to; somebody else's.
struct FrameSpan {
    uint8_t* data;
    size_t size;
};

// A block of one's own, with room behind it for what a block copy moves past a picture.
class FrameBuffer {
  public:
    // All zero. False, and empty, when memory runs out.
    bool Allocate(int64_t bytes);

    uint8_t* Data() const { return data_.get(); }
    size_t Size() const { return size_; }
    FrameSpan Span() const { return {Data(), Size()}; }
    explicit operator bool() const { return data_ != nullptr; }

  private:
    std::unique_ptr<uint8_t[]> data_;
    size_t size_ = 0;
};

}  // namespace tavo
