// The AVI writer: sound beside the video.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "host/avi/avi_reader.h"
#include "tests/host/avi/written_frames.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::MemoryStore;
using tavo_test::Picture;
using tavo_test::Video;

constexpr SoundFormat kStereo = {2, 48000, 16, false};
constexpr SoundFormat kOddBytes = {1, 8000, 24, false};

// Blocks of numbers that no other block has.
std::vector<std::byte> Blocks(const SoundFormat& sound, size_t first, size_t count) {
    std::vector<std::byte> bytes;
    for (size_t block = first; block < first + count; ++block) {
        for (uint32_t i = 0; i < sound.BlockBytes(); ++i) {
            bytes.push_back(static_cast<std::byte>(block >> 8 * (i % 3)));
        }
    }
    return bytes;
}

struct Written {
    CheckedAvi avi;
    std::vector<std::byte> sound;
};

// Up to 2 chunks of sound far ahead, where these are small, behind each frame.
IoResult WriteAhead(AviWriter& writer, const SoundFormat& sound, const AviLimits& limits,
                    uint32_t frame, size_t& blocks) {
    const uint32_t chunks = limits.aheadChunkBytes < 100 ? frame % 3 : 0;
    const size_t count = writer.AheadChunkBytes() / sound.BlockBytes();
    for (uint32_t n = 0; n < chunks; ++n, blocks += count) {
        const IoResult result = writer.WriteAhead(Blocks(sound, blocks, count));
        if (result != IoResult::Ok) return result;
    }
    return IoResult::Ok;
}

// 0 to 4 blocks of sound behind each frame.
Written Write(MemoryStore& store, const SoundFormat& sound, uint32_t frames, AviLimits limits = {},
              uint32_t repeats = 0) {
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);
    AviWriter writer(store, video, {25, 1}, limits);
    writer.SetSound(sound);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    size_t blocks = 0;
    for (uint32_t n = 0; n < frames; ++n) {
        EXPECT_EQ(writer.WriteFrame(Picture(video, n)), IoResult::Ok);
        EXPECT_EQ(WriteAhead(writer, sound, limits, n, blocks), IoResult::Ok);
        EXPECT_EQ(writer.ReserveRepeats(repeats), IoResult::Ok);
        EXPECT_EQ(writer.WriteSound(Blocks(sound, blocks, n % 5)), IoResult::Ok);
        blocks += n % 5;
    }
    writer.SetRepeats(std::vector<uint32_t>(frames, repeats / 2));
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.BytesWritten(), store.bytes.size());
    return {CheckAvi(store), Blocks(sound, 0, blocks)};
}

TEST(AviWriterSound, EveryBlockIsThereInItsPlace) {
    for (const SoundFormat& sound :
         {kStereo, kOddBytes, SoundFormat{6, 44100, 32, true}, SoundFormat{1, 11025, 8, false}}) {
        MemoryStore store;
        const Written written = Write(store, sound, 20);
        const CheckedAvi& avi = written.avi;
        ASSERT_EQ(avi.fault, "");
        EXPECT_EQ(avi.mainFlags, 0x910u) << "with an index, interleaved";
        EXPECT_EQ(avi.soundTag, sound.isFloat ? 3u : 1u);
        EXPECT_EQ(avi.channels, sound.channels);
        EXPECT_EQ(avi.soundRate, sound.rate);
        EXPECT_EQ(avi.soundBits, sound.bits);
        EXPECT_EQ(avi.sound, written.sound);
        EXPECT_EQ(avi.frames.size(), 20u);
        const std::vector<uint32_t> start(avi.framesBefore.begin(), avi.framesBefore.begin() + 5);
        EXPECT_EQ(start, (std::vector<uint32_t>{2, 3, 4, 5, 7})) << "behind its frame";
    }
}

TEST(AviWriterSound, SegmentsAndRepeats) {
    for (const uint32_t repeats : {0u, 3u}) {
        MemoryStore store;
        const Written written = Write(store, kOddBytes, 60, {1500, 20}, repeats);
        ASSERT_EQ(written.avi.fault, "");
        EXPECT_GT(written.avi.segmentStarts.size(), 3u);
        // Longer by what lies behind the last frame, and its index entries.
        EXPECT_LE(written.avi.longestSegment, 1500u + 44 + repeats * 32);
        EXPECT_EQ(written.avi.sound, written.sound);
        EXPECT_EQ(written.avi.repeats, std::vector<uint32_t>(60, repeats / 2));
    }
}

TEST(AviWriterSound, SoundFarAheadLiesInFrontOfTheRepeats) {
    for (const uint32_t repeats : {0u, 3u}) {
        MemoryStore store;
        const Written written = Write(store, kOddBytes, 60, {1500, 20, 200, 25}, repeats);
        ASSERT_EQ(written.avi.fault, "");
        EXPECT_GT(written.avi.segmentStarts.size(), 3u);
        EXPECT_EQ(written.avi.sound, written.sound);
        EXPECT_EQ(written.avi.repeats, std::vector<uint32_t>(60, repeats / 2));
        const std::vector<uint32_t> start(written.avi.framesBefore.begin(),
                                          written.avi.framesBefore.begin() + 6);
        EXPECT_EQ(start, (std::vector<uint32_t>{2, 2, 3, 3, 3, 4}));
    }
}

