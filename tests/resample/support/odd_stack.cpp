// The trampoline.

#include "tests/resample/support/odd_stack.h"

namespace tavo::test {

// Kept out of line: the compiler must not count on the stack pointer across the asm.
__attribute__((noinline)) uint32_t CallOnOddStack(void (*function)(), const uint32_t* words,
                                                  size_t count, uint32_t offset) {
    // The arguments take count * 4 bytes of their own above the stack pointer of the call.
    const uint32_t gap = (16 - count * 4 % 16) % 16 + offset;
    uint32_t gapThenResult = gap;
    size_t left = count;
    asm volatile(
        "movl %%esp, %%ebx\n\t"
        "andl $-16, %%esp\n\t"
        "subl %%eax, %%esp\n"
        "1:\n\t"
        "testl %%ecx, %%ecx\n\t"
        "jz 2f\n\t"
        "pushl -4(%%esi,%%ecx,4)\n\t"
        "decl %%ecx\n\t"
        "jmp 1b\n"
        "2:\n\t"
        "call *%%edi\n\t"
        "movl %%ebx, %%esp"
        : "+a"(gapThenResult), "+c"(left)
        : "D"(function), "S"(words)
        : "ebx", "edx", "memory", "cc");
    return gapThenResult;
}

}  // namespace tavo::test
