// Calls from a stack that is aligned to 4 bytes only, as 32-bit Windows calls a module.
//
//   OddStackResult r = CallOnOddStack(method, {Word(pin), Word(sample)}, 4);
//   EXPECT_EQ(r.popped, 8u);                  // stdcall: the method took its arguments away
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>

namespace tavo_test {

#if defined(__i386__) || defined(_M_IX86)

#define TAVO_TEST_HAS_ODD_STACK 1

struct OddStackResult {
    uint32_t value;   // eax
    uint32_t popped;  // bytes of arguments that the callee removed
};

inline uint32_t Word(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }
inline uint32_t Word(int value) { return static_cast<uint32_t>(value); }

// At the first instruction of `function` the stack pointer is `offset` bytes (0, 4, 8 or 12) beyond
// a multiple of 16.
OddStackResult CallOnOddStack(const void* function, std::initializer_list<uint32_t> arguments,
                              uint32_t offset);

#else

#define TAVO_TEST_HAS_ODD_STACK 0

#endif

// The method at a slot of an interface's table.
inline const void* MethodAt(const void* interfacePointer, int slot) {
    return (*static_cast<void* const* const*>(interfacePointer))[slot];
}

}  // namespace tavo_test
