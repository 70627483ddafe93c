// Where a stream is, by a clock that somebody else reads. Samples without times of their own are
// placed by it. Times are in units of 100 ns. Not thread-safe.

#pragma once

#include <cstdint>

namespace tavo {

class StreamTime {
  public:
    // The stream begins now, or goes on where it was suspended.
    void Begin(int64_t now) {
        base_ = isSuspended_ ? Difference(now, suspendedAt_) : now;
        hasBegun_ = true;
        isSuspended_ = false;
    }
    void Forget() { hasBegun_ = isSuspended_ = false; }
    bool HasBegun() const { return hasBegun_; }

    // The clock is another one from here on; the stream goes on when that tells the time.
    void Suspend(int64_t lastOfOld) {
        suspendedAt_ = At(lastOfOld);
        isSuspended_ = true;
        hasBegun_ = false;
    }
    bool IsSuspended() const { return isSuspended_; }

    // Time since the stream began.
    int64_t At(int64_t now) const { return Difference(now, base_); }

  private:
    // A clock may tell anything: wraps where the true difference has no place.
    static int64_t Difference(int64_t later, int64_t earlier) {
        return static_cast<int64_t>(static_cast<uint64_t>(later) - static_cast<uint64_t>(earlier));
    }

    int64_t base_ = 0;
    int64_t suspendedAt_ = 0;
    bool hasBegun_ = false;
    bool isSuspended_ = false;
};

}  // namespace tavo
