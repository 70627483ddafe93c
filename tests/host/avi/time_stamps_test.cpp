// Regular and irregular streams.

#include "host/avi/time_stamps.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

TEST(TimeStamps, NothingKnown) {
    TimeStamps stamps;
    EXPECT_FALSE(stamps.IsIrregular());
    EXPECT_EQ(stamps.FirstInterval(), 0);
    stamps.Add(500);
    EXPECT_FALSE(stamps.HasIntervals());
    EXPECT_FALSE(stamps.IsIrregular());
    EXPECT_EQ(stamps.MeanMs(), 0.0);
    stamps.AddUnknown();
    EXPECT_EQ(stamps.Unknown(), 1u);
}

TEST(TimeStamps, Regular) {
    TimeStamps stamps;
    for (int64_t n = 0; n < 100; ++n) stamps.Add(n * 400000);
    EXPECT_EQ(stamps.FirstInterval(), 400000);
    EXPECT_FALSE(stamps.IsIrregular());
    EXPECT_EQ(stamps.MeanMs(), 40.0);
}

TEST(TimeStamps, RoundedToMillisecondsIsRegular) {
    TimeStamps stamps;
    for (int64_t n = 0; n < 1000; ++n) stamps.Add(n * 333667 / 10000 * 10000);
    EXPECT_FALSE(stamps.IsIrregular());
    TimeStamps fast;
    for (int64_t n = 0; n < 1000; ++n) fast.Add(n * 83333 / 10000 * 10000);
    EXPECT_FALSE(fast.IsIrregular());
}

TEST(TimeStamps, OneGapIsIrregular) {
    TimeStamps stamps;
    for (int64_t n = 0; n < 100; ++n) stamps.Add((n < 50 ? n : n + 1) * 400000);
    EXPECT_TRUE(stamps.IsIrregular());
    EXPECT_EQ(stamps.ShortestMs(), 40.0);
    EXPECT_EQ(stamps.LongestMs(), 80.0);
}

TEST(TimeStamps, BackwardsAndEqual) {
    TimeStamps back;
    back.Add(400000);
    back.Add(0);
    EXPECT_EQ(back.FirstInterval(), 0);
    back.Add(400000);
    EXPECT_TRUE(back.IsIrregular());
    TimeStamps extreme;
    extreme.Add(INT64_MIN);
    extreme.Add(INT64_MAX);
    extreme.Add(INT64_MIN);
    EXPECT_TRUE(extreme.IsIrregular());
}

}  // namespace
}  // namespace tavo
