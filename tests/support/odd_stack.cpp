// The trampoline.

#include "tests/support/odd_stack.h"

#if TAVO_TEST_HAS_ODD_STACK

namespace tavo::test {

// Out of line: the compiler must not count on the stack pointer across the asm.
__attribute__((noinline)) OddStackResult CallOnOddStack(const void* function,
                                                        std::initializer_list<uint32_t> arguments,
                                                        uint32_t offset) {
    const size_t count = arguments.size();
    // The arguments take count * 4 bytes of their own above the stack pointer of the call.
    uint32_t gapThenValue = (16 - count * 4 % 16) % 16 + offset;
    uint32_t leftThenPopped = count;
    const uint32_t* wordsThenStack = arguments.begin();
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
        "movl %%esp, %%esi\n\t"
        "call *%%edi\n\t"
        "movl %%esp, %%ecx\n\t"
        "subl %%esi, %%ecx\n\t"
        "movl %%ebx, %%esp"
        : "+a"(gapThenValue), "+c"(leftThenPopped), "+S"(wordsThenStack)
        : "D"(function)
        : "ebx", "edx", "memory", "cc");
    return {gapThenValue, leftThenPopped};
}

}  // namespace tavo::test

#endif
