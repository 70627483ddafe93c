// Double arithmetic inside and outside of a DoublePrecisionScope, whatever the x87 unit is set to.

#include "cpu/double_precision.h"

#include <gtest/gtest.h>

#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

// Volatile operands, and functions of their own: nothing is computed by the compiler or moved out
// of a scope.
volatile double third = 1.0 / 3.0;
volatile double three = 3.0;
volatile double ntscRate = 29.97;
volatile double hundred = 100.0;
volatile double one = 1.0;

// In double arithmetic the product rounds up to 2997; before rounding it is less.
__attribute__((noinline)) int HundredfoldNtscRate() { return static_cast<int>(ntscRate * hundred); }

// Likewise 1.
__attribute__((noinline)) int ThreeThirds() { return static_cast<int>(three * third); }

// 0 when the sum rounds to nearest: one and a quarter of its last place is one again.
__attribute__((noinline)) bool SumExceedsOne() {
    constexpr double kQuarterOfLastPlace = 0x1p-54;
    volatile double tiny = kQuarterOfLastPlace;
    return one + tiny - one > 0;
}

// 1 divided by 3 has all bits of a double.
__attribute__((noinline)) bool QuotientIsDouble() { return one / three - third == 0; }

struct Results {
    int rate;
    int thirds;
    bool exceeds;
    bool quotient;
};

__attribute__((noinline)) Results ComputeInScope() {
    const DoublePrecisionScope scope;
    return {HundredfoldNtscRate(), ThreeThirds(), SumExceedsOne(), QuotientIsDouble()};
}

TEST(DoublePrecisionScope, GivesDoublesUnderEverySetting) {
    for (const X87Setting& setting : kX87Settings) {
        SCOPED_TRACE(setting.name);
        Results results;
        uint16_t after;
        {
            const X87ControlWordScope host(setting.word);
            results = ComputeInScope();
            after = X87ControlWord();
        }
        EXPECT_EQ(results.rate, 2997);
        EXPECT_EQ(results.thirds, 1);
        EXPECT_FALSE(results.exceeds);
        EXPECT_TRUE(results.quotient);
        EXPECT_EQ(after, TAVO_TEST_HAS_X87 ? setting.word : 0);
    }
}

TEST(DoublePrecisionScope, MayBeNested) {
    const uint16_t before = X87ControlWord();
    {
        const DoublePrecisionScope outer;
        const uint16_t inside = X87ControlWord();
        {
            const DoublePrecisionScope inner;
            EXPECT_EQ(HundredfoldNtscRate(), 2997);
        }
        EXPECT_EQ(X87ControlWord(), inside);
        EXPECT_EQ(HundredfoldNtscRate(), 2997);
    }
    EXPECT_EQ(X87ControlWord(), before);
}

#if defined(__i386__)
// What the scope is for: without it these computations go wrong.
TEST(DoublePrecisionScope, IsNeededInExtendedPrecision) {
    int rate, thirds;
    {
        const X87ControlWordScope host(0x037f);
        rate = HundredfoldNtscRate();
        thirds = ThreeThirds();
    }
    EXPECT_EQ(rate, 2996);
    EXPECT_EQ(thirds, 0);
}

// A host that traps on inexact results is not trapped by ours after the scope.
TEST(DoublePrecisionScope, LeavesNoPendingExceptions) {
    uint16_t status;
    int rate;
    {
        const X87ControlWordScope host(0x0340);
        rate = ComputeInScope().rate;
        asm volatile("fwait\n\tfnstsw %0" : "=m"(status) : : "memory");
    }
    EXPECT_EQ(rate, 2997);
    EXPECT_EQ(status & 0x3f, 0);
}
#endif

}  // namespace
}  // namespace tavo::test
