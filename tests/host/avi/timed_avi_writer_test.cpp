// Frames with times: the rate and the repeats of the file.

#include "host/avi/timed_avi_writer.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "tests/host/avi/written_frames.h"
#include "tests/support/time_units.h"

namespace tavo {
namespace {

using Timing = TimedAviWriter::Timing;
using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::kMs;
using tavo_test::MemoryStore;

struct Stamp {
    std::optional<int64_t> start;
    int64_t length = 0;
};

// A file with one frame for each time.
CheckedAvi Write(const std::vector<Stamp>& stamps, Timing timing, int64_t frameDuration = 0) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    MemoryStore store;
    TimedAviWriter writer(store, video, frameDuration, timing);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    for (const Stamp& stamp : stamps) {
        const std::vector<std::byte> frame = tavo_test::Picture(video, 0);
        EXPECT_EQ(writer.WriteFrame(frame, stamp.start, stamp.length), IoResult::Ok);
    }
    EXPECT_EQ(writer.SettleTiming(), IoResult::Ok);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(writer.FrameCount(), stamps.size());
    EXPECT_EQ(writer.FrameCount() + writer.RepeatCount(), avi.chunks.size());
    EXPECT_EQ(writer.BytesWritten(), store.bytes.size());
    EXPECT_EQ((FrameRate{avi.rate, avi.scale}), writer.Rate());
    return avi;
}

TEST(TimedAviWriter, FramesAreRepeatedUntilTheNext) {
    const std::vector<Stamp> stamps = {
        {0, 40 * kMs}, {40 * kMs, 40 * kMs}, {200 * kMs, 40 * kMs}, {240 * kMs, 120 * kMs}};
    const CheckedAvi avi = Write(stamps, Timing::Kept, 40 * kMs);
    EXPECT_EQ(avi.rate, 25u);
    EXPECT_EQ(avi.scale, 1u);
    EXPECT_EQ(avi.repeats, (std::vector<uint32_t>{0, 3, 0, 2}));
}

TEST(TimedAviWriter, FrameForFrameTakesTheFirstInterval) {
    const std::vector<Stamp> stamps = {{0}, {40 * kMs}, {200 * kMs}};
    CheckedAvi avi = Write(stamps, Timing::FrameForFrame);
    EXPECT_EQ(avi.rate, 25u);
    EXPECT_EQ(avi.repeats, (std::vector<uint32_t>{0, 0, 0}));
    // Unless the source names a rate.
    avi = Write(stamps, Timing::FrameForFrame, 100 * kMs);
    EXPECT_EQ(avi.rate, 10u);
}

TEST(TimedAviWriter, FramesWithoutTimesFollowEachOther) {
    const std::vector<Stamp> stamps = {{std::nullopt}, {std::nullopt}, {std::nullopt}};
    EXPECT_EQ(Write(stamps, Timing::Kept, 100 * kMs).rate, 10u);
    EXPECT_EQ(Write(stamps, Timing::Kept).repeats, (std::vector<uint32_t>{0, 0, 0}));
    EXPECT_EQ(Write({}, Timing::Kept).frames.size(), 0u);
}

TEST(TimedAviWriter, AFrameThatFailsHasNoTime) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    const std::vector<std::byte> frame = tavo_test::Picture(video, 0);
    MemoryStore store;
    TimedAviWriter writer(store, video, 40 * kMs, Timing::Kept);
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    ASSERT_EQ(writer.WriteFrame(frame, 0, 0), IoResult::Ok);
    ASSERT_EQ(writer.WriteFrame(frame, 40 * kMs, 0), IoResult::Ok);
    store.capacity = store.bytes.size();
    EXPECT_EQ(writer.WriteFrame(frame, 80 * kMs, 0), IoResult::DiskFull);
    store.capacity = UINT64_MAX;
    EXPECT_EQ(writer.SettleTiming(), IoResult::Failed);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.FrameCount(), 2u);
    EXPECT_EQ(writer.Stamps().LongestMs(), 40.0);
    EXPECT_EQ(writer.Stamps().MeanMs(), 40.0);
    EXPECT_EQ(CheckAvi(store).fault, "");
}

// A second of sound lies in front of the frames of its time, however early it comes.
TEST(TimedAviWriter, SoundGoesBesideItsFrames) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    const std::vector<std::byte> frame = tavo_test::Picture(video, 0);
    for (const Timing timing : {Timing::Kept, Timing::FrameForFrame}) {
        MemoryStore store;
        TimedAviWriter writer(store, video, 40 * kMs, timing);
        writer.SetSound({1, 1000, 8, false});
        ASSERT_EQ(writer.Begin(), IoResult::Ok);
        ASSERT_TRUE(writer.AddSound(std::vector<std::byte>(10'000), 0));
        for (int64_t n = 0; n < 250; ++n) {
            ASSERT_EQ(writer.WriteFrame(frame, n * 40 * kMs, 40 * kMs), IoResult::Ok);
        }
        ASSERT_EQ(writer.SettleTiming(), IoResult::Ok);
        ASSERT_EQ(writer.Finish(), IoResult::Ok);
        const CheckedAvi avi = CheckAvi(store);
        EXPECT_EQ(avi.fault, "");
        EXPECT_EQ(avi.sound.size(), 10'000u);
        // 1040 ms behind the first frame, then 40 ms behind each.
        ASSERT_EQ(avi.soundChunks.size(), 225u);
        EXPECT_EQ(avi.frames[1] - avi.soundChunks[0], 1040u + 8);
        EXPECT_EQ(avi.frames[2] - avi.soundChunks[1], 40u + 8);
        EXPECT_EQ(avi.framesBefore.back(), 225u);
    }
}

}  // namespace
}  // namespace tavo
