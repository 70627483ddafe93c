// What comes out for each sample, held against the model: rates, gaps, odd stamps, flags, refusals,
// flushes and changes of the rate.
#include <gtest/gtest.h>

#include <climits>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

class RegulatedSequenceTest : public FilterTest {
  protected:
    static Step At(int picture, int64_t startMs, int64_t stopMs) {
        return {.sample = Timed(picture, startMs * kMs, stopMs * kMs)};
    }
};

struct InputRate {
    int64_t rate;
    int64_t scale;
};

// Eight inputs by eight outputs, and some pairs with nothing in common.
TEST_F(RegulatedSequenceTest, RatePairs) {
    constexpr InputRate kInputs[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001},
                                     {30, 1},       {50, 1}, {60000, 1001}, {60, 1}};
    constexpr double kOutputs[] = {23.976, 24, 25, 29.97, 30, 50, 59.94, 60};
    int pairs = 0;
    for (const InputRate& input : kInputs) {
        for (const double output : kOutputs) {
            SCOPED_TRACE(testing::Message()
                         << input.rate << "/" << input.scale << " to " << output);
            ExpectSameAsModel(
                {.rate = output, .steps = RegularSteps(input.rate, input.scale, 110)});
            ++pairs;
        }
    }
    EXPECT_EQ(pairs, 64);
}

TEST_F(RegulatedSequenceTest, UnevenRatePairs) {
    for (const auto& [rate, scale] :
         {InputRate{1, 1}, {15, 2}, {7, 1}, {1000, 1}, {119880, 1000}}) {
        for (const double output : {0.5, 1.0, 12.5, 14.99, 120.0, 1000.0}) {
            SCOPED_TRACE(testing::Message() << rate << "/" << scale << " to " << output);
            ExpectSameAsModel({.rate = output, .steps = RegularSteps(rate, scale, 20)});
        }
    }
}

