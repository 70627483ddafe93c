// The regulator's rule against figures worked out by hand, and against the model on random streams.
#include "regulator/time_regulator.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "regulator/frame_duration.h"
#include "regulator/stream_time.h"
#include "tests/regulator/random_samples.h"
#include "tests/regulator/regulated_stream.h"
#include "tests/regulator/regulator_model.h"
#include "tests/support/time_units.h"

using namespace tavo_test;
using tavo::FrameBranch;
using tavo::TimeRegulator;
using tavo::TimeWindow;

namespace {

struct Totals {
    int64_t frames = 0;
    int64_t dropped = 0;
    int64_t repeats = 0;
};

// A stream of few samples, with rates that change under way.
void CompareOneStream(uint32_t seed, Totals& totals) {
    static std::vector<OutputFrame> got;
    static std::vector<OutputFrame> expected;
    RandomSamples random(seed, 1'000'000 * kMs);
    RegulatedStream stream;
    RegulatorModel model;
    const double rate = random.Rate();
    stream.SetRate(rate);
    model.SetRate(rate);
    stream.Start(random.Clock());
    model.Start(random.Clock());
    for (int picture = 1; picture <= 8 && stream.IsOn(); ++picture) {
        const InputSample sample = random.Next(picture);
        const int changeAt = random.OneIn(6) ? random.Below(3) : -1;
        const double newRate = random.OneIn(10) ? 0.0 : random.Rate();
        const auto play = [&](auto& player, std::vector<OutputFrame>& frames) {
            return player.Receive(sample, [&](const OutputFrame& frame) {
                if (static_cast<int>(frames.size()) == changeAt) player.SetRate(newRate);
                frames.push_back(frame);
                return static_cast<int32_t>(frames.size());
            });
        };
        got.clear();
        expected.clear();
        const int32_t result = play(stream, got);
        ASSERT_EQ(result, play(model, expected)) << "seed " << seed << ", picture " << picture;
        ASSERT_TRUE(got == expected) << "seed " << seed << ", picture " << picture;
        totals.frames += static_cast<int64_t>(got.size());
        if (got.empty()) ++totals.dropped;
        ASSERT_TRUE(stream.HasKnownBranchesOnly());
        if (got.size() > 1) totals.repeats += static_cast<int64_t>(got.size()) - 1;
    }
}

TEST(TimeRegulatorTest, SameAsTheModelOnAMillionRandomStreams) {
    Totals totals;
    for (uint32_t seed = 1; seed <= 1'000'000; ++seed) {
        CompareOneStream(seed, totals);
        if (HasFatalFailure()) return;
    }
    // The streams must have been worth comparing.
    EXPECT_GT(totals.frames, 5'000'000);
    EXPECT_GT(totals.dropped, 500'000);
    EXPECT_GT(totals.repeats, 1'000'000);
}

// Of one slot: start, end, and whether the sample's picture is shown.
struct SlotFigure {
    int64_t start;
    int64_t end;
    FrameBranch branch;
    bool operator==(const SlotFigure&) const = default;
};

std::vector<SlotFigure> SlotsIn(TimeRegulator& regulator, TimeWindow window, int64_t duration) {
    std::vector<SlotFigure> slots;
    while (regulator.HasSlotIn(window)) {
        regulator.BeginSlot(window, duration);
        slots.push_back({regulator.Slot().start, regulator.Slot().end, regulator.Branch()});
        if (regulator.Branch() == FrameBranch::ScaleAndKeep) regulator.MarkPictureKept();
        regulator.EndSlot(duration);
    }
    return slots;
}

TEST(TimeRegulatorTest, TwiceTheRateRepeatsFromTheSecondSampleOn) {
    TimeRegulator regulator;
    EXPECT_EQ(SlotsIn(regulator, {0, 40}, 20),
              (std::vector<SlotFigure>{{0, 20, FrameBranch::ScaleAndKeep}}));
    EXPECT_EQ(SlotsIn(regulator, {40, 80}, 20),
              (std::vector<SlotFigure>{{20, 40, FrameBranch::ScaleAndKeep},
                                       {40, 60, FrameBranch::Repeat}}));
}

TEST(TimeRegulatorTest, AKeptPictureThatIsLostIsMadeAnew) {
    TimeRegulator regulator;
    SlotsIn(regulator, {0, 40}, 20);
    regulator.ForgetKeptPicture();
    // The sample starts after these slots: they would repeat.
    EXPECT_EQ(SlotsIn(regulator, {80, 81}, 20),
              (std::vector<SlotFigure>{{20, 40, FrameBranch::ScaleAndKeep},
                                       {40, 60, FrameBranch::Repeat},
                                       {60, 80, FrameBranch::ScaleAndKeep}}));
}

TEST(TimeRegulatorTest, ANewOutputTypeBeginsTheSlotsAnewAndARestartAllOfIt) {
    TimeRegulator regulator;
    SlotsIn(regulator, {0, 400}, 20);
    regulator.RestartSlots();
    EXPECT_EQ(SlotsIn(regulator, {100, 101}, 100),
              (std::vector<SlotFigure>{{0, 100, FrameBranch::ScaleAndKeep}}));
    regulator.Restart();
    EXPECT_FALSE(regulator.IsInSlot());
    EXPECT_EQ(SlotsIn(regulator, {500, 101}, 100),
              (std::vector<SlotFigure>{{0, 100, FrameBranch::ScaleAndKeep}}));
}

TEST(TimeRegulatorTest, TheEndOfTimeIsTheEndOfAllSlots) {
    constexpr int64_t kEnd = std::numeric_limits<int64_t>::max();
    TimeRegulator regulator;
    regulator.BeginSlot({0, kEnd}, kEnd - 5);
    regulator.EndSlot(10);
    EXPECT_FALSE(regulator.HasSlotIn({0, kEnd}));
}

TEST(TimeRegulatorTest, AStopEmptiesTheBufferOnly) {
    TimeRegulator regulator;
    SlotsIn(regulator, {0, 40}, 20);
    EXPECT_EQ(regulator.Branch(), FrameBranch::Repeat);
    regulator.Stop();
    EXPECT_EQ(regulator.Branch(), FrameBranch::ScaleAndKeep);
}

}  // namespace
