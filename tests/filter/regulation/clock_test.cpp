// Samples without times: placed by the clock of the graph, or by the filter's own.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// The filter at 25 frames per second, streaming by a clock.
class ClockedRig : public FilterRig {
  public:
    explicit ClockedRig(HandClock& clock) {
        settings->SetFrameRate(25.0);
        EXPECT_EQ(Connect(ScenarioType()), S_OK);
        EXPECT_EQ(filter->SetSyncSource(&clock), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
    ~ClockedRig() {
        Stop();
        EXPECT_EQ(filter->SetSyncSource(nullptr), S_OK);
    }
};

class RegulatorClockTest : public FilterTest {
  protected:
    static Step Untimed(int picture, int64_t clockMs) {
        return {.sample = {.picture = picture,
                           .mediaTime = {{picture, picture + 1}},
                           .clock = clockMs * kMs}};
    }
    static Scenario Stream(double rate, const std::vector<int64_t>& clocksMs) {
        Scenario scenario = {.rate = rate, .clock = 5000 * kMs};
        int picture = 1;
        for (const int64_t clock : clocksMs) {
            scenario.steps.push_back(Untimed(picture++, 5000 + clock));
        }
        return scenario;
    }
};

TEST_F(RegulatorClockTest, TheGraphsClockPlacesSamples) {
    const std::vector<int64_t> clocks = {0,   1,   20,  39,  40,  41,  80,  81,  120, 125,
                                         125, 400, 410, 401, 300, 450, 451, 990, -50, 1000};
    for (const double rate : {5.0, 25.0, 29.97, 60.0, 100.0}) {
        SCOPED_TRACE(rate);
        ExpectSameAsModel(Stream(rate, clocks));
    }
}

TEST_F(RegulatorClockTest, AStartAloneIsNoTime) {
    Scenario scenario = Stream(25, {30, 70, 110, 150, 190, 230});
    for (Step& step : scenario.steps) step.sample.start = 9000 * kMs;
    ExpectSameAsModel(scenario);
}

TEST_F(RegulatorClockTest, SamplesWithAndWithoutTimesMix) {
    Scenario scenario = Stream(50, {30, 70, 110, 150, 190, 230, 270, 310, 350});
    for (size_t i = 0; i < scenario.steps.size(); i += 2) {
        const auto start = static_cast<int64_t>(i) * 40 * kMs;
        scenario.steps[i].sample.start = start;
        scenario.steps[i].sample.stop = start + 40 * kMs;
    }
    ExpectSameAsModel(scenario);
}

TEST_F(RegulatorClockTest, SwitchedOnInMidStreamTheTimeCountsFromThere) {
    for (const int64_t sinceStart : {0, 100, 60'000}) {
        Scenario scenario =
            Stream(0, {sinceStart, sinceStart + 10, sinceStart + 50, sinceStart + 90,
                       sinceStart + 130, sinceStart + 170, sinceStart + 210, sinceStart + 400});
        scenario.steps[1].rate = 25;
        scenario.steps[4].rate = 0;
        scenario.steps[5].rate = 25;
        SCOPED_TRACE(sinceStart);
        ExpectSameAsModel(scenario);
    }
}

TEST_F(RegulatorClockTest, AFlushReadsTheClockAgain) {
    for (const bool off : {false, true}) {
        Scenario scenario = Stream(25, {30, 70, 110, 150, 190, 230, 270, 310, 350, 390});
        if (off) scenario.steps[3].rate = 0;
        scenario.steps[4].flush = true;
        if (off) scenario.steps[6].rate = 25;
        SCOPED_TRACE(off);
        ExpectSameAsModel(scenario);
    }
}

// When the flush begins, not when the next sample comes.
TEST_F(RegulatorClockTest, TheTimeCountsFromTheBeginningOfTheFlush) {
    HandClock clock;
    clock.now = 5000 * kMs;
    {
        ClockedRig rig(clock);
        clock.now = 7000 * kMs;
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        clock.now = 7030 * kMs;
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        clock.now = 7090 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 1})), S_OK);
        const std::vector<ReceivedSample> samples = rig.samples();
        ASSERT_EQ(samples.size(), 2u) << "90 ms hold two slots of 40";
        EXPECT_EQ(samples[0].start, 0);
        EXPECT_EQ(samples[1].stop, 80 * kMs);
    }
    EXPECT_EQ(clock.references, 1);
}

TEST_F(RegulatorClockTest, AClockThatFailsStopsTheSlotsAndNothingElse) {
    HandClock clock;
    clock.now = 5000 * kMs;
    {
        ClockedRig rig(clock);
        clock.now = 5030 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 1})), S_OK);
        clock.answer = E_FAIL;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 2})), S_FALSE);
        clock.answer = S_OK;
        clock.now = 5100 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 3})), S_OK);
        EXPECT_EQ(rig.samples().size(), 2u);
    }
    EXPECT_EQ(clock.references, 1);
}

// Then the time counts from the first sample that finds it working.
TEST_F(RegulatorClockTest, AClockThatFailsAtTheStartMakesNoHoleInTheStream) {
    HandClock clock;
    clock.now = 90'000'000 * kMs;
    clock.answer = E_FAIL;
    {
        ClockedRig rig(clock);
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 1})), S_FALSE);
        clock.answer = S_OK;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 2})), S_FALSE);
        clock.now += 30 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 3})), S_OK);
        EXPECT_EQ(rig.samples().size(), 1u);
    }
    EXPECT_EQ(clock.references, 1);
}

