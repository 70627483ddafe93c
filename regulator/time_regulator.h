// The rule of the time regulator. The output is a row of slots, one frame duration each, without a
// gap. Every sample gives one frame for each slot that ends inside its window: none, one, or
// several. A frame shows the sample's picture in the slot in which the sample starts, and in the
// first slot of all; every other frame repeats the picture that was kept last.
//
// The class decides and remembers; it neither scales nor sends. Times are in units of 100 ns. Not
// thread-safe: it belongs to the thread that the samples come on.
//
//     while (regulator.HasSlotIn(window)) {
//         regulator.BeginSlot(window, duration);
//         ...                                  a frame by Branch(), stamped with Slot()
//         regulator.EndSlot(duration);
//     }

#pragma once

#include <cstdint>

namespace tavo {

struct TimeWindow {
    int64_t start = 0;
    int64_t end = 0;
};

// How a regulated frame is made. The regulator itself chooses ScaleAndKeep and Repeat only.
enum class FrameBranch {
    ScaleAndKeep,  // the sample's picture goes out and is kept
    Repeat,        // the kept picture goes out
    KeepOnly,      // the sample's picture is kept, nothing goes out
    OneBehind,     // the kept picture goes out, the sample's is kept instead
};

class TimeRegulator {
  public:
    // A stream begins, or goes on after a flush: no slots and no kept picture.
    void Restart() { *this = TimeRegulator(); }
    // The slots begin anew at the start of the stream.
    void RestartSlots() { nextSlotEnd_ = 0; }
    // The kept picture is lost, or its size is no longer that of the output.
    void ForgetKeptPicture();
    // The stream has ended: a frame that comes all the same is scaled, not repeated.
    void Stop() { bufferEmpty_ = true; }

    // Whether a slot ends inside the window of a sample: then it gives a frame.
    bool HasSlotIn(TimeWindow sample) const { return nextSlotEnd_ < sample.end; }

    // Settles time and branch of the next slot. `duration` is above 0.
    void BeginSlot(TimeWindow sample, int64_t duration);
    // Goes on to the slot that follows, whose duration is given.
    void EndSlot(int64_t nextDuration);
    // From BeginSlot to EndSlot.
    bool IsInSlot() const { return isInSlot_; }

    // Of the slot that was begun last.
    TimeWindow Slot() const { return slot_; }
    FrameBranch Branch() const;

    // The frame is made, and its picture kept.
    void MarkPictureKept();

  private:
    bool isInSlot_ = false;
    bool hasKeptPicture_ = false;
    // The two flags that choose the branch. Deliberate: nothing clears repeatFrame_, so KeepOnly
    // and OneBehind never come up.
    bool repeatFrame_ = true;
    // This slot shows the sample's picture, whatever is kept. Also set when a new output type
    // discards the kept picture between BeginSlot and Branch.
    bool bufferEmpty_ = true;
    int64_t nextSlotEnd_ = 0;  // 0 before the first slot
    TimeWindow slot_;
};

}  // namespace tavo
