// That an access outside a guarded buffer is noticed.

#include "tests/support/guarded_buffer.h"

#include <gtest/gtest.h>

namespace tavo::test {
namespace {

constexpr size_t kSize = 5000;
constexpr size_t kPage = 4096;
constexpr BufferGuard kGuards[] = {BufferGuard::kCanary, BufferGuard::kPageAfter,
                                   BufferGuard::kPageBefore};

// The program's own end, not the debugger's or a sanitizer's.
const testing::ExitedWithCode stopped(99);

TEST(GuardedBufferDeathTest, TheByteBehindCannotBeTouched) {
    GuardedBuffer buffer;
    volatile uint8_t* bytes = buffer.Place(kSize, BufferGuard::kPageAfter, 1);
    EXPECT_EQ(bytes[kSize - 1], 1);
    EXPECT_EXIT((void)bytes[kSize], stopped, "Access outside a buffer");
    EXPECT_EXIT(bytes[kSize] = 1, stopped, "Access outside a buffer");
}

TEST(GuardedBufferDeathTest, TheByteInFrontCannotBeTouched) {
    GuardedBuffer buffer;
    volatile uint8_t* bytes = buffer.Place(kSize, BufferGuard::kPageBefore, 1);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EXIT((void)bytes[-1], stopped, "Access outside a buffer");
    EXPECT_EXIT(bytes[-1] = 1, stopped, "Access outside a buffer");
}

TEST(GuardedBufferDeathTest, WholePagesAreGuardedOnBothSides) {
    for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
        const GuardedBuffer buffer(2 * kPage, guard);
        volatile uint8_t* bytes = buffer.data();
        EXPECT_EXIT((void)bytes[-1], stopped, "Access outside a buffer");
        EXPECT_EXIT((void)bytes[2 * kPage], stopped, "Access outside a buffer");
    }
}

TEST(GuardedBuffer, CanariesStandOnTheOtherSide) {
    GuardedBuffer buffer;
    uint8_t* bytes = buffer.Place(kSize, BufferGuard::kPageAfter, 0);
    EXPECT_TRUE(buffer.Intact());
    bytes[-1] ^= 1;
    EXPECT_FALSE(buffer.Intact());
    bytes = buffer.Place(kSize, BufferGuard::kPageBefore, 0);
    EXPECT_TRUE(buffer.Intact());
    bytes[kSize] ^= 1;
    EXPECT_FALSE(buffer.Intact());
}

TEST(GuardedBuffer, EveryAccessibleByteAroundItIsACanary) {
    for (BufferGuard guard : kGuards) {
        const size_t margin = guard == BufferGuard::kCanary ? 64 : 0;
        const size_t after = guard == BufferGuard::kPageAfter ? 0 : 2 * kPage - kSize - margin;
        const size_t before = 2 * kPage - kSize - after;
        const GuardedBuffer buffer(kSize, guard);
        const auto expectNoticed = [&](uint8_t& byte) {
            ASSERT_TRUE(buffer.Intact());
            byte ^= 0x80;
            EXPECT_FALSE(buffer.Intact());
            byte ^= 0x80;
        };
        for (size_t i = 1; i <= before; ++i) expectNoticed(*(buffer.data() - i));
        for (size_t i = 0; i < after; ++i) expectNoticed(buffer.data()[kSize + i]);
    }
}

TEST(GuardedBuffer, ACanaryBufferIsAlignedAsAsked) {
    for (size_t align : {1, 16, 64, 256}) {
        const GuardedBuffer buffer(kSize, BufferGuard::kCanary, align);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.data()) % align, 0u);
        EXPECT_EQ(buffer.size(), kSize);
    }
}

TEST(GuardedBuffer, HoldsWhatItIsFilledWith) {
    GuardedBuffer buffer;
    for (size_t size : {0, 1, 4095, 4096, 4097, 100000, 17}) {
        for (BufferGuard guard : kGuards) {
            const uint8_t* bytes = buffer.Place(size, guard, 0x5a);
            EXPECT_EQ(bytes, buffer.data());
            for (size_t i = 0; i < size; ++i) ASSERT_EQ(bytes[i], 0x5a);
            EXPECT_TRUE(buffer.Intact());
        }
    }
}

}  // namespace
}  // namespace tavo::test
