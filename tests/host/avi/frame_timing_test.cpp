// Rates and repeats for regular, drifting and irregular times, and for gaps.

#include "host/avi/frame_timing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/time_units.h"

namespace tavo {
namespace {

using tavo_test::kMs;

using Times = std::vector<int64_t>;

// Times of the given slots of a rate, truncated to multiples of `unit`.
Times TimesOf(const std::vector<int64_t>& slots, FrameRate rate, int64_t unit = 1) {
    Times times;
    for (const int64_t slot : slots) {
        times.push_back(FrameStart(rate, static_cast<uint64_t>(slot)) / unit * unit);
    }
    return times;
}

std::vector<int64_t> Every(int64_t count, int64_t step = 1) {
    std::vector<int64_t> slots;
    for (int64_t i = 0; i < count; ++i) slots.push_back(i * step);
    return slots;
}

FrameTiming Fit(const Times& times, std::optional<FrameRate> nominal = {}) {
    const int64_t last = times.size() > 1 ? times[times.size() - 1] - times[times.size() - 2] : 0;
    return FitTiming(times, times.back() + last, nominal);
}

// The largest distance of a frame from its own time, in slots; a common offset does not count.
double Farthest(const Times& times, const FrameTiming& timing) {
    double least = 0;
    double most = 0;
    uint64_t slot = 0;
    for (size_t i = 0; i < times.size(); ++i) {
        const double at = static_cast<double>(times[i] - times[0]) * timing.rate.Fps() / 1e7;
        least = std::min(least, at - static_cast<double>(slot));
        most = std::max(most, at - static_cast<double>(slot));
        slot += 1 + timing.repeats[i];
    }
    return (most - least) / 2;
}

double Seconds(const FrameTiming& timing) {
    return static_cast<double>(timing.repeats.size() + timing.totalRepeats) / timing.rate.Fps();
}

TEST(FrameTiming, NoFramesAndOne) {
    EXPECT_EQ(FitTiming({}, 0, {}).rate, (FrameRate{25, 1}));
    EXPECT_EQ(FitTiming({}, 0, FrameRate{50, 1}).rate, (FrameRate{50, 1}));
    const FrameTiming one = FitTiming(Times{0}, 2000 * kMs, FrameRate{10, 1});
    EXPECT_EQ(one.rate, (FrameRate{10, 1}));
    EXPECT_EQ(one.repeats, std::vector<uint32_t>{19});
}

TEST(FrameTiming, SteadyTimesGiveOneSlotToEachFrame) {
    const FrameRate rates[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001}, {30, 1},
                               {50, 1},       {10, 1}, {60000, 1001}, {60, 1},       {120, 1},
                               {1, 1},        {1, 10}, {1000, 1},     {7, 1},        {14985, 1000}};
    for (const FrameRate rate : rates) {
        // Exact times, and milliseconds as in Matroska.
        for (const int64_t unit : {int64_t{1}, kMs}) {
            if (rate.Fps() > 300 && unit > 1) continue;
            SCOPED_TRACE(testing::Message() << rate.Fps() << " in units of " << unit);
            const Times times = TimesOf(Every(5000), rate, unit);
            const FrameTiming named = Fit(times, rate);
            EXPECT_EQ(named.rate, rate);
            EXPECT_EQ(named.totalRepeats, 0u);
            const FrameTiming unnamed = Fit(times);
            EXPECT_NEAR(unnamed.rate.Fps(), rate.Fps(), rate.Fps() * 1e-4);
            EXPECT_EQ(unnamed.totalRepeats, 0u);
        }
    }
}

TEST(FrameTiming, UsualRatesAreToldApart) {
    for (const FrameRate rate : {FrameRate{24000, 1001}, FrameRate{24, 1}, FrameRate{30000, 1001},
                                 FrameRate{30, 1}, FrameRate{60000, 1001}, FrameRate{60, 1}}) {
        EXPECT_EQ(Fit(TimesOf(Every(2000), rate, kMs)).rate, rate);
    }
}

TEST(FrameTiming, AWrongNameIsNotBelieved) {
    const FrameTiming timing = Fit(TimesOf(Every(1000), {25, 1}), FrameRate{15, 1});
    EXPECT_EQ(timing.rate, (FrameRate{25, 1}));
    EXPECT_EQ(timing.totalRepeats, 0u);
    const FrameTiming slow = Fit(TimesOf(Every(1000), {25, 1}), FrameRate{100, 1});
    EXPECT_EQ(slow.rate, (FrameRate{25, 1}));
    EXPECT_EQ(slow.totalRepeats, 0u);
}

// A camera: every frame is off its slot, none is missing.
TEST(FrameTiming, WanderingTimesAreSteady) {
    std::mt19937 random(1);
    Times times = TimesOf(Every(3000), {30, 1});
    for (int64_t& time : times) time += random() % 16 * kMs / 2;
    EXPECT_EQ(Fit(times, FrameRate{30, 1}).rate, (FrameRate{30, 1}));
    EXPECT_EQ(Fit(times, FrameRate{30, 1}).totalRepeats, 0u);
    EXPECT_EQ(Fit(times).rate, (FrameRate{30, 1}));
}

TEST(FrameTiming, FilmInTelevisionFieldsIsFilm) {
    std::vector<int64_t> slots;
    for (int64_t i = 0; i < 1000; ++i) slots.push_back(i / 2 * 5 + i % 2 * 2);
    const FrameTiming timing = Fit(TimesOf(slots, {60000, 1001}));
    EXPECT_EQ(timing.rate, (FrameRate{24000, 1001}));
    EXPECT_EQ(timing.totalRepeats, 0u);
}

TEST(FrameTiming, MissingFramesAreRepeats) {
    for (const FrameRate rate : {FrameRate{25, 1}, FrameRate{24000, 1001}, FrameRate{30, 1}}) {
        for (const auto& nominal : {std::optional(rate), std::optional<FrameRate>()}) {
            std::vector<int64_t> slots;
            for (int64_t i = 0; i < 1000; ++i) {
                if (i % 100 != 50 && (i < 300 || i >= 320)) slots.push_back(i);
            }
            const Times times = TimesOf(slots, rate, kMs);
            const FrameTiming timing = Fit(times, nominal);
            EXPECT_EQ(timing.rate, rate);
            EXPECT_EQ(timing.repeats.size() + timing.totalRepeats, 1000u);
            for (size_t i = 0; i + 1 < slots.size(); ++i) {
                ASSERT_EQ(timing.repeats[i] + 1, slots[i + 1] - slots[i]) << i;
            }
        }
    }
}

TEST(FrameTiming, TheShortestCommonDistanceIsFound) {
    // 68 frames in multiples of 66.667 ms, five to eleven of them apart.
    const std::vector<int64_t> steps = {11, 6, 7, 7, 6, 6, 6, 7, 5, 6, 5};
    std::vector<int64_t> slots = {0};
    for (size_t i = 0; i < 67; ++i) slots.push_back(slots.back() + steps[i % steps.size()]);
    const FrameTiming timing = Fit(TimesOf(slots, {1000000, 66667}), FrameRate{1000000, 66667});
    EXPECT_EQ(timing.rate, (FrameRate{1000000, 66667}));
    EXPECT_LT(Farthest(TimesOf(slots, {1000000, 66667}), timing), 0.001);
    // An uncommon rate that the source does not name: 17 per second, two and three slots apart.
    slots = {0};
    for (size_t i = 0; i < 200; ++i) slots.push_back(slots.back() + 2 + (i * i + i / 3) % 2);
    const FrameTiming odd = Fit(TimesOf(slots, {17, 1}, kMs));
    EXPECT_NEAR(odd.rate.Fps(), 17.0, 0.01);
    EXPECT_LT(Farthest(TimesOf(slots, {17, 1}), odd), 0.05);
}

TEST(FrameTiming, TheRateThatComesLaterCounts) {
    Times times = TimesOf(Every(120), {30, 1}, kMs);
    for (int64_t i = 0; i < 120; ++i) times.push_back(4000 * kMs + i * 10'000'000 / 60);
    const FrameTiming timing = Fit(times, FrameRate{30, 1});
    EXPECT_EQ(timing.rate, (FrameRate{60, 1}));
    EXPECT_EQ(timing.totalRepeats, 120u);
    EXPECT_NEAR(Seconds(timing), 6.0, 0.02);
}

TEST(FrameTiming, WildTimesKeepTimeAndAllFrames) {
    for (const int64_t longest : {20, 100, 1000, 5000}) {
        SCOPED_TRACE(longest);
        std::mt19937 random(static_cast<unsigned>(longest));
        Times times = {0};
        for (int i = 0; i < 500; ++i) {
            times.push_back(times.back() + kMs + random() % static_cast<unsigned>(longest * kMs));
        }
        const FrameTiming timing = Fit(times, FrameRate{25, 1});
        ASSERT_EQ(timing.repeats.size(), times.size());
        EXPECT_GE(timing.rate.Fps(), 60.0);
        EXPECT_LE(timing.rate.Fps(), kMaxSlotRate);
        const double length = static_cast<double>(times.back()) / 1e7;
        EXPECT_NEAR(Seconds(timing), length, static_cast<double>(longest) / 1e3 + 0.02);
        if (longest >= 1000) {
            EXPECT_LE(Farthest(times, timing), 1.0);
        }
    }
}

TEST(FrameTiming, MoreFramesThanSlotsFollowEachOther) {
    std::mt19937 random(5);
    Times times = {0};
    for (int i = 0; i < 2000; ++i) times.push_back(times.back() + 1000 + random() % 19000);
    const FrameTiming timing = Fit(times);
    EXPECT_NEAR(Seconds(timing), static_cast<double>(times.back()) / 1e7, 0.1);
}

TEST(FrameTiming, RepeatsFitTheRoomThatIsLeft) {
    std::mt19937 random(7);
    for (int run = 0; run < 200; ++run) {
        Times times = {0};
        for (int i = 0; i < 50; ++i) {
            times.push_back(times.back() + 1 + random() % (run % 2 == 0 ? 400000 : 40000000));
        }
        const FrameTiming timing = FitTiming(times, times.back() + 400000, {});
        for (size_t i = 0; i < times.size(); ++i) {
            const int64_t next = i + 1 < times.size() ? times[i + 1] : times[i] + 400000;
            ASSERT_LE(timing.repeats[i], MaxRepeats(next - times[i]));
        }
    }
}

TEST(FrameTiming, TheLastFrameLastsAsLongAsItSays) {
    Times times = TimesOf(Every(10), {25, 1});
    const FrameTiming timing = FitTiming(times, times.back() + 1000 * kMs, FrameRate{25, 1});
    EXPECT_EQ(timing.repeats.back(), 24u);
    EXPECT_EQ(timing.totalRepeats, 24u);
}

TEST(MonotonicTimes, BeginAtZeroAndOnlyRise) {
    MonotonicTimes times;
    EXPECT_EQ(times.Next(5000, 40), 0);
    EXPECT_EQ(times.Next(5100, 40), 100);
    EXPECT_EQ(times.Next(5100, 40), 140);  // not later
    EXPECT_EQ(times.Next(3000, 40), 180);  // earlier
    EXPECT_EQ(times.Next(3050, 40), 230);
    EXPECT_EQ(times.Next(std::nullopt, 40), 270);
    EXPECT_EQ(times.Next(3100, 40), 280);
    EXPECT_EQ(times.Next(3100 + MonotonicTimes::kMaxGap, 40), 280 + MonotonicTimes::kMaxGap);
    EXPECT_EQ(times.Next(INT64_MAX, 40), 320 + MonotonicTimes::kMaxGap);
    EXPECT_EQ(times.Next(INT64_MIN, 40), 360 + MonotonicTimes::kMaxGap);
    EXPECT_EQ(times.Next(INT64_MAX, 40), 400 + MonotonicTimes::kMaxGap);
}

}  // namespace
}  // namespace tavo
