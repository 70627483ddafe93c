// Times on the command line, and the frames that they mean.

#include "host/cli/time_value.h"

#include <gtest/gtest.h>

#include "host/filters/time_section.h"

namespace tavo {
namespace {

TEST(TimeValue, SecondsAndClockTimes) {
    EXPECT_EQ(ParseTime(L"0"), 0);
    EXPECT_EQ(ParseTime(L"90.5"), 905'000'000);
    EXPECT_EQ(ParseTime(L"0.0000001"), 1);
    EXPECT_EQ(ParseTime(L"1:30.5"), 905'000'000);
    EXPECT_EQ(ParseTime(L"0:01:30.50"), 905'000'000);
    EXPECT_EQ(ParseTime(L"75:00"), 45'000'000'000);
    EXPECT_EQ(ParseTime(L"99999:59:59.9999999"), 3'600'000'000'000'000 - 1);
    EXPECT_EQ(ParseTime(L"007"), 70'000'000);
}

TEST(TimeValue, Bad) {
    for (const wchar_t* bad :
         {L"",       L".",   L"1.",    L".5",         L"-1",           L"+1",
          L"1:60",   L"1:5", L"1:005", L"0:60:00",    L"1:2:3",        L"1:00:00:00",
          L":30",    L"1:",  L"1::00", L"1.00000001", L"1,5",          L"1e3",
          L" 1",     L"1 ",  L"nan",   L"360000000",  L"100000:00:00", L"99999999999999999999",
          L"1.5:30", L"1s"}) {
        EXPECT_EQ(ParseTime(bad), std::nullopt) << bad;
    }
}

TEST(TimeSection, StartsAreInsideAndEndsAreNot) {
    using enum TimeSection::Place;
    const TimeSection section = {400'000, 800'000};
    EXPECT_EQ(section.PlaceOf(-1), Before);
    EXPECT_EQ(section.PlaceOf(399'999), Before);
    EXPECT_EQ(section.PlaceOf(400'000), Inside);
    EXPECT_EQ(section.PlaceOf(1'199'999), Inside);
    EXPECT_EQ(section.PlaceOf(1'200'000), Behind);
    EXPECT_FALSE(section.IsAll());

    const TimeSection open = {5};
    EXPECT_EQ(open.End(), INT64_MAX);
    EXPECT_EQ(open.PlaceOf(INT64_MAX), Inside);
    EXPECT_EQ(open.PlaceOf(4), Before);
    EXPECT_TRUE(TimeSection{}.IsAll());
    EXPECT_EQ((TimeSection{INT64_MAX, 2}).End(), INT64_MAX);
}

}  // namespace
}  // namespace tavo
