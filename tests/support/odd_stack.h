// Calls from a stack that is aligned to four bytes only, as 32-bit Windows calls a module. Only in
// 32-bit x86 builds.
//
//   CallOnOddStack(4, BuildAxisMap, 720, 480, 0);
//   OddStackResult r = CallOnOddStack(method, {Word(pin), Word(sample)}, 4);
//   EXPECT_EQ(r.popped, 8u);                  // stdcall: the method took its arguments away

#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#if defined(__i386__)
#define TAVO_TEST_HAS_ODD_STACK 1
#else
#define TAVO_TEST_HAS_ODD_STACK 0
#endif

namespace tavo::test {

#if TAVO_TEST_HAS_ODD_STACK

struct OddStackResult {
    uint32_t value;   // eax
    uint32_t popped;  // bytes of arguments that the function removed
};

inline uint32_t Word(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }
inline uint32_t Word(int value) { return static_cast<uint32_t>(value); }

// Calls a function with these words as its arguments. At the call, the stack pointer lies offset
// bytes (0, 4, 8 or 12) below a multiple of 16.
OddStackResult CallOnOddStack(const void* function, std::initializer_list<uint32_t> arguments,
                              uint32_t offset);

// The same for a function of which the compiler knows the type.
template <typename Result, typename... Parameters, typename... Arguments>
Result CallOnOddStack(uint32_t offset, Result (*function)(Parameters...), Arguments... arguments) {
    static_assert(((sizeof(Parameters) == 4) && ...));
    const OddStackResult result =
        CallOnOddStack(reinterpret_cast<const void*>(function),
                       {uint32_t(static_cast<Parameters>(arguments))...}, offset);
    return Result(result.value);
}

#endif

// The method at a slot of an interface's table.
inline const void* MethodAt(const void* interfacePointer, int slot) {
    return (*static_cast<void* const* const*>(interfacePointer))[slot];
}

}  // namespace tavo::test
