// What the filter tells of the running stream. Any thread reads; times are milliseconds of
// timeGetTime, counted in 32 bits.

#pragma once

#include <atomic>
#include <cstdint>

#include "cpu/atomic64.h"

class StreamStatistics {
  public:
    void BeginStream(uint32_t now);
    void EndStream();
    // No frames so far.
    void ResetCounts();

    // Work on a frame, done or failed.
    void AddWork(uint32_t began, uint32_t ended);
    void CountProcessedFrame() { ++processedFrames_; }
    void CountGeneratedFrame() { generatedFrames_.Increment(); }
    void ResetGeneratedFrames() { generatedFrames_.store(0); }
    int64_t GeneratedFrames() const { return generatedFrames_.load(); }

    // Into memory: a double in a register would pass through the x87 unit (see atomic64.h).
    void GetMeanWork(double* milliseconds) const;
    void GetProcessedPerSecond(double* fps) const;
    void GetGeneratedPerSecond(double* fps) const;

  private:
    uint32_t StreamingTime() const { return lastTime_ - startTime_; }

    std::atomic<uint32_t> startTime_{0};
    std::atomic<uint32_t> lastTime_{0};
    std::atomic<uint32_t> processingTime_{0};
    std::atomic<uint32_t> processedFrames_{0};
    Atomic64<int64_t> generatedFrames_{0};
};
