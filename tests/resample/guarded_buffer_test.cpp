// That the guards of the other tests do stop an access outside a buffer.

#include "tests/resample/support/guarded_buffer.h"

#include <gtest/gtest.h>

namespace tavo::test {
namespace {

constexpr size_t kSize = 5000;

// The program's own end, not the debugger's or a sanitizer's.
const testing::ExitedWithCode stopped(99);

TEST(GuardedBufferDeathTest, TheByteBehindCannotBeTouched) {
    GuardedBuffer buffer;
    volatile uint8_t* bytes = buffer.Place(kSize, Guard::Behind, 1);
    EXPECT_EQ(bytes[kSize - 1], 1);
    EXPECT_EXIT((void)bytes[kSize], stopped, "Access outside a buffer");
    EXPECT_EXIT(bytes[kSize] = 1, stopped, "Access outside a buffer");
}

TEST(GuardedBufferDeathTest, TheByteInFrontCannotBeTouched) {
    GuardedBuffer buffer;
    volatile uint8_t* bytes = buffer.Place(kSize, Guard::InFront, 1);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EXIT((void)bytes[-1], stopped, "Access outside a buffer");
    EXPECT_EXIT(bytes[-1] = 1, stopped, "Access outside a buffer");
}

TEST(GuardedBuffer, CanariesStandOnTheOtherSide) {
    GuardedBuffer buffer;
    uint8_t* bytes = buffer.Place(kSize, Guard::Behind, 0);
    EXPECT_TRUE(buffer.CanariesIntact());
    bytes[-1] ^= 1;
    EXPECT_FALSE(buffer.CanariesIntact());
    bytes = buffer.Place(kSize, Guard::InFront, 0);
    EXPECT_TRUE(buffer.CanariesIntact());
    bytes[kSize] ^= 1;
    EXPECT_FALSE(buffer.CanariesIntact());
}

TEST(GuardedBuffer, HoldsWhatItIsFilledWith) {
    GuardedBuffer buffer;
    for (size_t size : {0, 1, 4095, 4096, 4097, 100000}) {
        for (Guard guard : {Guard::Behind, Guard::InFront}) {
            const uint8_t* bytes = buffer.Place(size, guard, 0x5a);
            for (size_t i = 0; i < size; ++i) ASSERT_EQ(bytes[i], 0x5a);
            EXPECT_TRUE(buffer.CanariesIntact());
        }
    }
}

}  // namespace
}  // namespace tavo::test
