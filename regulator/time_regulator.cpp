#include "regulator/time_regulator.h"

#include <algorithm>
#include <limits>

namespace tavo {

void TimeRegulator::ForgetKeptPicture() {
    repeatFrame_ = true;
    bufferEmpty_ = true;
    hasKeptPicture_ = false;
}

void TimeRegulator::MarkPictureKept() {
    bufferEmpty_ = false;
    hasKeptPicture_ = true;
}

// If no picture is kept, the slot takes the sample's.
void TimeRegulator::BeginSlot(TimeWindow sample, int64_t duration) {
    int64_t start = nextSlotEnd_ - duration;
    if (start < 0) {
        nextSlotEnd_ = duration;
        start = 0;
    }
    slot_ = {start, nextSlotEnd_};
    const bool startsHere = slot_.end >= sample.start && slot_.start < sample.start;
    const bool isFirstSlot = slot_.end == duration;
    repeatFrame_ = true;
    bufferEmpty_ = startsHere || isFirstSlot || !hasKeptPicture_;
    isInSlot_ = true;
}

// The end of time is the end of all slots.
void TimeRegulator::EndSlot(int64_t nextDuration) {
    const int64_t left = std::numeric_limits<int64_t>::max() - nextSlotEnd_;
    nextSlotEnd_ += std::min(left, nextDuration);
    isInSlot_ = false;
}

FrameBranch TimeRegulator::Branch() const {
    if (repeatFrame_) return bufferEmpty_ ? FrameBranch::ScaleAndKeep : FrameBranch::Repeat;
    return bufferEmpty_ ? FrameBranch::KeepOnly : FrameBranch::OneBehind;
}

}  // namespace tavo
