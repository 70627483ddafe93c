// Statistics over the intervals between frames.

#include "host/avi/time_stamps.h"

#include <algorithm>

#include "host/avi/frame_rate.h"

namespace tavo {
namespace {

constexpr double kUnitsPerMs = 10000.0;
constexpr double kRoundingMs = 2.0;

}  // namespace

void TimeStamps::Add(int64_t start) {
    start = std::clamp(start, -kMaxTime, kMaxTime);
    if (count_ == 0) {
        first_ = start;
    } else {
        const int64_t interval = start - last_;
        if (count_ == 1) {
            firstInterval_ = std::max<int64_t>(interval, 0);
            shortest_ = interval;
            longest_ = interval;
        }
        shortest_ = std::min(shortest_, interval);
        longest_ = std::max(longest_, interval);
    }
    last_ = start;
    ++count_;
}

double TimeStamps::ShortestMs() const { return static_cast<double>(shortest_) / kUnitsPerMs; }
double TimeStamps::LongestMs() const { return static_cast<double>(longest_) / kUnitsPerMs; }

double TimeStamps::MeanMs() const {
    if (!HasIntervals()) return 0.0;
    return static_cast<double>(last_ - first_) / kUnitsPerMs / static_cast<double>(count_ - 1);
}

bool TimeStamps::IsIrregular() const {
    if (!HasIntervals()) return false;
    const double mean = MeanMs();
    const double tolerance = std::max(mean / 10.0, kRoundingMs);
    return LongestMs() > mean + tolerance || ShortestMs() < mean - tolerance;
}

}  // namespace tavo
