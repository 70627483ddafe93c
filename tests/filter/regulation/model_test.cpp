// The model itself, against figures worked out by hand: what agrees with a wrong model is worth
// nothing.
#include <gtest/gtest.h>

#include <limits>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// Of one sample: picture, start and end of each slot in milliseconds.
using Slots = std::vector<std::tuple<int, int64_t, int64_t>>;

std::vector<Slots> SlotsOf(const std::vector<Outcome>& outcomes) {
    std::vector<Slots> all;
    for (const Outcome& outcome : outcomes) {
        all.emplace_back();
        for (const OutputFrame& frame : outcome.frames) {
            all.back().emplace_back(frame.picture, frame.time->first / kMs,
                                    frame.time->second / kMs);
        }
    }
    return all;
}

TEST(RegulatorModelTest, Durations) {
    EXPECT_EQ(ModelFrameDuration(29.97), 333'667);
    EXPECT_EQ(ModelFrameDuration(29.975), 333'667);
    EXPECT_EQ(ModelFrameDuration(25), 400'000);
    EXPECT_EQ(ModelFrameDuration(23.976), 417'188);
    EXPECT_EQ(ModelFrameDuration(0.01), 1'000'000'000);
    EXPECT_EQ(ModelFrameDuration(1e7), 1);
    EXPECT_EQ(ModelFrameDuration(0.009), 0);
    EXPECT_EQ(ModelFrameDuration(-25), 0);
    EXPECT_EQ(ModelFrameDuration(1.1e7), 0);
    EXPECT_EQ(ModelFrameDuration(std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(ModelFrameDuration(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(RegulatorModelTest, TwiceTheRateRepeatsFromTheSecondSampleOn) {
    EXPECT_EQ(SlotsOf(RunModel({.rate = 50, .steps = RegularSteps(25, 1, 3)})),
              (std::vector<Slots>{
                  {{1, 0, 20}}, {{2, 20, 40}, {2, 40, 60}}, {{3, 60, 80}, {3, 80, 100}}}));
}

TEST(RegulatorModelTest, HalfTheRateDropsEveryOtherSample) {
    const std::vector<Outcome> outcomes = RunModel({.rate = 25, .steps = RegularSteps(50, 1, 7)});
    EXPECT_EQ(SlotsOf(outcomes),
              (std::vector<Slots>{{{1, 0, 40}}, {}, {}, {}, {{5, 40, 80}}, {}, {{7, 80, 120}}}));
    EXPECT_EQ(outcomes[1].result, kFalse);
    EXPECT_EQ(outcomes[4].result, kOk);
}

TEST(RegulatorModelTest, ASlotThatEndsWithTheSampleWaitsForTheNext) {
    EXPECT_EQ(SlotsOf(RunModel({.rate = 25, .steps = RegularSteps(25, 1, 4)})),
              (std::vector<Slots>{{{1, 0, 40}}, {}, {{3, 40, 80}}, {{4, 80, 120}}}));
}

TEST(RegulatorModelTest, AGapRepeatsWhatWasKept) {
    const std::vector<Step> steps = {{.sample = Timed(1, 0, 40 * kMs)},
                                     {.sample = Timed(2, 160 * kMs, 200 * kMs)}};
    EXPECT_EQ(SlotsOf(RunModel({.rate = 25, .steps = steps})),
              (std::vector<Slots>{{{1, 0, 40}}, {{1, 40, 80}, {1, 80, 120}, {2, 120, 160}}}));
}

}  // namespace
