// Durations of frames at all kinds of rates.
#include "regulator/frame_duration.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/regulator/regulator_model.h"

using tavo::FrameDuration;

namespace {

TEST(FrameDurationTest, FiguresWorkedOutByHand) {
    EXPECT_EQ(FrameDuration(25), 400'000);
    EXPECT_EQ(FrameDuration(29.97), 333'667);
    EXPECT_EQ(FrameDuration(23.976), 417'188);
    EXPECT_EQ(FrameDuration(0.01), 1'000'000'000);
    EXPECT_EQ(FrameDuration(1e7), 1);
}

TEST(FrameDurationTest, WhatNoDurationExpressesIsOff) {
    using Limits = std::numeric_limits<double>;
    for (const double rate : {0.0, -0.0, 0.009, -25.0, 1.1e7, Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN(), Limits::denorm_min()}) {
        EXPECT_EQ(FrameDuration(rate), 0) << rate;
    }
}

TEST(FrameDurationTest, EveryRateOfThreeDecimalsUpTo200) {
    for (int thousandths = 1; thousandths <= 200'000; ++thousandths) {
        const double rate = thousandths / 1000.0;
        ASSERT_EQ(FrameDuration(rate), tavo_test::ModelFrameDuration(rate)) << rate;
    }
}

}  // namespace
