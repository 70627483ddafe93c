// Streams in which everything happens at once, held against the model.
#include <gtest/gtest.h>

#include <random>

#include "tests/filter/regulation/scenario.h"

using namespace tavo_test;

namespace {

constexpr int64_t kMs = 10'000;

class StreamMaker {
  public:
    explicit StreamMaker(uint32_t seed) : random_(seed) {}

    Scenario Make() {
        Scenario scenario;
        scenario.rate = Rate();
        clock_ = Below(2) ? 0 : 1'000'000 * kMs;
        scenario.clock = clock_;
        const int count = 10 + Below(30);
        for (int i = 1; i <= count; ++i) scenario.steps.push_back(NextStep(i));
        return scenario;
    }

  private:
    int Below(int end) { return static_cast<int>(random_() % static_cast<uint32_t>(end)); }
    bool OneIn(int n) { return Below(n) == 0; }

    double Rate() {
        constexpr double kRates[] = {0.0,  5.0,  12.5,  23.976, 24.0, 25.0,  29.97,
                                     30.0, 50.0, 59.94, 60.0,   75.3, 100.0, -3.0};
        return kRates[Below(14)];
    }

    Step NextStep(int picture) {
        Step step;
        clock_ += Below(90) * kMs + Below(3);
        if (OneIn(12)) step.rate = Rate();
        step.flush = OneIn(20);
        if (step.flush) position_ = Below(4) * 100 * kMs;
        if (OneIn(40)) position_ += 500 * kMs;
        step.sample = NextSample(picture);
        for (int n = Below(3); n > 0; --n) {
            Reaction reaction = {.frame = Below(6)};
            if (OneIn(2)) reaction.rate = Rate();
            if (OneIn(3)) reaction.answer = OneIn(2) ? E_FAIL : S_FALSE;
            if (OneIn(3)) step.reactions.push_back(reaction);
        }
        return step;
    }

    InputSample NextSample(int picture) {
        InputSample sample;
        sample.picture = picture;
        sample.clock = clock_;
        sample.syncPoint = OneIn(2);
        sample.preroll = OneIn(2);
        sample.discontinuity = OneIn(3) ? kOk : kFalse;
        if (!OneIn(3)) sample.mediaTime = {{picture * 2, picture * 2 + 2}};
        if (OneIn(8)) return sample;  // no times
        const int64_t length = OneIn(6) ? Below(4) * 50 * kMs : 40 * kMs + Below(20'000);
        const int64_t jitter = OneIn(4) ? (Below(200) - 100) * kMs : 0;
        sample.start = position_ + jitter;
        if (!OneIn(15)) sample.stop = *sample.start + length;
        position_ += length;
        return sample;
    }

    std::mt19937 random_;
    int64_t clock_ = 0;
    int64_t position_ = 0;
};

class RandomStreamTest : public FilterTest {};

TEST_F(RandomStreamTest, SameAsTheModel) {
    size_t frames = 0;
    size_t dropped = 0;
    size_t repeats = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const Scenario scenario = StreamMaker(seed).Make();
        ExpectSameAsModel(scenario);
        if (HasFailure()) break;
        for (const Outcome& outcome : RunModel(scenario)) {
            frames += outcome.frames.size();
            if (outcome.frames.empty()) ++dropped;
            if (outcome.frames.size() > 1) repeats += outcome.frames.size() - 1;
        }
    }
    // The streams must have been worth comparing.
    EXPECT_GT(frames, 10'000u);
    EXPECT_GT(dropped, 1'000u);
    EXPECT_GT(repeats, 3'000u);
}

}  // namespace
