// Frame rates as fractions, and the duration of a frame in units of 100 ns.

#pragma once

#include <cstdint>

namespace tavo {

constexpr int64_t kUnitsPerSecond = 10'000'000;

// Larger times (7,300 years) are garbage. Differences within this range cannot overflow.
constexpr int64_t kMaxTime = INT64_MAX / 4;
constexpr int64_t BoundedTime(int64_t time) {
    return time < -kMaxTime ? -kMaxTime : time > kMaxTime ? kMaxTime : time;
}

// rate / scale frames per second, as in an AVI stream header. Neither is 0.
struct FrameRate {
    uint32_t rate = 25;
    uint32_t scale = 1;

    double Fps() const { return static_cast<double>(rate) / scale; }
    bool operator==(const FrameRate&) const = default;
};

// The simplest rate with that frame duration: 333667 is 30000/1001, 400000 is 25/1. Other durations
// keep their exact value. `units` is above 0.
FrameRate RateFromDuration(int64_t units);

// Duration of one frame, rounded to the nearest unit, at least 1.
int64_t DurationOf(FrameRate rate);

// Start time of a frame (below 2^32), the first at 0; exact, rounded down.
int64_t FrameStart(FrameRate rate, uint64_t frame);

}  // namespace tavo
