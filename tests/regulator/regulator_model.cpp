// The regulator by its rule.
#include "tests/regulator/regulator_model.h"

#include <cmath>

namespace tavo_test {

namespace {

std::ostream& operator<<(std::ostream& out,
                         const std::optional<std::pair<int64_t, int64_t>>& span) {
    if (!span) return out << "none";
    return out << span->first << ".." << span->second;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const OutputFrame& frame) {
    out << "#" << frame.picture << " at " << frame.time << " media " << frame.mediaTime;
    if (frame.syncPoint) out << " sync";
    if (frame.preroll) out << " preroll";
    if (frame.discontinuity) out << " discontinuity";
    return out;
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    out << "result " << std::hex << static_cast<uint32_t>(outcome.result) << std::dec;
    for (const OutputFrame& frame : outcome.frames) out << "\n    " << frame;
    return out;
}

int64_t ModelFrameDuration(double fps) {
    const double hundredths = std::trunc(fps * 100.0);
    if (!(hundredths >= 1.0 && hundredths <= 1e9)) return 0;
    return 1'000'000'000 / static_cast<int64_t>(hundredths);
}

void RegulatorModel::SetRate(double fps) { duration_ = ModelFrameDuration(fps); }

void RegulatorModel::Start(int64_t clock) {
    keptPicture_.reset();
    Flush(clock);
}

void RegulatorModel::Flush(int64_t clock) {
    nextSlotEnd_ = 0;
    framesSent_ = 0;
    keptPicture_.reset();
    baseTime_.reset();
    if (duration_ > 0) baseTime_ = clock;
}

int32_t RegulatorModel::Receive(const InputSample& sample, const Downstream& downstream) {
    if (duration_ == 0) {
        const int32_t result = downstream(PlainFrame(sample));
        ++framesSent_;
        return result;
    }
    int32_t result = sample.discontinuity;
    const auto [start, end] = WindowOf(sample);
    while (duration_ > 0 && nextSlotEnd_ < end) {
        int64_t slotStart = nextSlotEnd_ - duration_;
        if (slotStart < 0) {
            nextSlotEnd_ = duration_;
            slotStart = 0;
        }
        bool take = nextSlotEnd_ == duration_;
        if (nextSlotEnd_ >= start && slotStart < start) take = true;
        if (!keptPicture_) take = true;
        if (take) keptPicture_ = sample.picture;

        const int64_t durationBefore = duration_;
        result = downstream(SlotFrame(sample, slotStart));
        ++framesSent_;
        // Switched off while the frame was under way: the slot after it is where it would have
        // been.
        nextSlotEnd_ += duration_ > 0 ? duration_ : durationBefore;
    }
    return result;
}

OutputFrame RegulatorModel::PlainFrame(const InputSample& sample) const {
    OutputFrame frame;
    frame.picture = sample.picture;
    if (sample.start && sample.stop) frame.time = {*sample.start, *sample.stop};
    frame.syncPoint = sample.syncPoint;
    frame.preroll = sample.preroll;
    frame.discontinuity = sample.discontinuity == kOk;
    frame.mediaTime = sample.mediaTime;
    return frame;
}

OutputFrame RegulatorModel::SlotFrame(const InputSample& sample, int64_t slotStart) const {
    OutputFrame frame;
    frame.picture = *keptPicture_;
    frame.time = {slotStart, nextSlotEnd_};
    frame.syncPoint = true;
    if (sample.mediaTime) frame.mediaTime = {framesSent_, framesSent_ + 1};
    return frame;
}

std::pair<int64_t, int64_t> RegulatorModel::WindowOf(const InputSample& sample) {
    if (sample.start && sample.stop) return {*sample.start, *sample.stop};
    if (!baseTime_) baseTime_ = sample.clock;
    const int64_t now = sample.clock - *baseTime_;
    const int64_t before = now - duration_;
    return {before >= 0 ? before : now, now};
}

}  // namespace tavo_test
