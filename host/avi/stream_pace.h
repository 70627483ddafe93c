// Keeps two streams with threads of their own near each other in time.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "host/avi/frame_rate.h"

namespace tavo {

// The stream that is too far ahead waits, so never both. Nothing waits before Start. Any thread may
// call any member. Times are in units of 100 ns.
class StreamPace {
  public:
    static constexpr int64_t kLead = kUnitsPerSecond;

    enum class Stream { Frames, Sound };

    // Both streams are at 0.
    void Start() {
        const std::lock_guard lock(mutex_);
        frames_ = sound_ = 0;
        waits_ = true;
    }

    // The stream has come to this time, and may wait.
    void Reach(Stream stream, int64_t time) {
        std::unique_lock lock(mutex_);
        int64_t& own = stream == Stream::Frames ? frames_ : sound_;
        const int64_t& other = stream == Stream::Frames ? sound_ : frames_;
        own = BoundedTime(time);
        changed_.notify_all();
        changed_.wait(lock, [&] { return !waits_ || own <= other + kLead; });
    }

    // From here on nothing waits: one stream has ended, or the graph stops.
    void End() {
        const std::lock_guard lock(mutex_);
        waits_ = false;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    int64_t frames_ = 0;
    int64_t sound_ = 0;
    bool waits_ = false;
};

}  // namespace tavo