TEST_F(RegulatedSequenceTest, FineSlots) {
    ExpectSameAsModel({.rate = 1e7,
                       .steps = {{.sample = Timed(1, 0, 300)},
                                 {.sample = Timed(2, 300, 301)},
                                 {.sample = Timed(3, 304, 310)}}});
    ExpectSameAsModel(
        {.rate = 0.01, .steps = {At(1, 0, 40), At(2, 40, 99'999), At(3, 99'999, 200'001)}});
}

TEST_F(RegulatedSequenceTest, Gaps) {
    std::vector<Step> steps;
    int64_t at = 0;
    int picture = 1;
    for (const int64_t gap : {0, 1, 39, 40, 41, 400, 0, 3000, 80, 0, 79}) {
        at += gap;
        steps.push_back(At(picture++, at, at + 40));
        at += 40;
    }
    for (const double rate : {10.0, 25.0, 30.0, 100.0}) {
        SCOPED_TRACE(rate);
        ExpectSameAsModel({.rate = rate, .steps = steps});
    }
}

TEST_F(RegulatedSequenceTest, BackwardAndEqualStamps) {
    const std::vector<Step> steps = {
        At(1, 0, 40),    At(2, 0, 40),      At(3, 40, 40),     At(4, 40, 80),   At(5, 40, 80),
        At(6, 200, 240), At(7, 80, 120),    At(8, 120, 100),   At(9, 230, 290), At(10, 210, 400),
        At(11, 400, 40), At(12, 401, 401),  At(13, 390, 460),  At(14, 0, 600),  At(15, 600, 640),
        At(16, -40, 0),  At(17, -300, 700), At(18, -80, -200), At(19, 700, 740)};
    for (const double rate : {10.0, 25.0, 29.97, 50.0, 100.0}) {
        SCOPED_TRACE(rate);
        ExpectSameAsModel({.rate = rate, .steps = steps});
    }
}

TEST_F(RegulatedSequenceTest, FirstStampsOtherThanZero) {
    for (const int64_t first : {-100, -1, 1, 39, 40, 41, 79, 80, 1000}) {
        SCOPED_TRACE(first);
        ExpectSameAsModel({.rate = 25,
                           .steps = {At(1, first, first + 40), At(2, first + 40, first + 80),
                                     At(3, first + 80, first + 120)}});
    }
}

TEST_F(RegulatedSequenceTest, AFirstStampOfOneHourFillsTheHour) {
    const Scenario scenario = {
        .rate = 25,
        .steps = {{.sample = Timed(1, kHour, kHour + 40 * kMs)},
                  {.sample = Timed(2, kHour + 40 * kMs, kHour + 900 * kMs)}}};
    EXPECT_EQ(RunModel(scenario)[0].frames.size(), 90'000u);
    ExpectSameAsModel(scenario);
}

TEST_F(RegulatedSequenceTest, TheFirstAndTheLastTimesThereAre) {
    // A slot as long as a rate can make it, and a stream that ends in the year 29,000: the sink
    // switches the regulator off before the slots get there.
    ExpectSameAsModel({.rate = 0.01,
                       .steps = {At(1, 0, 40),
                                 {.sample = Timed(2, LLONG_MIN, LLONG_MIN + 1)},
                                 {.sample = Timed(3, LLONG_MAX - 1, LLONG_MAX),
                                  .reactions = {{.frame = 50, .rate = 0.0}}},
                                 {.rate = 0.02, .sample = Timed(4, LLONG_MIN, 9'000'000 * kMs)}}});
}

TEST_F(RegulatedSequenceTest, FlagsOfTheInputDoNotPass) {
    for (int flags = 0; flags < 8; ++flags) {
        Scenario scenario = {.rate = 30, .steps = RegularSteps(50, 1, 12)};
        for (Step& step : scenario.steps) {
            step.sample.syncPoint = flags & 1;
            step.sample.preroll = flags & 2;
            step.sample.discontinuity = flags & 4 ? kOk : kFalse;
        }
        SCOPED_TRACE(flags);
        ExpectSameAsModel(scenario);
    }
}

TEST_F(RegulatedSequenceTest, MediaTimesCountFramesWhereTheInputHasThem) {
    Scenario scenario = {.rate = 40, .steps = RegularSteps(25, 1, 12)};
    for (size_t i = 0; i < scenario.steps.size(); ++i) {
        if (i % 3 == 1) scenario.steps[i].sample.mediaTime.reset();
    }
    ExpectSameAsModel(scenario);
}

TEST_F(RegulatedSequenceTest, ARefusingSinkDoesNotEndTheSlots) {
    for (const int32_t answer : {static_cast<int32_t>(E_FAIL), static_cast<int32_t>(S_FALSE),
                                 static_cast<int32_t>(VFW_E_NOT_COMMITTED)}) {
        for (const int refused : {0, 1, 3}) {
            Scenario scenario = {.rate = 100, .steps = RegularSteps(25, 1, 6)};
            for (const size_t sample : {0u, 2u, 3u}) {
                scenario.steps[sample].reactions = {{.frame = refused, .answer = answer}};
            }
            SCOPED_TRACE(testing::Message() << answer << " to frame " << refused);
            ExpectSameAsModel(scenario);
        }
    }
}

TEST_F(RegulatedSequenceTest, AFlushInTheMiddle) {
    for (size_t at = 0; at < 8; ++at) {
        for (const int64_t restart : {0, 40, 2000}) {
            Scenario scenario = {.rate = 60, .steps = RegularSteps(25, 1, 12)};
            scenario.steps[at].flush = true;
            for (size_t i = at; i < scenario.steps.size(); ++i) {
                const int64_t start = restart + 40 * static_cast<int64_t>(i - at);
                scenario.steps[i].sample.start = start * kMs;
                scenario.steps[i].sample.stop = (start + 40) * kMs;
            }
            SCOPED_TRACE(testing::Message() << "before sample " << at << ", from " << restart);
            ExpectSameAsModel(scenario);
        }
    }
}

TEST_F(RegulatedSequenceTest, TheRateChangesBetweenSamples) {
    for (const double later : {1.0, 12.5, 24.99, 25.0, 49.0, 100.0, 0.0, -1.0, 0.001, 1e12}) {
        for (const size_t at : {1u, 2u, 5u}) {
            Scenario scenario = {.rate = 50, .steps = RegularSteps(25, 1, 14)};
            scenario.steps[at].rate = later;
            SCOPED_TRACE(testing::Message() << "to " << later << " before sample " << at);
            ExpectSameAsModel(scenario);
        }
    }
}

TEST_F(RegulatedSequenceTest, TheRateChangesInsideASample) {
    for (const double later : {5.0, 10.0, 99.0, 250.0, 0.0}) {
        for (const int frame : {0, 1, 5, 18}) {
            Scenario scenario = {.rate = 50,
                                 .steps = {At(1, 0, 400), At(2, 400, 700), At(3, 700, 990)}};
            for (Step& step : scenario.steps) {
                step.reactions = {{.frame = frame, .rate = later},
                                  {.frame = frame + 1, .rate = 50}};
            }
            SCOPED_TRACE(testing::Message() << "to " << later << " with frame " << frame);
            ExpectSameAsModel(scenario);
        }
    }
}

// The slots go on where they were; frames between carry the times and flags of their samples.
TEST_F(RegulatedSequenceTest, OnOffAndOnAgain) {
    for (const size_t on : {0u, 1u, 4u}) {
        Scenario scenario = {.steps = RegularSteps(25, 1, 20)};
        scenario.steps[on].rate = 30;
        scenario.steps[on + 4].rate = 0;
        scenario.steps[on + 9].rate = 60;
        for (Step& step : scenario.steps) step.sample.preroll = true;
        SCOPED_TRACE(on);
        ExpectSameAsModel(scenario);
    }
}

// A flush that finds the regulator off leaves nothing of the stretch before it.
TEST_F(RegulatedSequenceTest, OffFlushedAndOnAgain) {
    Scenario scenario = {.rate = 25, .steps = RegularSteps(25, 1, 20)};
    scenario.steps[8].rate = 0;
    scenario.steps[10].flush = true;
    for (size_t i = 10; i < 20; ++i) {
        scenario.steps[i].sample = scenario.steps[i - 10].sample;
        scenario.steps[i].sample.picture += 100;
    }
    scenario.steps[12].rate = 25;
    ExpectSameAsModel(scenario);
}

// A sample whose answers are none of the usual ones.
class OddSample final : public TestSample {
  public:
    OddSample(long size, HRESULT discontinuity, HRESULT times)
        : TestSample({.size = size}), discontinuity_(discontinuity), times_(times) {
        Revive();
    }
    STDMETHODIMP IsDiscontinuity() override { return discontinuity_; }
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        return FAILED(times_) ? times_ : TestSample::GetTime(start, stop);
    }

  private:
    const HRESULT discontinuity_;
    const HRESULT times_;
};

TEST_F(RegulatedSequenceTest, ADroppedSampleGivesBackWhatItSaidOfItsDiscontinuity) {
    ScenarioRig rig({.rate = 25});
    rig.Play(At(1, 0, 40));
    const long size = static_cast<long>(ScenarioType()->lSampleSize);
    for (const HRESULT answer : {S_OK, S_FALSE, E_NOTIMPL, E_UNEXPECTED, HRESULT{7}}) {
        const auto sample = ComPtr<OddSample>::Adopt(new OddSample(size, answer, S_OK));
        sample->SetTimes(0, 40 * kMs);
        EXPECT_EQ(rig.rig.source->pin().Deliver(sample.Get()), answer);
    }
}

TEST_F(RegulatedSequenceTest, TimesThatCannotBeHadAreTakenFromTheClock) {
    ScenarioRig rig({.rate = 25, .clock = 1000 * kMs});
    rig.Play({.sample = {.picture = 1, .clock = 1030 * kMs}});
    const long size = static_cast<long>(ScenarioType()->lSampleSize);
    const auto sample = ComPtr<OddSample>::Adopt(new OddSample(size, S_FALSE, E_FAIL));
    sample->SetTimes(kHour, kHour + kMs);
    EXPECT_EQ(rig.rig.source->pin().Deliver(sample.Get()), S_FALSE);
    EXPECT_EQ(rig.rig.samples().size(), 1u);
}

TEST_F(RegulatedSequenceTest, StartAndStopBeginAnewEachTime) {
    const Scenario scenario = {.rate = 30, .steps = RegularSteps(25, 1, 9)};
    const std::vector<Outcome> wanted = RunModel(scenario);
    ScenarioRig rig(scenario);
    for (int round = 0; round < 4; ++round) {
        for (size_t i = 0; i < wanted.size(); ++i) {
            ASSERT_EQ(rig.Play(scenario.steps[i]), wanted[i]) << "round " << round << ", " << i;
        }
        ASSERT_EQ(rig.rig.Stop(), S_OK);
        ASSERT_EQ(rig.rig.Start(), S_OK);
    }
}

}  // namespace
