// The part of a video that is taken.

#pragma once

#include <cstdint>

namespace tavo {

// In units of 100 ns, neither negative. A frame that starts at t is inside when
// start <= t < start + duration.
struct TimeSection {
    int64_t start = 0;
    int64_t duration = INT64_MAX;

    enum class Place { Before, Inside, Behind };

    bool IsAll() const { return start == 0 && duration == INT64_MAX; }
    int64_t End() const { return duration > INT64_MAX - start ? INT64_MAX : start + duration; }
    Place PlaceOf(int64_t time) const {
        if (time < start) return Place::Before;
        return time < End() || duration == INT64_MAX ? Place::Inside : Place::Behind;
    }
    bool operator==(const TimeSection&) const = default;
};

}  // namespace tavo
