// Sound in time with the frames.

#include "host/avi/sound_track.h"

#include <gtest/gtest.h>

#include <vector>

#include "host/avi/timed_avi_writer.h"
#include "tests/host/avi/written_frames.h"
#include "tests/support/time_units.h"

namespace tavo {
namespace {

using tavo_test::kMs;

// 1000 blocks of one byte per second.
constexpr SoundFormat kBytes = {1, 1000, 8, false};

std::vector<std::byte> Blocks(uint8_t value, size_t count) {
    return std::vector<std::byte>(count, std::byte{value});
}

std::vector<std::byte> Joined(std::initializer_list<std::vector<std::byte>> parts) {
    std::vector<std::byte> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<std::byte> All(SoundTrack& track) { return track.Take(SIZE_MAX); }

TEST(SoundTrack, PiecesFollowEachOther) {
    SoundTrack track(kBytes);
    track.Begin(500 * kMs);
    track.Add(Blocks(1, 100), 500 * kMs);
    track.Add(Blocks(2, 100), 640 * kMs);  // 40 ms late
    track.Add(Blocks(3, 100), 660 * kMs);  // 40 ms early
    track.Add(Blocks(4, 100), std::nullopt);
    EXPECT_EQ(All(track), Joined({Blocks(1, 100), Blocks(2, 100), Blocks(3, 100), Blocks(4, 100)}));
    EXPECT_EQ(track.SilentBlocks(), 0u);
    EXPECT_EQ(track.DroppedBlocks(), 0u);
}

TEST(SoundTrack, GapsAreSilence) {
    SoundTrack track(kBytes);
    track.Begin(0);
    track.Add(Blocks(1, 100), 300 * kMs);
    track.Add(Blocks(2, 100), 441 * kMs);
    EXPECT_EQ(All(track),
              Joined({Blocks(0x80, 300), Blocks(1, 100), Blocks(0x80, 41), Blocks(2, 100)}));
    EXPECT_EQ(track.SilentBlocks(), 341u);

    SoundTrack wide({1, 1000, 16, false});
    wide.Begin(0);
    wide.Add(Blocks(1, 2), 50 * kMs);
    EXPECT_EQ(All(wide), Joined({Blocks(0, 100), Blocks(1, 2)})) << "0 in wider samples";
}

TEST(SoundTrack, NoTimeIsThereTwice) {
    SoundTrack track(kBytes);
    track.Begin(0);
    track.Add(Blocks(1, 100), 0);
    track.Add(Blocks(2, 100), 30 * kMs);
    track.Add(Blocks(3, 20), 50 * kMs);
    EXPECT_EQ(All(track), Joined({Blocks(1, 100), Blocks(2, 30)}));
    EXPECT_EQ(track.DroppedBlocks(), 90u);
}

TEST(SoundTrack, SoundBeforeTheFirstFrameIsLeftOut) {
    SoundTrack track(kBytes);
    track.Add(Blocks(1, 100), 0);
    track.Add(Blocks(2, 100), 100 * kMs);
    EXPECT_EQ(track.Waiting(), 0u);
    EXPECT_EQ(track.Held(), 200u);
    track.Begin(130 * kMs);
    EXPECT_EQ(track.Held(), 70u);
    EXPECT_EQ(All(track), Blocks(2, 70));
    EXPECT_EQ(track.DroppedBlocks(), 130u);
}

TEST(SoundTrack, TimesThatCannotBeAreNotFollowed) {
    SoundTrack track(kBytes);
    track.Begin(0);
    const int64_t times[] = {SoundTrack::kMaxGap + 10 * kMs, INT64_MAX, 0};
    for (const int64_t time : times) track.Add(Blocks(1, 10), time);
    track.Add(Blocks(2, 10), INT64_MIN);
    EXPECT_EQ(All(track), Joined({Blocks(1, 30), Blocks(2, 10)}));
}

TEST(SoundTrack, BeginsWhereItBelongs) {
    SoundTrack track(kBytes);
    track.Begin(0);
    track.Add(Blocks(1, 100), 30 * kMs);
    track.Add(Blocks(2, 100), 100 * kMs);
    EXPECT_EQ(All(track), Joined({Blocks(0x80, 30), Blocks(1, 100), Blocks(2, 100)}));
}

TEST(SoundTrack, WithoutATimeItFollowsWhatWasLeftOut) {
    SoundTrack track(kBytes);
    track.Add(Blocks(1, 100), 0);
    track.Add(Blocks(2, 100), std::nullopt);
    track.Begin(150 * kMs);
    track.Add(Blocks(3, 100), std::nullopt);
    EXPECT_EQ(All(track), Joined({Blocks(2, 50), Blocks(3, 100)}));
    track.Add(Blocks(4, 20), 50 * kMs);
    EXPECT_EQ(track.Waiting(), 0u);
}

// The gap takes no memory before it is written.
TEST(SoundTrack, GapsAreAsLongAsThoseOfFrames) {
    constexpr SoundFormat kWide = {6, 48000, 32, true};
    constexpr uint64_t kHour = uint64_t{3600} * 48000 * 24;
    SoundTrack track(kWide);
    track.Begin(0);
    track.Add(Blocks(1, 24), SoundTrack::kMaxGap);
    EXPECT_EQ(track.Held(), 24u);
    EXPECT_EQ(track.Waiting(), kHour + 24);
    EXPECT_EQ(track.Take(2400), Blocks(0, 2400));
    EXPECT_EQ(track.Waiting(), kHour - 2400 + 24);

    SoundTrack late(kBytes);
    late.Begin(0);
    late.Add(Blocks(1, 10), 0);
    late.Add(Blocks(2, 10), 70'000 * kMs);
    late.Add(Blocks(3, 10), 70'110 * kMs);
    EXPECT_EQ(late.Take(70'000), Joined({Blocks(1, 10), Blocks(0x80, 69'990)}));
    EXPECT_EQ(All(late), Joined({Blocks(2, 10), Blocks(0x80, 100), Blocks(3, 10)}));
}

TEST(SoundTrack, TimesThatBeginAnewAreFollowed) {
    SoundTrack track(kBytes);
    track.Begin(0);
    track.Add(Blocks(1, 5000), 0);
    track.Add(Blocks(2, 1000), 0);
    track.Add(Blocks(3, 1000), 1000 * kMs);
    track.Add(Blocks(4, 10), 2100 * kMs);
    EXPECT_EQ(All(track), Joined({Blocks(1, 5000), Blocks(2, 1000), Blocks(3, 1000),
                                  Blocks(0x80, 100), Blocks(4, 10)}));

    SoundTrack fixed(kBytes, SoundTrack::kMaxGap);
    fixed.Begin(0);
    fixed.Add(Blocks(1, 5000), 0);
    fixed.Add(Blocks(2, 1000), 0);
    fixed.Add(Blocks(3, 1000), 4500 * kMs);
    EXPECT_EQ(All(fixed), Joined({Blocks(1, 5000), Blocks(3, 500)}));
}

// Sources may end their buffers anywhere.
TEST(SoundTrack, BlocksInTwoPiecesStayWhole) {
    SoundTrack track({2, 1000, 16, false});
    track.Begin(0);
    track.Add(Blocks(1, 6), 0);
    track.Add(Blocks(2, 5), std::nullopt);
    track.Add(Blocks(3, 1), 3 * kMs);
    EXPECT_EQ(All(track), Joined({Blocks(1, 6), Blocks(2, 5), Blocks(3, 1)}));
    track.Add(Blocks(4, 2), std::nullopt);
    track.Add(Blocks(5, 4), 103 * kMs);
    EXPECT_EQ(All(track), Joined({Blocks(0, 400), Blocks(5, 4)})) << "not behind a gap";
}

TEST(SoundTrack, GivesWholeBlocks) {
    SoundTrack track({2, 1000, 16, false});
    track.Begin(0);
    track.Add(Blocks(1, 11), 0);
    EXPECT_EQ(track.Waiting(), 8u);
    EXPECT_EQ(track.Take(7).size(), 4u);
    EXPECT_EQ(track.Take(7).size(), 4u);
    EXPECT_EQ(track.Take(7).size(), 0u);
}

// 10 ms late blocks at odd rates must not add up over hours.
TEST(SoundTrack, StaysInStepForHours) {
    SoundTrack track({1, 44100, 8, false});
    track.Begin(0);
    const std::vector<std::byte> second = Blocks(1, 44100);
    for (int64_t n = 0; n < 3600; ++n) {
        track.Add(second, n * kUnitsPerSecond + 7);
        if (track.Waiting() > 4'000'000) All(track);
    }
    EXPECT_EQ(track.SilentBlocks() + track.DroppedBlocks(), 0u);
}

struct Frame {
    std::optional<int64_t> start;
    int64_t length = 0;
};

tavo_test::CheckedAvi WriteWithSound(const std::vector<Frame>& frames,
                                     TimedAviWriter::Timing timing) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    tavo_test::MemoryStore store;
    TimedAviWriter writer(store, video, 100 * kMs, timing);
    writer.SetSound(kBytes);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    uint8_t tenth = 0;
    for (const Frame& frame : frames) {
        EXPECT_EQ(writer.WriteFrame(tavo_test::Picture(video, 0), frame.start, frame.length),
                  IoResult::Ok);
        writer.AddSound(Blocks(tenth, 100), frame.start);
        ++tenth;
    }
    EXPECT_EQ(writer.SettleTiming(), IoResult::Ok);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    const tavo_test::CheckedAvi avi = tavo_test::CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    return avi;
}

TEST(SoundTrack, LiesBehindTheFramesOfItsTime) {
    using Timing = TimedAviWriter::Timing;
    const std::vector<Frame> steady = {
        {2000 * kMs, 100 * kMs}, {2100 * kMs, 100 * kMs}, {2200 * kMs, 100 * kMs}};
    for (const Timing timing : {Timing::Kept, Timing::FrameForFrame}) {
        const tavo_test::CheckedAvi avi = WriteWithSound(steady, timing);
        EXPECT_EQ(avi.sound, Joined({Blocks(0, 100), Blocks(1, 100), Blocks(2, 100)}));
        EXPECT_EQ(avi.framesBefore, (std::vector<uint32_t>{1, 2, 3}));
    }
    const tavo_test::CheckedAvi gap = WriteWithSound(
        {{0, 100 * kMs}, {100 * kMs, 100 * kMs}, {500 * kMs, 100 * kMs}}, Timing::Kept);
    EXPECT_EQ(gap.repeats, (std::vector<uint32_t>{0, 3, 0}));
    EXPECT_EQ(gap.sound,
              Joined({Blocks(0, 100), Blocks(1, 100), Blocks(0x80, 300), Blocks(2, 100)}));
}

// Not only the sound of the next frames, but also of pictures that stand still.
TEST(SoundTrack, SoundOfAFrameThatLastsIsWritten) {
    using Timing = TimedAviWriter::Timing;
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    for (const Timing timing : {Timing::Kept, Timing::FrameForFrame}) {
        tavo_test::MemoryStore store;
        TimedAviWriter writer(store, video, 100 * kMs, timing, {.aheadChunkBytes = 100});
        writer.SetSound(kBytes);
        ASSERT_EQ(writer.Begin(), IoResult::Ok);
        const std::vector<std::byte> frame = tavo_test::Picture(video, 0);
        const size_t header = store.bytes.size();
        EXPECT_EQ(writer.WriteFrame(frame, 0, 0), IoResult::Ok);
        for (const int64_t start : {100, 700}) {
            EXPECT_EQ(writer.WriteFrame(frame, start * kMs, 0), IoResult::Ok);
            for (uint8_t n = 0; n < 60; ++n) {
                EXPECT_TRUE(writer.AddSound(Blocks(n, start == 100 ? 10 : 77), std::nullopt));
                EXPECT_EQ(writer.WriteAhead(), IoResult::Ok);
            }
        }
        EXPECT_GE(store.bytes.size(), header + 60 * 87 - 400);
        EXPECT_EQ(writer.SettleTiming(), IoResult::Ok);
        EXPECT_FALSE(writer.HasSoundLeft());
        EXPECT_EQ(writer.Finish(), IoResult::Ok);
        const tavo_test::CheckedAvi avi = tavo_test::CheckAvi(store);
        EXPECT_EQ(avi.fault, "");
        ASSERT_EQ(avi.sound.size(), 60u * 87u);
        for (size_t n = 0; n < 60; ++n) {
            EXPECT_EQ(avi.sound[n * 10], std::byte(n));
            EXPECT_EQ(avi.sound[600 + n * 77 + 76], std::byte(n));
        }
        EXPECT_EQ(avi.repeats[1], timing == Timing::Kept ? 5u : 0u);
    }
}

TEST(SoundTrack, SoundWithoutAPlaceIsLeft) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    tavo_test::MemoryStore store;
    TimedAviWriter writer(store, video, 100 * kMs, TimedAviWriter::Timing::Kept);
    writer.SetSound({64, 1'000'000, 64, true});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    EXPECT_EQ(writer.WriteFrame(tavo_test::Picture(video, 0), 0, 0), IoResult::Ok);
    EXPECT_FALSE(writer.HasSoundLeft());
    EXPECT_TRUE(writer.AddSound(Blocks(1, 512), SoundTrack::kMaxGap));
    EXPECT_TRUE(writer.HasSoundLeft());
}

// Ten minutes of decoded stereo. Decoders give the first frame of a slow film late.
static_assert(TimedAviWriter::kMaxSoundHeld >= 600u * 48000 * 8);

// In pieces as small as sources give, which must not be copied again and again.
TEST(SoundTrack, SoundFarAheadOfTheFramesEndsThere) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 8, 4);
    tavo_test::MemoryStore store;
    TimedAviWriter writer(store, video, 100 * kMs, TimedAviWriter::Timing::Kept);
    writer.SetSound(kBytes);
    constexpr size_t kHeld = 64u << 20;
    writer.SetMaxSoundHeld(kHeld);
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    const std::vector<std::byte> piece = Blocks(1, 1 << 14);
    constexpr size_t kPieces = kHeld >> 14;
    EXPECT_TRUE(writer.AddSound(piece, 0));
    EXPECT_EQ(writer.WriteFrame(tavo_test::Picture(video, 0), 0, 0), IoResult::Ok);
    for (size_t n = 1; n < kPieces; ++n) ASSERT_TRUE(writer.AddSound(piece, std::nullopt)) << n;
    EXPECT_FALSE(writer.AddSound(Blocks(2, 1), std::nullopt));
    EXPECT_EQ(writer.WriteFrame(tavo_test::Picture(video, 0), 100 * kMs, 0), IoResult::Ok);
    EXPECT_FALSE(writer.AddSound(piece, std::nullopt)) << "it would come too early";
    EXPECT_EQ(writer.SettleTiming(), IoResult::Ok);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.SoundBlocks(), kHeld);
}

}  // namespace
}  // namespace tavo
