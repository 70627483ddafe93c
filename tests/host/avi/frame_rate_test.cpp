// Every common rate follows from its duration.

#include "host/avi/frame_rate.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

TEST(FrameRate, FromDuration) {
    EXPECT_EQ(RateFromDuration(400000), (FrameRate{25, 1}));
    EXPECT_EQ(RateFromDuration(333333), (FrameRate{30, 1}));
    EXPECT_EQ(RateFromDuration(333334), (FrameRate{30, 1}));
    EXPECT_EQ(RateFromDuration(333666), (FrameRate{30000, 1001}));
    EXPECT_EQ(RateFromDuration(333667), (FrameRate{30000, 1001}));
    EXPECT_EQ(RateFromDuration(417083), (FrameRate{24000, 1001}));
    EXPECT_EQ(RateFromDuration(417084), (FrameRate{24000, 1001}));
    EXPECT_EQ(RateFromDuration(166833), (FrameRate{60000, 1001}));
    EXPECT_EQ(RateFromDuration(166666), (FrameRate{60, 1}));
    EXPECT_EQ(RateFromDuration(800000), (FrameRate{25, 2}));
    EXPECT_EQ(RateFromDuration(10000000), (FrameRate{1, 1}));
    EXPECT_EQ(RateFromDuration(20000000), (FrameRate{1, 2}));
    EXPECT_EQ(RateFromDuration(350001), (FrameRate{10000000, 350001}));
    EXPECT_EQ(RateFromDuration(1), (FrameRate{10000000, 1}));
}

TEST(FrameRate, EveryWholeAndTelevisionRateSurvives) {
    for (uint32_t whole = 1; whole <= 1000; ++whole) {
        const FrameRate plain = {whole, 1};
        EXPECT_EQ(RateFromDuration(DurationOf(plain)), plain);
    }
    for (uint32_t whole : {24u, 30u, 48u, 60u, 120u}) {
        const FrameRate slowed = {whole * 1000, 1001};
        EXPECT_EQ(RateFromDuration(DurationOf(slowed)), slowed);
    }
}

TEST(FrameRate, LongDurationsStayWithinTheFields) {
    const FrameRate slow = RateFromDuration(INT64_MAX / 2);
    EXPECT_NE(slow.rate, 0u);
    EXPECT_NE(slow.scale, 0u);
}

TEST(FrameRate, DurationsAreRounded) {
    EXPECT_EQ(DurationOf({30000, 1001}), 333667);
    EXPECT_EQ(DurationOf({30, 1}), 333333);
    EXPECT_EQ(DurationOf({60, 1}), 166667);
    EXPECT_EQ(DurationOf({0xFFFFFFFF, 1}), 1);
}

TEST(FrameRate, StartsDoNotDrift) {
    const FrameRate rate = {30000, 1001};
    EXPECT_EQ(FrameStart(rate, 0), 0);
    EXPECT_EQ(FrameStart(rate, 1), 333666);
    EXPECT_EQ(FrameStart(rate, 30000), 1001 * kUnitsPerSecond);
    EXPECT_EQ(FrameStart(rate, 3000000000), 100100000 * kUnitsPerSecond);
    EXPECT_EQ(FrameStart({0xFFFFFFFF, 0xFFFFFFFF}, 77), 77 * kUnitsPerSecond);
    EXPECT_EQ(FrameStart({0xFFFFFFFF, 1}, 0xFFFFFFFF), kUnitsPerSecond);
    EXPECT_EQ(FrameStart({1, 100}, 0xFFFFFFFF), 429496729500 * kUnitsPerSecond);
}

}  // namespace
}  // namespace tavo
