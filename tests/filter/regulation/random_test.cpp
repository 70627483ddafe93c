// Streams in which everything happens at once, held against the model.
#include <gtest/gtest.h>

#include "tests/filter/regulation/scenario.h"
#include "tests/regulator/random_samples.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// A rate that may mean off.
double AnyRate(RandomSamples& random) {
    if (random.OneIn(7)) return random.OneIn(2) ? 0.0 : -3.0;
    return random.Rate();
}

Step NextStep(RandomSamples& random, int picture) {
    Step step;
    if (random.OneIn(12)) step.rate = AnyRate(random);
    step.flush = random.OneIn(20);
    if (step.flush) random.SetPosition(random.Below(4) * 100 * kMs);
    step.sample = random.Next(picture);
    for (int n = random.Below(3); n > 0; --n) {
        Reaction reaction = {.frame = random.Below(6)};
        if (random.OneIn(2)) reaction.rate = AnyRate(random);
        if (random.OneIn(3)) reaction.answer = random.OneIn(2) ? E_FAIL : S_FALSE;
        if (random.OneIn(3)) step.reactions.push_back(reaction);
    }
    return step;
}

Scenario RandomScenario(uint32_t seed) {
    Scenario scenario;
    scenario.clock = seed % 2 ? 0 : 1'000'000 * kMs;
    RandomSamples random(seed, *scenario.clock);
    scenario.rate = AnyRate(random);
    const int count = 10 + random.Below(30);
    for (int i = 1; i <= count; ++i) scenario.steps.push_back(NextStep(random, i));
    return scenario;
}

class RandomStreamTest : public FilterTest {};

TEST_F(RandomStreamTest, SameAsTheModel) {
    size_t frames = 0;
    size_t dropped = 0;
    size_t repeats = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const Scenario scenario = RandomScenario(seed);
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
