// The AVI writer: full disks and failing ones.

#include "host/avi/avi_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "tests/host/avi/written_frames.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::MemoryStore;
using tavo_test::Picture;
using tavo_test::Video;
using tavo_test::WriteAndCheck;
using tavo_test::WriteFrames;

// The disk fills up at every possible byte. The file must be valid each time, with all frames but
// those whose space the index needs.
TEST(AviWriter, FullDiskLeavesASoundFile) {
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);  // 64 bytes
    constexpr AviLimits kLimits = {1500, 6};
    MemoryStore whole;
    const CheckedAvi all = WriteAndCheck(whole, video, 60, kLimits);
    ASSERT_EQ(all.fault, "");
    ASSERT_GT(all.segmentStarts.size(), 3u);
    const size_t headerEnd = static_cast<size_t>(all.frames[0]) - 8;
    size_t before = 0;
    for (size_t capacity = 0; capacity < whole.bytes.size(); ++capacity) {
        SCOPED_TRACE(capacity);
        MemoryStore store;
        store.capacity = capacity;
        AviWriter writer(store, video, {25, 1}, kLimits);
        IoResult result = writer.Begin();
        EXPECT_EQ(result, capacity < headerEnd ? IoResult::DiskFull : IoResult::Ok);
        for (uint32_t n = 0; n < 60 && result == IoResult::Ok; ++n) {
            result = writer.WriteFrame(Picture(video, n));
        }
        const IoResult finish = writer.Finish();
        if (finish != IoResult::Ok) {
            ASSERT_LT(capacity, headerEnd + 40) << "the empty movie's index fits";
            continue;
        }
        const CheckedAvi avi = CheckAvi(store);
        ASSERT_EQ(avi.fault, "");
        EXPECT_EQ(avi.frames.size(), writer.FrameCount());
        EXPECT_EQ(avi.streamFrames, writer.FrameCount());
        EXPECT_GE(avi.frames.size() + 1, before);
        before = avi.frames.size();
        for (uint32_t n = 0; n < avi.frames.size(); ++n) {
            std::vector<std::byte> frame(64);
            ASSERT_EQ(store.ReadAt(avi.frames[n], frame), IoResult::Ok);
            ASSERT_EQ(frame, Picture(video, n));
        }
    }
    EXPECT_GE(before, 59u);
}

// Writes frames until the disk is full.
void FillDisk(AviWriter& writer, const VideoFormat& video) {
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    const std::vector<std::byte> frame = Picture(video, 0);
    IoResult result = IoResult::Ok;
    while (result == IoResult::Ok) result = writer.WriteFrame(frame);
    ASSERT_EQ(result, IoResult::DiskFull);
}

// Frames smaller than their index entries: most of them are dropped.
TEST(AviWriter, FullDiskCostsNoMoreThanTheFile) {
    const VideoFormat video = Video(PixelFormat::YUY2, 2, 1);
    MemoryStore store;
    store.capacity = 400'000;
    AviWriter writer(store, video, {25, 1});
    FillDisk(writer, video);
    const uint32_t written = writer.FrameCount();
    store.bytesOffered = 0;
    store.writes = 0;
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_LT(store.bytesOffered, 5 * store.capacity);
    EXPECT_LT(store.writes, 100);
    EXPECT_EQ(CheckAvi(store).fault, "");

    // One more would not fit.
    const uint32_t kept = writer.FrameCount();
    EXPECT_LT(kept, written / 2);
    for (const uint32_t frames : {kept, kept + 1}) {
        MemoryStore whole;
        WriteAndCheck(whole, video, frames);
        EXPECT_EQ(whole.bytes.size() <= store.capacity, frames == kept);
    }
}

// A disk with compression: writing zeros does not tell how much space is left.
class CompressingStore final : public MemoryStore {
  public:
    IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override {
        const auto isZero = [](std::byte b) { return b == std::byte{0}; };
        if (!std::ranges::all_of(source, isZero)) return MemoryStore::WriteAt(offset, source);
        const uint64_t limit = std::exchange(capacity, UINT64_MAX);
        const IoResult result = MemoryStore::WriteAt(offset, source);
        capacity = limit;
        return result;
    }
};

TEST(AviWriter, FullDiskIsGivenUpInFewTries) {
    const VideoFormat video = Video(PixelFormat::YUY2, 2, 1);
    CompressingStore store;
    store.capacity = 400'000;
    AviWriter writer(store, video, {25, 1});
    FillDisk(writer, video);
    store.writes = 0;
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_LT(store.writes, 500);
    EXPECT_EQ(CheckAvi(store).fault, "");
    EXPECT_GT(writer.FrameCount(), 9000u);  // of the 10640 that fit
}

TEST(AviWriter, OtherErrorsAreReportedAsTheyAre) {
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 2);
    store.failure = IoResult::AccessDenied;
    EXPECT_EQ(writer.WriteFrame(Picture(video, 2)), IoResult::AccessDenied);
    EXPECT_EQ(writer.Finish(), IoResult::AccessDenied);
}

}  // namespace
}  // namespace tavo
