// Frames of a movie by their times.

#pragma once

#include <algorithm>
#include <cstdint>
#include <ranges>

#include "host/avi/raw_movie.h"
#include "host/filters/time_section.h"

namespace tavo {

// The first frame of so many that starts at `time` or later; their count when there is none.
inline uint32_t FirstFrameFrom(FrameRate rate, uint32_t count, int64_t time) {
    const auto frames = std::views::iota(uint32_t{0}, count);
    const auto first = std::ranges::partition_point(
        frames, [&](uint32_t frame) { return FrameStart(rate, frame) < time; });
    return static_cast<uint32_t>(first - frames.begin());
}

inline uint32_t FirstFrameFrom(const RawMovie& movie, int64_t time) {
    return FirstFrameFrom(movie.reader.Rate(), movie.reader.FrameCount(), time);
}

inline uint32_t CountFrames(const RawMovie& movie, const TimeSection& section) {
    return FirstFrameFrom(movie, section.End()) - FirstFrameFrom(movie, section.start);
}

}  // namespace tavo
