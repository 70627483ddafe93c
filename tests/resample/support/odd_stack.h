// Calls a function with a stack pointer that is a multiple of four and no more, as Windows does in
// 32-bit programs. Only in 32-bit x86 builds.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo::test {

#if defined(__i386__)

// Calls function with the given words as its arguments. At the call, the stack pointer lies offset
// bytes (a multiple of four) below a multiple of 16, the arguments on top.
uint32_t CallOnOddStack(void (*function)(), const uint32_t* words, size_t count, uint32_t offset);

template <typename Result, typename... Parameters, typename... Arguments>
Result CallOnOddStack(uint32_t offset, Result (*function)(Parameters...), Arguments... arguments) {
    static_assert(((sizeof(Parameters) == 4) && ...));
    const uint32_t words[] = {uint32_t(static_cast<Parameters>(arguments))...};
    return Result(CallOnOddStack(reinterpret_cast<void (*)()>(function), words,
                                 sizeof...(Arguments), offset));
}

#endif

}  // namespace tavo::test
