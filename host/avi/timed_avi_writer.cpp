// Reserves space behind each frame. Once all times are known, the repeats are written into part of
// it.

#include "host/avi/timed_avi_writer.h"

#include <utility>

namespace tavo {
namespace {

constexpr FrameRate kUnknownRate = {25, 1};

FrameRate NominalRate(int64_t frameDuration) {
    return frameDuration > 0 ? RateFromDuration(frameDuration) : kUnknownRate;
}

}  // namespace

TimedAviWriter::TimedAviWriter(ByteStore& store, const VideoFormat& video, int64_t frameDuration,
                               Timing timing)
    : writer_(store, video, NominalRate(frameDuration)),
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

IoResult TimedAviWriter::Append(std::span<const std::byte> frame, std::optional<int64_t> start,
                                int64_t length) {
    if (timing_ == Timing::FrameForFrame) return writer_.WriteFrame(frame);
    const int64_t time = times_.Next(start, TypicalInterval());
    const int64_t last = starts_.empty() ? time : starts_.back();
    starts_.push_back(time);
    IoResult result = IoResult::Ok;
    if (time > last) result = writer_.ReserveRepeats(MaxRepeats(time - last));
    if (result == IoResult::Ok) result = writer_.WriteFrame(frame);
    if (result == IoResult::Ok) {
        lastLength_ = length;
    } else {
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
        return IoResult::Ok;
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
    return writer_.ReserveRepeats(last);
}

}  // namespace tavo
