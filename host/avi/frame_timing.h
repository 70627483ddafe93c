// Fits frames with start times of any kind into the slots of a fixed rate: which rate, and for how
// many slots each frame is shown.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/frame_rate.h"

namespace tavo {

// No rate that is chosen because of irregular times is higher.
constexpr uint32_t kHighestSlotRate = 240;

struct FrameTiming {
    FrameRate rate;
    // How often each frame is shown once more; one number per frame.
    std::vector<uint32_t> repeats;
    uint64_t totalRepeats = 0;
};

// `starts` rise, in units of 100 ns, with no gap above RisingTimes::kLongestGap, and the last
// frame ends at `end`. `nominal` is what the source says of its rate, if it does.
//
// Steady times give one slot to each frame. Otherwise every frame gets a slot of its own, and
// starts as near to its time as the rate allows. May throw std::bad_alloc.
FrameTiming FitTiming(std::span<const int64_t> starts, int64_t end,
                      std::optional<FrameRate> nominal);

// How many repeats a frame can get at most when the next one starts `gap` later.
uint32_t MostRepeats(int64_t gap);

// Turns the times of a stream into ones that rise, as FitTiming wants them.
class RisingTimes {
  public:
    static constexpr int64_t kLongestGap = 3600 * kUnitsPerSecond;

    // A frame's own time; nothing for one without. Times that do not rise, and gaps longer than
    // kLongestGap, count as one usual distance: whatever was meant, the stream goes on from there.
    // `usual` is above 0.
    int64_t Next(std::optional<int64_t> start, int64_t usual);

  private:
    bool any_ = false;
    int64_t source_ = 0;  // the last one, as it came
    int64_t last_ = 0;    // and as it was given out
};

}  // namespace tavo
