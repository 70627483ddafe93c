// Writes frames that come with times: at the end the file has the rate that suits them, and repeats
// frames for as long as they last.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/avi_writer.h"
#include "host/avi/frame_timing.h"
#include "host/avi/time_stamps.h"

namespace tavo {

// Times are in units of 100 ns. Not for several threads at once. Order of use: Begin, frames,
// SettleTiming, Finish. All may throw std::bad_alloc; the file stays valid then.
class TimedAviWriter {
  public:
    // Whether frames keep the distances of their times, or follow each other at the rate that the
    // source names.
    enum class Timing { Kept, FrameForFrame };

    // As AviWriter. `frameDuration` is what the source names; 0 when it does not.
    TimedAviWriter(ByteStore& store, const VideoFormat& video, int64_t frameDuration,
                   Timing timing);

    void SetShownAspect(AspectRatio aspect) { writer_.SetShownAspect(aspect); }
    IoResult Begin() { return writer_.Begin(); }

    // A frame without a time has no `start`; `length` is 0 when it does not say how long it lasts.
    IoResult WriteFrame(std::span<const std::byte> frame, std::optional<int64_t> start,
                        int64_t length);

    // Chooses the rate, and how often frames are repeated. Fails after a failure.
    IoResult SettleTiming();
    IoResult Finish() { return writer_.Finish(); }

    FrameRate Rate() const { return rate_; }
    const TimeStamps& Stamps() const { return stamps_; }
    uint64_t FrameCount() const { return writer_.FrameCount(); }
    // After Finish.
    uint64_t RepeatCount() const { return writer_.SlotCount() - writer_.FrameCount(); }
    uint64_t BytesWritten() const { return writer_.BytesWritten(); }

  private:
    IoResult Append(std::span<const std::byte> frame, std::optional<int64_t> start, int64_t length);
    int64_t UsualDistance() const;

    AviWriter writer_;
    const int64_t frameDuration_;
    const Timing timing_;
    FrameRate rate_;
    RisingTimes times_;
    std::vector<int64_t> starts_;
    int64_t lastLength_ = 0;  // 0 when the last frame does not say
    TimeStamps stamps_;
};

}  // namespace tavo
