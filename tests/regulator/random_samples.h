// Samples as a careless source sends them: uneven lengths, jitter, gaps, times left out.
#pragma once

#include <cstdint>
#include <random>

#include "tests/regulator/regulator_model.h"

namespace tavo_test {

class RandomSamples {
  public:
    static constexpr int64_t kMs = 10'000;

    RandomSamples(uint32_t seed, int64_t clock) : random_(seed), clock_(clock) {}

    int Below(int end) { return static_cast<int>(random_() % static_cast<uint32_t>(end)); }
    bool OneIn(int n) { return Below(n) == 0; }

    // A rate at which the regulator is on.
    double Rate() {
        constexpr double kRates[] = {5.0,  12.5, 23.976, 24.0, 25.0, 29.97,
                                     30.0, 50.0, 59.94,  60.0, 75.3, 100.0};
        return kRates[Below(12)];
    }

    void SetPosition(int64_t position) { position_ = position; }
    int64_t Clock() const { return clock_; }

    InputSample Next(int picture) {
        clock_ += Below(90) * kMs + Below(3);
        if (OneIn(30)) position_ += 400 * kMs;
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

  private:
    std::minstd_rand random_;
    int64_t clock_;
    int64_t position_ = 0;
};

}  // namespace tavo_test