TEST(AviWriterSound, SoundFarAheadHasItsPlace) {
    MemoryStore store;
    AviWriter writer(store, Video(PixelFormat::YUY2, 8, 4), {25, 1}, {200, 6, 100, 24});
    writer.SetSound(kOddBytes);
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    const auto chunk = Blocks(kOddBytes, 0, 8);
    EXPECT_EQ(writer.AheadChunkBytes(), chunk.size());
    EXPECT_EQ(writer.WriteAhead(chunk), IoResult::Failed) << "no frame yet";
    tavo_test::WriteFrames(writer, Video(PixelFormat::YUY2, 8, 4), 1);
    EXPECT_FALSE(writer.CanWriteAhead()) << "the header alone is longer";
    tavo_test::WriteFrames(writer, Video(PixelFormat::YUY2, 8, 4), 1);
    EXPECT_EQ(writer.WriteAhead(Blocks(kOddBytes, 0, 7)), IoResult::Failed) << "another size";
    size_t chunks = 0;
    for (; writer.CanWriteAhead(); ++chunks) ASSERT_EQ(writer.WriteAhead(chunk), IoResult::Ok);
    EXPECT_EQ(chunks, 6u);
    EXPECT_EQ(writer.WriteAhead(chunk), IoResult::Failed) << "enough";
    tavo_test::WriteFrames(writer, Video(PixelFormat::YUY2, 8, 4), 1);
    EXPECT_EQ(writer.ReserveRepeats(1), IoResult::Ok);
    EXPECT_FALSE(writer.CanWriteAhead()) << "behind repeats";
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(CheckAvi(store).fault, "");
    EXPECT_EQ(CheckAvi(store).soundBlocks, 48u);
}

TEST(AviWriterSound, ASilentStreamIsOne) {
    MemoryStore store;
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);
    AviWriter writer(store, video, {25, 1});
    writer.SetSound(kStereo);
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    tavo_test::WriteFrames(writer, video, 3);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.channels, 2u);
    EXPECT_TRUE(avi.sound.empty());
}

TEST(AviWriterSound, WrongCallsAreRefused) {
    MemoryStore store;
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);
    AviWriter mute(store, video, {25, 1});
    ASSERT_EQ(mute.Begin(), IoResult::Ok);
    tavo_test::WriteFrames(mute, video, 1);
    EXPECT_EQ(mute.WriteSound(Blocks(kStereo, 0, 1)), IoResult::Failed) << "no such stream";

    MemoryStore other;
    AviWriter writer(other, video, {25, 1});
    writer.SetSound(kStereo);
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    EXPECT_EQ(writer.WriteSound(Blocks(kStereo, 0, 1)), IoResult::Failed) << "no frame yet";
    tavo_test::WriteFrames(writer, video, 1);
    EXPECT_EQ(writer.WriteSound(std::vector<std::byte>(3)), IoResult::Failed) << "half a block";
    EXPECT_EQ(writer.WriteSound(Blocks(kStereo, 0, 1)), IoResult::Ok);
    EXPECT_EQ(writer.WriteSound(Blocks(kStereo, 1, 1)), IoResult::Failed) << "twice";
    EXPECT_EQ(writer.ReserveRepeats(1), IoResult::Failed) << "repeats come first";
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(CheckAvi(other).fault, "");
    EXPECT_EQ(CheckAvi(other).sound.size(), 4u);
}

// The disk fills up at every possible byte.
TEST(AviWriterSound, FullDiskLeavesASoundFile) {
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);
    constexpr AviLimits kLimits = {900, 9, 200, 12};
    MemoryStore whole;
    const size_t end = (Write(whole, kOddBytes, 24, kLimits), whole.bytes.size());
    size_t most = 0;
    for (size_t capacity = 700; capacity < end; ++capacity) {
        SCOPED_TRACE(capacity);
        MemoryStore store;
        store.capacity = capacity;
        AviWriter writer(store, video, {25, 1}, kLimits);
        writer.SetSound(kOddBytes);
        IoResult result = writer.Begin();
        size_t blocks = 0;
        for (uint32_t n = 0; n < 24 && result == IoResult::Ok; ++n) {
            result = writer.WriteFrame(Picture(video, n));
            if (result != IoResult::Ok) break;
            result = WriteAhead(writer, kOddBytes, kLimits, n, blocks);
            if (result != IoResult::Ok) break;
            result = writer.WriteSound(Blocks(kOddBytes, blocks, n % 5));
            blocks += n % 5;
        }
        if (writer.Finish() != IoResult::Ok) {
            ASSERT_EQ(most, 0u) << "only where the header does not fit";
            continue;
        }
        const CheckedAvi avi = CheckAvi(store);
        ASSERT_EQ(avi.fault, "");
        EXPECT_EQ(avi.frames.size(), writer.FrameCount());
        EXPECT_EQ(avi.sound, Blocks(kOddBytes, 0, avi.soundBlocks));
        most = std::max(most, avi.frames.size());
    }
    EXPECT_GE(most, 23u);
}

TEST(AviWriterSound, TheReaderPassesItOver) {
    MemoryStore store;
    Write(store, kOddBytes, 10);
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    ASSERT_EQ(reader.FrameCount(), 10u);
    std::vector<std::byte> frame(reader.FrameBytes());
    ASSERT_EQ(reader.ReadFrame(7, frame), IoResult::Ok);
    EXPECT_EQ(frame, Picture(Video(PixelFormat::YUY2, 8, 4), 7));
}

}  // namespace
}  // namespace tavo
