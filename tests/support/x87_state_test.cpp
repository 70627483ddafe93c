// That the check for "missing emms" sees a register in use, without which its silence means
// nothing.

#include "tests/support/x87_state.h"

#include <gtest/gtest.h>

#include "cpu/cpu_level.h"

namespace tavo::test {
namespace {

TEST(X87State, IsEmptyInOrdinaryCode) { EXPECT_EQ(X87TagWord(), kEmptyTagWord); }

#if TAVO_TEST_HAS_X87
TEST(X87State, ShowsMmxRegistersInUse) {
    if (GetCpuLevel() == 0) GTEST_SKIP() << "no MMX";
    asm volatile("pxor %%mm0, %%mm0" : : : "memory");
    const uint16_t used = X87TagWord();
    asm volatile("emms" : : : "memory");
    EXPECT_NE(used, kEmptyTagWord);
    EXPECT_EQ(X87TagWord(), kEmptyTagWord);
}

TEST(X87State, SetsAndRestoresTheControlWord) {
    const uint16_t before = X87ControlWord();
    for (const X87Setting& setting : kX87Settings) {
        uint16_t inside;
        {
            const X87ControlWordScope scope(setting.word);
            inside = X87ControlWord();
        }
        EXPECT_EQ(inside, setting.word) << setting.name;
        EXPECT_EQ(X87ControlWord(), before);
    }
}
#endif

}  // namespace
}  // namespace tavo::test
