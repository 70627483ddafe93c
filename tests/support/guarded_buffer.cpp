// Buffers on pages of their own, with a protected page on either side.
#include "tests/support/guarded_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavo_test {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kMargin = 64;
constexpr BYTE kCanaryByte = 0xC7;

size_t RoundUp(size_t value, size_t unit) { return (value + unit - 1) / unit * unit; }

}  // namespace

GuardedBuffer::GuardedBuffer(size_t size, BufferGuard guard, size_t align) : size_(size) {
    const size_t margin = guard == BufferGuard::kCanary ? RoundUp(kMargin, align) : 0;
    usableSize_ = std::max(RoundUp(size + 2 * margin, kPage), kPage);
    pages_ = static_cast<BYTE*>(
        VirtualAlloc(nullptr, usableSize_ + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (!pages_) std::abort();
    usable_ = pages_ + kPage;
    if (!VirtualAlloc(usable_, usableSize_, MEM_COMMIT, PAGE_READWRITE)) std::abort();
    std::memset(usable_, kCanaryByte, usableSize_);
    switch (guard) {
        case BufferGuard::kCanary: data_ = usable_ + margin; break;
        case BufferGuard::kPageAfter: data_ = usable_ + usableSize_ - size; break;
        case BufferGuard::kPageBefore: data_ = usable_; break;
    }
}

GuardedBuffer::~GuardedBuffer() { VirtualFree(pages_, 0, MEM_RELEASE); }

bool GuardedBuffer::Intact() const {
    const auto isCanary = [](BYTE value) { return value == kCanaryByte; };
    return std::all_of(usable_, data_, isCanary) &&
           std::all_of(data_ + size_, usable_ + usableSize_, isCanary);
}

}  // namespace tavo_test