// Another clock shows another time, but the stream is no later for that.
TEST_F(RegulatorClockTest, AChangeOfClocksDoesNotMoveTheStream) {
    HandClock first;
    HandClock second;
    first.now = 5000 * kMs;
    {
        ClockedRig rig(first);
        first.now = 5030 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 1})), S_OK);
        first.now = 5060 * kMs;
        second.now = 777'000'000 * kMs;
        ASSERT_EQ(rig.filter->SetSyncSource(&second), S_OK);
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 2})), S_FALSE) << "60 ms have passed";
        second.now += 30 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 3})), S_OK) << "90 ms have passed";
        EXPECT_EQ(rig.samples().size(), 2u);
        // To the filter's own clock and back.
        ASSERT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
        first.now = 0;
        ASSERT_EQ(rig.filter->SetSyncSource(&first), S_OK);
        first.now = 35 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 4})), S_OK) << "125 ms, and what the change took";
        EXPECT_GE(rig.samples().size(), 3u);
    }
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 1);
}

// One that does not tell the time at first takes nothing from the stream.
TEST_F(RegulatorClockTest, AClockThatFailsWhenItIsSetSuspendsTheStream) {
    HandClock first;
    HandClock second;
    first.now = 5000 * kMs;
    second.now = 777'000'000 * kMs;
    second.answer = E_FAIL;
    {
        ClockedRig rig(first);
        first.now = 5070 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 1})), S_OK);
        ASSERT_EQ(rig.filter->SetSyncSource(&second), S_OK);
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 2})), S_FALSE);
        second.answer = S_OK;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 3})), S_FALSE) << "70 ms have passed";
        second.now += 30 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 4})), S_OK) << "100 ms have passed";
        ASSERT_EQ(rig.samples().size(), 2u);
        EXPECT_EQ(rig.samples()[1].start, 40 * kMs);
        // Two such changes in a row.
        second.now += 10 * kMs;
        first.answer = E_FAIL;
        ASSERT_EQ(rig.filter->SetSyncSource(&first), S_OK);
        ASSERT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
        ASSERT_EQ(rig.filter->SetSyncSource(&second), S_OK);
        second.now += 20 * kMs;
        EXPECT_EQ(rig.Deliver(SpecOf({.picture = 5})), S_OK) << "130 ms, and what the change took";
    }
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 1);
}

int64_t MsSince(DWORD tick) { return static_cast<int64_t>(timeGetTime() - tick); }

// Nobody can read the filter's own clock, but it counts milliseconds: what comes out must be right
// for one of those that passed while the sample was delivered.
void ExpectRightForSomeTime(RegulatorModel& model, const InputSample& sample, const Outcome& found,
                            int64_t fromMs, int64_t toMs) {
    for (int64_t ms = std::max<int64_t>(fromMs, 0); ms <= toMs; ++ms) {
        RegulatorModel candidate = model;
        InputSample placed = sample;
        placed.clock = ms * kMs;
        Outcome wanted;
        wanted.result = candidate.Receive(placed, [&](const OutputFrame& frame) {
            wanted.frames.push_back(frame);
            return kOk;
        });
        if (found == wanted) {
            model = candidate;
            return;
        }
    }
    FAIL() << found << "\nis right for no time from " << fromMs << " to " << toMs << " ms";
}

TEST_F(RegulatorClockTest, WithoutAClockOfTheGraphTheFilterUsesItsOwn) {
    for (const double rate : {30.0, 100.0}) {
        const DWORD beforeStart = timeGetTime();
        ScenarioRig rig({.rate = rate});
        const DWORD afterStart = timeGetTime();
        RegulatorModel model;
        model.SetRate(rate);
        model.Start(0);
        size_t frames = 0;
        // A machine on which more slots fall due than can be sent is let off early.
        for (int i = 1; i <= 25 && frames <= 100; ++i) {
            Sleep(static_cast<DWORD>(i * 7 % 23));
            const Step step = Untimed(i, 0);
            const int64_t from = MsSince(afterStart);
            const Outcome found = rig.Play(step);
            ExpectRightForSomeTime(model, step.sample, found, from, MsSince(beforeStart));
            if (HasFatalFailure()) return;
            frames += found.frames.size();
        }
        EXPECT_GT(frames, 5u);
    }
}

TEST_F(RegulatorClockTest, TheOwnClockStartsAnewWithTheStream) {
    ScenarioRig rig({.rate = 100});
    for (int round = 0; round < 3; ++round) {
        Sleep(60);
        rig.Play(Untimed(1, 0));
        EXPECT_GE(rig.rig.samples().size(), 4u);
        ASSERT_EQ(rig.rig.Stop(), S_OK);
        Sleep(100);
        rig.rig.sink->pin().ClearSamples();
        const DWORD started = timeGetTime();
        ASSERT_EQ(rig.rig.Start(), S_OK);
        const Outcome first = rig.Play(Untimed(2, 0));
        EXPECT_LE(static_cast<int64_t>(first.frames.size()) * 10, MsSince(started) + 10);
        rig.rig.sink->pin().ClearSamples();
    }
}

}  // namespace
