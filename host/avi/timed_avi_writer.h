// Writes frames that have start times, and sound: chooses the rate that fits the frames when the
// file is finished, and repeats frames that last longer.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/avi_writer.h"
#include "host/avi/frame_timing.h"
#include "host/avi/sound_track.h"
#include "host/avi/time_stamps.h"

namespace tavo {

// Times are in units of 100 ns. Not thread-safe. Call Begin, WriteFrame, SettleTiming, Finish in
// this order. All may throw std::bad_alloc; the file stays valid then.
class TimedAviWriter {
  public:
    // Kept: frames are shown at their times. FrameForFrame: one slot each, at the rate that the
    // source names.
    enum class Timing { Kept, FrameForFrame };

    // As AviWriter. `frameDuration` is the one that the source names, or 0.
    TimedAviWriter(ByteStore& store, const VideoFormat& video, int64_t frameDuration, Timing timing,
                   AviLimits limits = {});

    void SetDisplayAspect(AspectRatio aspect) { writer_.SetDisplayAspect(aspect); }
    // Before Begin.
    void SetSound(const SoundFormat& sound);
    void SetMaxSoundHeld(size_t bytes) { maxSoundHeld_ = bytes; }
    IoResult Begin() { return writer_.Begin(); }

    // `start` is empty for a frame without a time; `length` is 0 when it is unknown.
    IoResult WriteFrame(std::span<const std::byte> frame, std::optional<int64_t> start,
                        int64_t length);

    // After SetSound. The sound is written behind the next frame, or at the end. False, and this
    // and all later sound is left out, when more than SetMaxSoundHeld would wait for a frame.
    static constexpr size_t kMaxSoundHeld = 256u << 20;
    bool AddSound(std::span<const std::byte> sound, std::optional<int64_t> start);
    // Writes sound that is far ahead of the next frame. To be called after AddSound.
    IoResult WriteAhead();

    // Chooses the rate and the repeats. Fails after a failure.
    IoResult SettleTiming();
    IoResult Finish() { return writer_.Finish(); }

    FrameRate Rate() const { return rate_; }
    const TimeStamps& Stamps() const { return stamps_; }
    uint64_t FrameCount() const { return writer_.FrameCount(); }
    // After Finish.
    uint64_t RepeatCount() const { return writer_.SlotCount() - writer_.FrameCount(); }
    uint64_t SoundBlocks() const { return writer_.SoundBlocks(); }
    // After SettleTiming: whether sound has found no place.
    bool HasSoundLeft() const { return sound_ && sound_->Waiting() > 0; }
    uint64_t BytesWritten() const { return writer_.BytesWritten(); }

  private:
    IoResult Append(std::span<const std::byte> frame, std::optional<int64_t> start, int64_t length);
    int64_t TypicalInterval() const;
    // Chunks of sound, until less than so many wait.
    IoResult WriteAhead(uint64_t chunks);
    // Without an end, all that waits.
    IoResult WriteSound(std::optional<int64_t> end = {});
    IoResult WriteRest(uint32_t repeats);

    AviWriter writer_;
    const int64_t frameDuration_;
    const Timing timing_;
    FrameRate rate_;
    MonotonicTimes times_;
    std::vector<int64_t> starts_;
    int64_t lastLength_ = 0;  // of the last frame; 0 when unknown
    TimeStamps stamps_;
    std::optional<SoundTrack> sound_;
    size_t maxSoundHeld_ = kMaxSoundHeld;
    bool soundIsCut_ = false;
};

}  // namespace tavo
