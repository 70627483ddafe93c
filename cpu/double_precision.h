// Makes double arithmetic round to double after every operation, whatever the application has set
// the floating point unit to.

#pragma once

#include <cstdint>

// Marks a function whose arithmetic must stay inside a scope: it is not inlined, and its arguments
// are passed as they are declared.
#if defined(__clang__)
#define TAVO_OUT_OF_LINE [[gnu::noinline]]
#else
#define TAVO_OUT_OF_LINE [[gnu::noipa]]
#endif

namespace tavo {

// While an object lives, arithmetic of the calling thread rounds to nearest, and x87 arithmetic has
// the 53-bit mantissa of a double. The former modes come back at the end. MMX values that were left
// in the x87 registers are dropped, since every load would fail with them.
//
// Code that relies on a scope stands in a function of its own that is not inlined, so that no
// operation is moved out of the scope. On processors other than x86 this does nothing.
class DoublePrecisionScope {
  public:
#if defined(__i386__) && defined(__GNUC__)
    DoublePrecisionScope() {
        // The compiler must keep no value in these registers meanwhile.
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
    // Flags raised meanwhile are cleared first: if the application traps on them, its next
    // operation would trap on ours.
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
