// Rounds of calls, timed. The clock is the processor time of the calling thread, which stands still
// while other programs have the processor.

#pragma once

#include <ctime>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "bench/picture.h"

namespace tavo::bench {

inline int64_t ThreadNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// Keeps the compiler from leaving out what only writes memory.
inline void KeepMemory() { asm volatile("" ::: "memory"); }

template <typename Call>
double NanosecondsPerCall(Call& call, int64_t calls) {
    const int64_t start = ThreadNanoseconds();
    for (int64_t i = 0; i < calls; ++i) {
        call();
        KeepMemory();
    }
    return static_cast<double>(ThreadNanoseconds() - start) / static_cast<double>(calls);
}

// Where pictures are before a call.
enum class Caches { Cold, Hot };

// Times one piece of work in rounds of about two milliseconds.
template <typename Call>
class Stopwatch {
  public:
    explicit Stopwatch(Call call) : call_(std::move(call)) {
        // The first calls also fault pages in and warm what the processor learns.
        for (int i = 0; i < 3; ++i) {
            const double perCall = std::max(NanosecondsPerCall(call_, calls_), 1.0);
            calls_ = std::max<int64_t>(1, static_cast<int64_t>(kRoundNanoseconds / perCall));
        }
    }

    // Nanoseconds per call of one round. A call that does not count brings the pictures back into
    // the caches after what others did.
    double HotRound() {
        call_();
        return NanosecondsPerCall(call_, calls_);
    }

    // The same with another source and destination for each call, which are in no cache.
    double ColdRound() {
        PictureRings& rings = PictureRings::Get();
        auto turnAndCall = [&] {
            rings.Turn();
            call_();
        };
        rings.SetTurning(true);
        turnAndCall();
        const double nanoseconds = NanosecondsPerCall(turnAndCall, calls_);
        rings.SetTurning(false);
        return nanoseconds;
    }

    double Round(Caches caches) { return caches == Caches::Cold ? ColdRound() : HotRound(); }

  private:
    static constexpr double kRoundNanoseconds = 2e6;

    Call call_;
    int64_t calls_ = 1;
};

inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace tavo::bench
