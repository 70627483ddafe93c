#include "picture/frame_buffer.h"

#include <new>

namespace tavo {
namespace {

// Block copies move up to seven bytes past a picture.
constexpr int64_t kSlack = 8;

}  // namespace

bool FrameBuffer::Allocate(int64_t bytes) {
    data_.reset(new (std::nothrow) uint8_t[static_cast<size_t>(bytes + kSlack)]());
    size_ = data_ ? static_cast<size_t>(bytes) : 0;
    return data_ != nullptr;
}

}  // namespace tavo
