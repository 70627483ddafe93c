// Instructions for identification. On processors other than x86 there is no cpuid, and nothing else
// is asked for.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

#if defined(__GNUC__) && (defined(__i386__) || defined(__x86_64__))
#include <cpuid.h>
#define TAVO_HAS_X86_INSTRUCTIONS 1
#else
#define TAVO_HAS_X86_INSTRUCTIONS 0
#endif

namespace tavo {

#if TAVO_HAS_X86_INSTRUCTIONS

// There is cpuid if the ID bit of the flags can be changed.
inline bool CanChangeIdFlag() {
    constexpr uintptr_t kIdFlag = 0x200000;
    uintptr_t changed, original;
#if defined(__x86_64__)
    // Data of the caller may lie below the stack pointer.
    asm volatile(
        "leaq -128(%%rsp), %%rsp\n\t"
        "pushfq\n\tpopq %0\n\tmovq %0, %1\n\t"
        "xorq %2, %0\n\tpushq %0\n\tpopfq\n\t"
        "pushfq\n\tpopq %0\n\t"
        "pushq %1\n\tpopfq\n\t"
        "leaq 128(%%rsp), %%rsp"
        : "=&r"(changed), "=&r"(original)
        : "r"(kIdFlag)
        : "cc", "memory");
#else
    asm volatile(
        "pushfl\n\tpopl %0\n\tmovl %0, %1\n\t"
        "xorl %2, %0\n\tpushl %0\n\tpopfl\n\t"
        "pushfl\n\tpopl %0\n\t"
        "pushl %1\n\tpopfl"
        : "=&r"(changed), "=&r"(original)
        : "i"(kIdFlag)
        : "cc", "memory");
#endif
    return ((changed ^ original) & kIdFlag) != 0;
}

inline CpuidRegisters ReadCpuid(uint32_t leaf) {
    CpuidRegisters registers;
    __cpuid_count(leaf, 0, registers.eax, registers.ebx, registers.ecx, registers.edx);
    return registers;
}

inline uint32_t ReadTimeStamp() {
    uint32_t low, high;
    asm volatile("rdtsc" : "=a"(low), "=d"(high) : : "memory");
    return low;
}

inline void RunBitScans(int count) {
    const uint32_t scanned = 0x80000000;
    for (int i = 0; i < count; ++i) {
        uint32_t position;
        asm volatile("bsfl %1, %0" : "=r"(position) : "r"(scanned) : "cc");
    }
}

#else

inline bool CanChangeIdFlag() { return false; }
inline CpuidRegisters ReadCpuid(uint32_t) { return {}; }
inline uint32_t ReadTimeStamp() { return 0; }
inline void RunBitScans(int) {}

#endif

}  // namespace tavo
