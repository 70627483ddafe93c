// Statistics of start times: for the notes at the end of a run, and for the rate of a file whose
// frames are kept as they come. Other rates are chosen in frame_timing.h.

#pragma once

#include <cstdint>

namespace tavo {

// Times are in units of 100 ns. Not thread-safe.
class TimeStamps {
  public:
    // The start time of a frame. Times that run backwards count as irregular.
    void Add(int64_t start);

    // A frame without a time.
    void AddUnknown() { ++unknown_; }

    // Between the first two times; 0 when there are none, or the second is not later.
    int64_t FirstInterval() const { return firstInterval_; }

    // Whether an interval differs from the mean by more than 2 ms and more than a tenth of the
    // mean. (2 ms: twice the rounding of stamps in milliseconds.)
    bool IsIrregular() const;

    bool HasIntervals() const { return count_ > 1; }
    uint64_t Unknown() const { return unknown_; }
    double ShortestMs() const;
    double LongestMs() const;
    double MeanMs() const;

  private:
    int64_t first_ = 0;
    int64_t last_ = 0;
    int64_t firstInterval_ = 0;
    int64_t shortest_ = 0;
    int64_t longest_ = 0;
    uint64_t count_ = 0;
    uint64_t unknown_ = 0;
};

}  // namespace tavo
