// What the filter does around the regulator, with numbers for pictures.
#pragma once

#include "regulator/frame_duration.h"
#include "regulator/stream_time.h"
#include "regulator/time_regulator.h"
#include "tests/regulator/regulator_model.h"

namespace tavo_test {

class RegulatedStream {
  public:
    using Downstream = RegulatorModel::Downstream;

    void SetRate(double fps) { duration_ = tavo::FrameDuration(fps); }
    bool IsOn() const { return duration_ > 0; }
    // Whether every frame so far was scaled or a repeat.
    bool HasKnownBranchesOnly() const { return hasKnownBranchesOnly_; }

    void Start(int64_t clock) {
        regulator_.Restart();
        frames_ = 0;
        time_.Forget();
        if (IsOn()) time_.Begin(clock);
    }
    void Flush(int64_t clock) { Start(clock); }

    int32_t Receive(const InputSample& sample, const Downstream& downstream) {
        if (!IsOn()) {
            const int32_t result = downstream(PlainFrame(sample));
            ++frames_;
            return result;
        }
        int32_t result = sample.discontinuity;
        const tavo::TimeWindow window = WindowOf(sample);
        int64_t duration = duration_;
        while (duration > 0 && regulator_.HasSlotIn(window)) {
            regulator_.BeginSlot(window, duration);
            result = downstream(MakeFrame(sample));
            ++frames_;
            regulator_.EndSlot(duration_ > 0 ? duration_ : duration);
            duration = duration_;
        }
        return result;
    }

  private:
    tavo::TimeWindow WindowOf(const InputSample& sample) {
        if (sample.start && sample.stop) return {*sample.start, *sample.stop};
        if (!time_.HasBegun()) time_.Begin(sample.clock);
        const int64_t now = time_.At(sample.clock);
        return {now >= duration_ ? now - duration_ : now, now};
    }
    static OutputFrame PlainFrame(const InputSample& sample) {
        OutputFrame frame;
        frame.picture = sample.picture;
        if (sample.start && sample.stop) frame.time = {*sample.start, *sample.stop};
        frame.syncPoint = sample.syncPoint;
        frame.preroll = sample.preroll;
        frame.discontinuity = sample.discontinuity == kOk;
        frame.mediaTime = sample.mediaTime;
        return frame;
    }
    OutputFrame MakeFrame(const InputSample& sample) {
        if (regulator_.Branch() == tavo::FrameBranch::ScaleAndKeep) {
            kept_ = sample.picture;
            regulator_.MarkPictureKept();
        } else if (regulator_.Branch() != tavo::FrameBranch::Repeat) {
            hasKnownBranchesOnly_ = false;
        }
        OutputFrame frame;
        frame.picture = kept_;
        frame.time = {regulator_.Slot().start, regulator_.Slot().end};
        frame.syncPoint = true;
        if (sample.mediaTime) frame.mediaTime = {frames_, frames_ + 1};
        return frame;
    }

    tavo::TimeRegulator regulator_;
    tavo::StreamTime time_;
    int64_t duration_ = 0;
    int64_t frames_ = 0;
    int kept_ = -1;
    bool hasKnownBranchesOnly_ = true;
};

}  // namespace tavo_test
