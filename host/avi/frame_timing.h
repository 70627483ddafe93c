// Fits frames with any start times into the slots of a fixed rate: chooses the rate, and how many
// slots each frame fills.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/frame_rate.h"

namespace tavo {

// The highest rate that is chosen for irregular times.
constexpr uint32_t kMaxSlotRate = 240;

struct FrameTiming {
    FrameRate rate;
    // Per frame: how often it is repeated.
    std::vector<uint32_t> repeats;
    uint64_t totalRepeats = 0;
};

// `starts` are increasing times in units of 100 ns, with no gap above MonotonicTimes::kMaxGap; the
// last frame ends at `end`. `nominal` is the rate that the source names, if it does.
//
// Regular frames get one slot each. Otherwise every frame gets its own slots, as near to its time
// as the rate allows. May throw std::bad_alloc.
FrameTiming FitTiming(std::span<const int64_t> starts, int64_t end,
                      std::optional<FrameRate> nominal);

// The most repeats that a frame can get when the next one starts `gap` later.
uint32_t MaxRepeats(int64_t gap);

// Turns the times of a stream into increasing ones, as FitTiming needs them.
class MonotonicTimes {
  public:
    static constexpr int64_t kMaxGap = 3600 * kUnitsPerSecond;

    // `start` is the frame's own time, if it has one. Times that do not increase, and gaps above
    // kMaxGap, count as one typical interval, which is above 0.
    int64_t Next(std::optional<int64_t> start, int64_t typicalInterval);

  private:
    bool any_ = false;
    int64_t source_ = 0;  // the last time, as it came
    int64_t last_ = 0;    // and as it was returned
};

}  // namespace tavo
