// That the trampoline calls from the stack that it is asked for, with the arguments in order.

#include "tests/support/odd_stack.h"

#include <gtest/gtest.h>

namespace tavo::test {
namespace {

#if TAVO_TEST_HAS_ODD_STACK

constexpr uint32_t kOffsets[] = {0, 4, 8, 12};

__attribute__((noinline)) uint32_t StackPointerAtCall(int32_t, int32_t, int32_t) {
    // The frame address is eight below the caller's stack pointer: return address and saved ebp.
    return reinterpret_cast<uint32_t>(__builtin_frame_address(0)) + 8;
}

TEST(OddStackCall, StartsFromTheAlignmentAskedFor) {
    for (uint32_t offset : kOffsets) {
        const uint32_t pointer = CallOnOddStack(offset, StackPointerAtCall, 1, 2, 3);
        EXPECT_EQ((16 - pointer % 16) % 16, offset);
    }
}

uint32_t Digits(uint32_t a, uint32_t b, uint32_t c) { return a * 100 + b * 10 + c; }
__attribute__((stdcall)) uint32_t StdcallDigits(uint32_t a, uint32_t b, uint32_t c) {
    return Digits(a, b, c);
}

TEST(OddStackCall, PassesArgumentsInOrder) {
    for (uint32_t offset : kOffsets) EXPECT_EQ(CallOnOddStack(offset, Digits, 4, 7, 1), 471u);
}

TEST(OddStackCall, TellsHowManyBytesTheFunctionPopped) {
    for (uint32_t offset : kOffsets) {
        const OddStackResult kept =
            CallOnOddStack(reinterpret_cast<const void*>(Digits), {1, 2, 3}, offset);
        EXPECT_EQ(kept.value, 123u);
        EXPECT_EQ(kept.popped, 0u);
        const OddStackResult popped =
            CallOnOddStack(reinterpret_cast<const void*>(StdcallDigits), {3, 2, 1}, offset);
        EXPECT_EQ(popped.value, 321u);
        EXPECT_EQ(popped.popped, 12u);
    }
}

#endif

}  // namespace
}  // namespace tavo::test
