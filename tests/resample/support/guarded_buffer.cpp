// Guard pages by the means of each operating system.

#include "tests/resample/support/guarded_buffer.h"

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
constexpr size_t kCanaryBytes = 64;
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

}  // namespace

void SetCurrentTrial(const char* text) {
    std::snprintf(currentTrial, sizeof currentTrial, "%s", text);
}

GuardedBuffer::~GuardedBuffer() { Release(); }

void GuardedBuffer::Release() {
    if (pages_) Unmap(pages_, capacity_);
    pages_ = nullptr;
    capacity_ = 0;
}

void GuardedBuffer::Reserve(size_t size) {
    if (size <= capacity_) return;
    static const bool catching = (CatchFaults(), true);
    (void)catching;
    Release();
    const size_t accessible = (size + kPage - 1) / kPage * kPage;
    pages_ = MapGuarded(accessible);
    if (!pages_) Die("Out of memory");
    capacity_ = accessible;
}

uint8_t* GuardedBuffer::Place(size_t size, Guard guard, uint8_t fill) {
    Reserve(size + kCanaryBytes);
    uint8_t* start = guard == Guard::Behind ? pages_ + capacity_ - size : pages_;
    canaries_ = guard == Guard::Behind ? start - kCanaryBytes : start + size;
    std::memset(canaries_, kCanary, kCanaryBytes);
    std::memset(start, fill, size);
    return start;
}

bool GuardedBuffer::CanariesIntact() const {
    for (size_t i = 0; i < kCanaryBytes; ++i) {
        if (canaries_[i] != kCanary) return false;
    }
    return true;
}

}  // namespace tavo::test
