// Reserves space behind each frame. Once all times are known, the repeats are written into part of
// it.

#include "host/avi/timed_avi_writer.h"

#include <algorithm>
#include <utility>

namespace tavo {
namespace {

constexpr FrameRate kUnknownRate = {25, 1};
// Chunks of sound that wait for the next frame.
constexpr uint64_t kChunksThatWait = 4;
// How far sound lies in front of the frames of its time.
constexpr int64_t kSoundLead = kUnitsPerSecond;

FrameRate NominalRate(int64_t frameDuration) {
    return frameDuration > 0 ? RateFromDuration(frameDuration) : kUnknownRate;
}

}  // namespace

TimedAviWriter::TimedAviWriter(ByteStore& store, const VideoFormat& video, int64_t frameDuration,
                               Timing timing, AviLimits limits)
    : writer_(store, video, NominalRate(frameDuration), limits),
      frameDuration_(frameDuration),
      timing_(timing),
      rate_(NominalRate(frameDuration)) {}

IoResult TimedAviWriter::WriteFrame(std::span<const std::byte> frame, std::optional<int64_t> start,
                                    int64_t length) {
    const IoResult result = Append(frame, start, length);
    if (result != IoResult::Ok) return result;
    if (start) {
        stamps_.Add(*start);
    } else {
        stamps_.AddUnknown();
    }
    return result;
}

void TimedAviWriter::SetSound(const SoundFormat& sound) {
    writer_.SetSound(sound);
    // Where times go back, a fixed rate has no frames until they are where they were.
    const bool isFixed = timing_ == Timing::FrameForFrame;
    sound_.emplace(sound, isFixed ? SoundTrack::kMaxGap : SoundTrack::kMaxOverlap);
}

bool TimedAviWriter::AddSound(std::span<const std::byte> sound, std::optional<int64_t> start) {
    if (!sound_ || soundIsCut_) return false;
    soundIsCut_ = sound_->Held() + sound.size() > maxSoundHeld_;
    if (!soundIsCut_) sound_->Add(sound, start);
    return !soundIsCut_;
}

IoResult TimedAviWriter::WriteAhead() { return WriteAhead(kChunksThatWait); }

IoResult TimedAviWriter::WriteAhead(uint64_t chunks) {
    IoResult result = IoResult::Ok;
    const uint32_t bytes = writer_.AheadChunkBytes();
    while (result == IoResult::Ok && sound_ && sound_->Waiting() >= chunks * bytes &&
           writer_.CanWriteAhead()) {
        result = writer_.WriteAhead(sound_->Take(bytes));
    }
    return result;
}

// Behind the last frame.
IoResult TimedAviWriter::WriteRest(uint32_t repeats) {
    IoResult result = WriteAhead(1);
    if (result == IoResult::Ok && timing_ == Timing::Kept) result = writer_.ReserveRepeats(repeats);
    return result == IoResult::Ok ? WriteSound() : result;
}

// Behind the frame just written.
IoResult TimedAviWriter::WriteSound(std::optional<int64_t> end) {
    if (!sound_ || writer_.FrameCount() == 0) return IoResult::Ok;
    const uint64_t due = end ? sound_->WaitingBefore(*end) : sound_->Waiting();
    if (due == 0) return IoResult::Ok;
    const uint64_t most = AviWriter::kMaxSoundBytes;
    return writer_.WriteSound(sound_->Take(static_cast<size_t>(std::min(due, most))));
}

IoResult TimedAviWriter::Append(std::span<const std::byte> frame, std::optional<int64_t> start,
                                int64_t length) {
    IoResult result = IoResult::Ok;
    if (timing_ == Timing::Kept) {
        const int64_t time = times_.Next(start, TypicalInterval());
        const int64_t last = starts_.empty() ? time : starts_.back();
        starts_.push_back(time);
        if (time > last) result = writer_.ReserveRepeats(MaxRepeats(time - last));
    }
    // A source that sends its sound long before the frames must not make a file like that: who
    // reads it would have to keep as much.
    const auto end = start ? std::optional(BoundedTime(*start) + kSoundLead) : std::nullopt;
    if (result == IoResult::Ok) result = WriteSound(end);
    if (result == IoResult::Ok) result = writer_.WriteFrame(frame);
    if (result == IoResult::Ok) {
        lastLength_ = length;
        if (sound_ && writer_.FrameCount() == 1) sound_->Begin(start.value_or(0));
    } else if (timing_ == Timing::Kept) {
        starts_.pop_back();
    }
    return result;
}

int64_t TimedAviWriter::TypicalInterval() const {
    if (frameDuration_ > 0) return frameDuration_;
    const int64_t interval = stamps_.FirstInterval();
    return interval > 0 ? interval : DurationOf(kUnknownRate);
}

IoResult TimedAviWriter::SettleTiming() {
    if (timing_ == Timing::FrameForFrame) {
        const int64_t interval = stamps_.FirstInterval();
        if (frameDuration_ == 0 && interval > 0) rate_ = RateFromDuration(interval);
        writer_.SetRate(rate_);
        return WriteRest(0);
    }
    if (starts_.empty()) return IoResult::Ok;
    const bool says = lastLength_ > 0 && lastLength_ <= MonotonicTimes::kMaxGap;
    const int64_t length = says ? lastLength_ : TypicalInterval();
    const auto nominal = frameDuration_ > 0 ? std::optional(rate_) : std::nullopt;
    FrameTiming timing = FitTiming(starts_, starts_.back() + length, nominal);
    rate_ = timing.rate;
    writer_.SetRate(rate_);
    const uint32_t last = timing.repeats.back();
    writer_.SetRepeats(std::move(timing.repeats));
    return WriteRest(last);
}

}  // namespace tavo
