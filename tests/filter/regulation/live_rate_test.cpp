// The rate is set from another thread while samples flow: every slot is whole, no matter when.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// Sets the rates one after another, over and over.
class RateSetter {
  public:
    RateSetter(IVantrelSettings* settings, std::vector<double> rates)
        : thread_([this, settings, rates = std::move(rates)] {
              for (size_t i = 0; !done_; ++i) {
                  settings->SetFrameRate(rates[i % rates.size()]);
                  ++changes;
                  // Where both threads share a processor the other one goes on from here: with
                  // another rate each time.
                  if (i % 61 == 0) Sleep(0);
              }
          }) {}
    ~RateSetter() {
        done_ = true;
        thread_.join();
    }

    void WaitForAChange() const {
        for (const int before = changes; changes == before;) Sleep(0);
    }

    std::atomic<int> changes = 0;

  private:
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

class LiveRateTest : public FilterTest {
  protected:
    // The n-th sample of a stream of 25 frames per second.
    static Step Nth(int n) { return {.sample = Timed(n + 1, n * 40 * kMs, (n + 1) * 40 * kMs)}; }
};

bool IsOneOf(int64_t duration, const std::vector<double>& rates) {
    return std::any_of(rates.begin(), rates.end(), [&](double rate) {
        return rate > 0 && ModelFrameDuration(rate) == duration;
    });
}

TEST_F(LiveRateTest, EverySlotHasTheLengthOfOneOfTheRates) {
    const std::vector<double> rates = {25, 50, 29.97, 100, 12.5};
    ScenarioRig rig({.rate = 25});
    const RateSetter setter(rig.rig.settings.Get(), rates);
    int64_t lastEnd = 0;
    int lastPicture = 1;
    size_t frames = 0;
    int samples = 0;
    // The other thread may have to wait for a processor.
    for (; samples < 600 || setter.changes < 1000; ++samples) {
        const Step step = Nth(samples);
        const Outcome outcome = rig.Play(step);
        for (const OutputFrame& frame : outcome.frames) {
            const auto [start, end] = *frame.time;
            // A slot that would begin before zero is moved, whatever came before it.
            EXPECT_TRUE(start == 0 || IsOneOf(end - start, rates)) << frame;
            EXPECT_GT(end, lastEnd);
            EXPECT_TRUE(lastEnd < 200 * kMs || IsOneOf(end - lastEnd, rates)) << frame;
            EXPECT_TRUE(start == 0 || end < *step.sample.stop) << frame;
            EXPECT_TRUE(frame.syncPoint && !frame.preroll && !frame.discontinuity);
            EXPECT_GE(frame.picture, lastPicture);
            EXPECT_LE(frame.picture, step.sample.picture);
            lastEnd = end;
            lastPicture = frame.picture;
        }
        frames += outcome.frames.size();
    }
    EXPECT_GT(lastEnd, (samples * 40 - 200) * kMs) << "the slots follow the stream";
    EXPECT_GT(frames, static_cast<size_t>(samples) / 2 - 5);
}

// Frames with the regulator off are their samples; frames with it on are slots; no third kind.
TEST_F(LiveRateTest, SwitchingOnAndOffMixesNothing) {
    const std::vector<double> rates = {50, 0, 25, 0};
    ScenarioRig rig({.rate = 0});
    const RateSetter setter(rig.rig.settings.Get(), rates);
    size_t plainFrames = 0;
    size_t slots = 0;
    int64_t lastEnd = 0;
    for (int n = 0; plainFrames < 200 || slots < 200; ++n) {
        Step step = Nth(n);
        step.sample.preroll = true;
        step.sample.discontinuity = kOk;
        *step.sample.start += kMs;  // so that no sample is mistaken for a slot
        *step.sample.stop += kMs;
        const Outcome outcome = rig.Play(step);
        for (const OutputFrame& frame : outcome.frames) {
            if (frame.preroll) {
                EXPECT_EQ(outcome.frames.size(), 1u);
                EXPECT_EQ(frame, (OutputFrame{.picture = step.sample.picture,
                                              .time = {{*step.sample.start, *step.sample.stop}},
                                              .preroll = true,
                                              .discontinuity = true,
                                              .mediaTime = step.sample.mediaTime}));
                ++plainFrames;
                continue;
            }
            const auto [start, end] = *frame.time;
            EXPECT_TRUE(frame.syncPoint && !frame.discontinuity);
            EXPECT_TRUE(start == 0 || IsOneOf(end - start, rates)) << frame;
            EXPECT_GT(end, lastEnd);
            EXPECT_TRUE(start == 0 || end < *step.sample.stop) << frame;
            lastEnd = end;
            ++slots;
        }
        // After a long stretch without slots there would be very many of them to make up for.
        if (n % 16 == 0) setter.WaitForAChange();
    }
}

TEST_F(LiveRateTest, TheStatisticsFollowTheStream) {
    const DWORD began = timeGetTime();
    ScenarioRig rig({.rate = 50});
    double fps = -1;
    rig.rig.settings->GetGenerateFps(&fps);
    EXPECT_EQ(fps, 0.0) << "no frame has passed yet";
    for (const Step& step : RegularSteps(25, 1, 30)) {
        Sleep(5);
        rig.Play(step);
    }
    rig.rig.settings->GetGenerateFps(&fps);
    // 59 frames came; between the start and the last of them lie 30 naps, and no more than all
    // this.
    EXPECT_GE(fps, 59000.0 / (timeGetTime() - began + 1));
    EXPECT_LE(fps, 59000.0 / (30 * 4));
    rig.rig.settings->SetFrameRate(0.0);
    rig.rig.settings->GetGenerateFps(&fps);
    EXPECT_EQ(fps, 0.0);
}

}  // namespace
