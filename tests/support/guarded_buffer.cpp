// Guard pages by the means of each operating system.

#include "tests/support/guarded_buffer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tavo::test {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kMargin = 64;
constexpr size_t kMostCanaries = kPage + kMargin;
constexpr uint8_t kCanary = 0xc9;

char currentTrial[512] = "(no trial)";

[[noreturn]] void Die(const char* what) {
    std::fprintf(stderr, "%s during: %s\n", what, currentTrial);
    std::fflush(stderr);
    std::_Exit(99);
}

#ifdef _WIN32

LONG CALLBACK OnFault(EXCEPTION_POINTERS* info) {
    if (info->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        Die("Access outside a buffer");
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void CatchFaults() { SetUnhandledExceptionFilter(OnFault); }

uint8_t* MapGuarded(size_t accessible) {
    auto* all = static_cast<uint8_t*>(
        VirtualAlloc(nullptr, accessible + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (!all) return nullptr;
    if (VirtualAlloc(all + kPage, accessible, MEM_COMMIT, PAGE_READWRITE)) return all + kPage;
    VirtualFree(all, 0, MEM_RELEASE);
    return nullptr;
}

void Unmap(uint8_t* pages, size_t) { VirtualFree(pages - kPage, 0, MEM_RELEASE); }

#else

void OnFault(int) { Die("Access outside a buffer"); }

void CatchFaults() {
    signal(SIGSEGV, OnFault);
    signal(SIGBUS, OnFault);
}

uint8_t* MapGuarded(size_t accessible) {
    void* all =
        mmap(nullptr, accessible + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) return nullptr;
    auto* pages = static_cast<uint8_t*>(all) + kPage;
    if (mprotect(pages, accessible, PROT_READ | PROT_WRITE) == 0) return pages;
    munmap(all, accessible + 2 * kPage);
    return nullptr;
}

void Unmap(uint8_t* pages, size_t accessible) { munmap(pages - kPage, accessible + 2 * kPage); }

#endif

size_t RoundUp(size_t value, size_t unit) { return (value + unit - 1) / unit * unit; }

bool AllCanaries(const uint8_t* bytes, size_t count) {
    return count == 0 || (bytes[0] == kCanary && std::memcmp(bytes, bytes + 1, count - 1) == 0);
}

}  // namespace

void SetCurrentTrial(const char* text) {
    std::snprintf(currentTrial, sizeof currentTrial, "%s", text);
}

GuardedBuffer::GuardedBuffer(size_t size, BufferGuard guard, size_t align) {
    Place(size, guard, kCanary, align);
}

GuardedBuffer::~GuardedBuffer() { Release(); }

void GuardedBuffer::Release() {
    if (pages_) Unmap(pages_, capacity_);
    pages_ = nullptr;
    capacity_ = 0;
}

void GuardedBuffer::Reserve(size_t size) {
    if (pages_ && size <= capacity_) return;
    static const bool catching = (CatchFaults(), true);
    (void)catching;
    Release();
    const size_t accessible = std::max(RoundUp(size, kPage), kPage);
    pages_ = MapGuarded(accessible);
    if (!pages_) Die("Out of memory");
    capacity_ = accessible;
}

uint8_t* GuardedBuffer::Place(size_t size, BufferGuard guard, uint8_t fill, size_t align) {
    const size_t margin = guard == BufferGuard::kCanary ? RoundUp(kMargin, align) : 0;
    Reserve(size + 2 * margin);
    const size_t before = guard == BufferGuard::kPageAfter ? capacity_ - size : margin;
    data_ = pages_ + before;
    size_ = size;
    canariesBefore_ = std::min(before, kMostCanaries);
    canariesAfter_ = std::min(capacity_ - before - size, kMostCanaries);
    std::memset(data_ - canariesBefore_, kCanary, canariesBefore_);
    std::memset(data_, fill, size);
    std::memset(data_ + size, kCanary, canariesAfter_);
    return data_;
}

bool GuardedBuffer::Intact() const {
    return AllCanaries(data_ - canariesBefore_, canariesBefore_) &&
           AllCanaries(data_ + size_, canariesAfter_);
}

}  // namespace tavo::test
