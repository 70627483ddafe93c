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

TEST(StreamTimeTest, GoesOnWhereItWasSuspended) {
    tavo::StreamTime time;
    time.Begin(5000);
    time.Suspend(7000);
    EXPECT_FALSE(time.HasBegun());
    EXPECT_TRUE(time.IsSuspended());
    time.Begin(100);
    EXPECT_TRUE(time.HasBegun());
    EXPECT_FALSE(time.IsSuspended());
    EXPECT_EQ(time.At(100), 2000);
    EXPECT_EQ(time.At(150), 2050);
    time.Begin(300);
    EXPECT_EQ(time.At(300), 0) << "it goes on once";
    time.Suspend(400);
    time.Forget();
    EXPECT_FALSE(time.IsSuspended());
    time.Begin(1000);
    EXPECT_EQ(time.At(1000), 0);
}

TEST(StreamTimeTest, AClockMayTellAnything) {
    using Limits = std::numeric_limits<int64_t>;
    tavo::StreamTime time;
    time.Begin(Limits::min());
    EXPECT_EQ(time.At(Limits::max()), -1);  // wraps
    time.Suspend(Limits::max());
    time.Begin(Limits::min());
    EXPECT_EQ(time.At(Limits::min()), -1);
}

}  // namespace
