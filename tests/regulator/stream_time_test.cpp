// Stream time by a clock.
#include "regulator/stream_time.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(StreamTimeTest, CountsFromTheBeginning) {
    tavo::StreamTime time;
    EXPECT_FALSE(time.HasBegun());
    time.Begin(5000);
    EXPECT_TRUE(time.HasBegun());
    EXPECT_EQ(time.At(5000), 0);
    EXPECT_EQ(time.At(7500), 2500);
    EXPECT_EQ(time.At(4000), -1000);
    time.Forget();
    EXPECT_FALSE(time.HasBegun());
}

TEST(StreamTimeTest, GoesOnWithAnotherClock) {
    tavo::StreamTime time;
    time.Begin(5000);
    time.ChangeClock(7000, 100);
    EXPECT_EQ(time.At(100), 2000);
    EXPECT_EQ(time.At(150), 2050);
}

TEST(StreamTimeTest, AClockMayTellAnything) {
    using Limits = std::numeric_limits<int64_t>;
    tavo::StreamTime time;
    time.Begin(Limits::min());
    EXPECT_EQ(time.At(Limits::max()), -1);  // wraps
    time.ChangeClock(Limits::max(), Limits::min());
    EXPECT_EQ(time.At(Limits::min()), -1);
}

}  // namespace
