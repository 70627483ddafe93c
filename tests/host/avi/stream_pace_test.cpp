// Two streams that wait for each other.

#include "host/avi/stream_pace.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace tavo {
namespace {

using Stream = StreamPace::Stream;

constexpr int64_t kTenth = kUnitsPerSecond / 10;

TEST(StreamPace, NothingWaitsBeforeTheStart) {
    StreamPace pace;
    pace.Reach(Stream::Sound, INT64_MAX);
    pace.Reach(Stream::Frames, INT64_MIN);
}

TEST(StreamPace, NeitherIsFarAhead) {
    StreamPace pace;
    pace.Start();
    std::atomic<int64_t> frames = 0;
    std::atomic<int64_t> sound = 0;
    std::atomic<bool> faults = false;
    // What a stream passes on was let go when the other one was that near, or nearer.
    const auto run = [&](Stream stream, std::atomic<int64_t>& own, std::atomic<int64_t>& other) {
        for (int64_t time = 0; time < 100 * kTenth; time += kTenth) {
            own = time;
            pace.Reach(stream, time);
            if (time > other + StreamPace::kLead) faults = true;
        }
        pace.End();
    };
    std::thread thread([&] { run(Stream::Sound, sound, frames); });
    run(Stream::Frames, frames, sound);
    thread.join();
    EXPECT_FALSE(faults);
}

TEST(StreamPace, TheEndReleases) {
    for (const Stream stream : {Stream::Frames, Stream::Sound}) {
        StreamPace pace;
        pace.Start();
        pace.Reach(stream, StreamPace::kLead);
        std::atomic<bool> done = false;
        std::thread thread([&] {
            pace.Reach(stream, StreamPace::kLead + 1);
            done = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(done);
        pace.End();
        thread.join();
        pace.Reach(stream, INT64_MAX);
    }
}

}  // namespace
}  // namespace tavo
