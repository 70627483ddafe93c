// Makes double arithmetic round to double after every operation, whatever the processor's floating
// point unit was set to by the application around us.

#pragma once

#include <cstdint>

namespace tavo {

// While an object of this class lives, arithmetic of the calling thread rounds to nearest, and x87
// arithmetic is done with the 53 bit mantissa of a double; the former modes come back at the end.
// MMX values that somebody left in the x87 registers are dropped: with them every load would fail.
// Code that computes under it stands in a function of its own that is not inlined, so that no
// operation is moved out of the scope. On other processors than x86 this does nothing.
class DoublePrecisionScope {
  public:
#if defined(__i386__) && defined(__GNUC__)
    DoublePrecisionScope() {
        // No value of ours may stay in a register meanwhile.
        asm volatile("fnstcw %0\n\tfninit"
                     : "=m"(saved_)
                     :
                     : "memory", "st", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)",
                       "st(7)");
        constexpr uint16_t kAllExceptionsMasked = 0x003f;
        constexpr uint16_t kPrecisionDouble = 0x0200;  // rounding control 00: to nearest
        const uint16_t wanted = kAllExceptionsMasked | kPrecisionDouble;
        asm volatile("fldcw %0" : : "m"(wanted) : "memory");
    }
    // The flags raised meanwhile go first: an application that traps on inexact results would trap
    // on ours at its next operation.
    ~DoublePrecisionScope() { asm volatile("fnclex\n\tfldcw %0" : : "m"(saved_) : "memory"); }
#elif defined(__x86_64__) && defined(__GNUC__)
    DoublePrecisionScope() : saved_(__builtin_ia32_stmxcsr()) {
        constexpr uint32_t kAllExceptionsMasked = 0x1f80;  // rounding to nearest, no flushing
        __builtin_ia32_ldmxcsr(kAllExceptionsMasked);
    }
    ~DoublePrecisionScope() { __builtin_ia32_ldmxcsr(saved_); }
#else
    DoublePrecisionScope() {}
    ~DoublePrecisionScope() {}
#endif
    DoublePrecisionScope(const DoublePrecisionScope&) = delete;
    DoublePrecisionScope& operator=(const DoublePrecisionScope&) = delete;

  private:
#if defined(__i386__) && defined(__GNUC__)
    uint16_t saved_;
#elif defined(__x86_64__) && defined(__GNUC__)
    uint32_t saved_;
#endif
};

}  // namespace tavo
