// A function with stack protectors that writes past its buffer ends the process instead of
// returning.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

[[gnu::noinline]] int Fill(int count) {
    volatile int bound = count;
    volatile char buffer[16] = {};
    for (int i = 0; i < bound; ++i) buffer[i] = 'x';
    return buffer[0];
}

TEST(StackGuardDeathTest, AnOverrunEndsTheProcess) {
    EXPECT_EQ(Fill(16), 'x');
    EXPECT_EXIT(Fill(64), testing::ExitedWithCode(static_cast<int>(0xC0000409)), "");
}

TEST(StackGuard, IsSetAndStopsStrings) {
    EXPECT_NE(__stack_chk_guard, 0u);
    EXPECT_EQ(__stack_chk_guard & 0xFF, 0u);
}

}  // namespace
