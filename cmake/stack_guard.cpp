// What code with stack protectors needs. The compiler's own library would ask the system for random
// numbers while the module is loaded.

#include <windows.h>

#include <cstdint>

extern "C" {

std::uintptr_t __stack_chk_guard = 0;

// The stack cannot be trusted any more: no handler of the host's is to be looked for on it.
[[noreturn]] void __stack_chk_fail() {
    constexpr DWORD kFastFail = 23;  // since Windows 8
    constexpr unsigned kStackCookieCheckFailure = 2;
    constexpr UINT kStackBufferOverrun = 0xC0000409;
    if (IsProcessorFeaturePresent(kFastFail)) {
        asm volatile("int $0x29" : : "c"(kStackCookieCheckFailure) : "memory");
    }
    TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
    __builtin_trap();
}

}  // extern "C"

namespace {

// Before all other constructors: no function that has begun may see the guard change.
[[gnu::constructor(101)]] void SetGuard() {
    FILETIME time = {};
    LARGE_INTEGER counter = {};
    GetSystemTimeAsFileTime(&time);
    QueryPerformanceCounter(&counter);
    std::uint64_t mixed = static_cast<std::uint64_t>(counter.QuadPart);
    mixed += std::uint64_t{time.dwLowDateTime} << 20;
    mixed ^= reinterpret_cast<std::uintptr_t>(&time) ^ reinterpret_cast<std::uintptr_t>(&SetGuard);
    mixed ^= std::uint64_t{GetCurrentProcessId()} << 32 ^ GetCurrentThreadId();
    mixed *= 0x9E3779B97F4A7C15;
    mixed ^= mixed >> 32;
    // The lowest byte is 0: a string that is copied too far ends there.
    __stack_chk_guard = static_cast<std::uintptr_t>(mixed << 8);
}

}  // namespace
