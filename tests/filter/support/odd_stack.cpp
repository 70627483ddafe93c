// The trampoline.
#include "tests/filter/support/odd_stack.h"

#if TAVO_TEST_HAS_ODD_STACK

extern "C" uint32_t TavoTestCallOnOddStack(const void* function, const uint32_t* arguments,
                                           uint32_t count, uint32_t offset, uint32_t* popped);

// Frame: ebp+8 function, +12 arguments, +16 count, +20 offset, +24 popped. The new stack begins
// some way below; ebx holds its pointer as it is just before the call.
asm(R"(
    .text
    .globl _TavoTestCallOnOddStack
_TavoTestCallOnOddStack:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    movl 16(%ebp), %ecx
    movl 12(%ebp), %esi
    andl $-16, %esp
    subl $256, %esp
    addl 20(%ebp), %esp
    leal 4(%esp,%ecx,4), %esp
1:
    testl %ecx, %ecx
    jz 2f
    pushl -4(%esi,%ecx,4)
    decl %ecx
    jmp 1b
2:
    movl %esp, %ebx
    call *8(%ebp)
    movl %esp, %edx
    subl %ebx, %edx
    movl 24(%ebp), %ecx
    movl %edx, (%ecx)
    leal -8(%ebp), %esp
    popl %esi
    popl %ebx
    popl %ebp
    ret
)");

namespace tavo_test {

OddStackResult CallOnOddStack(const void* function, std::initializer_list<uint32_t> arguments,
                              uint32_t offset) {
    OddStackResult result = {};
    result.value =
        TavoTestCallOnOddStack(function, arguments.begin(), static_cast<uint32_t>(arguments.size()),
                               offset, &result.popped);
    return result;
}

}  // namespace tavo_test

#endif
