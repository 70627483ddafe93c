// The AVI writer: frames repeated by empty chunks.

#include "host/avi/avi_writer.h"

#include <gtest/gtest.h>

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
using tavo_test::WriteFrames;

// Frame n is repeated n % 4 times; 5 are reserved.
CheckedAvi WriteRepeats(MemoryStore& store, const VideoFormat& video, uint32_t frames,
                        AviLimits limits, bool repeat = true) {
    AviWriter writer(store, video, {25, 1}, limits);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    std::vector<uint32_t> repeats;
    for (uint32_t n = 0; n < frames; ++n) {
        EXPECT_EQ(writer.WriteFrame(Picture(video, n)), IoResult::Ok) << n;
        EXPECT_EQ(writer.ReserveRepeats(5), IoResult::Ok);
        repeats.push_back(n % 4);
    }
    if (repeat) writer.SetRepeats(repeats);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.FrameCount(), frames);
    EXPECT_EQ(writer.BytesWritten(), store.bytes.size());
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(writer.SlotCount(), avi.chunks.size());
    return avi;
}

TEST(AviWriter, RepeatsAreEmptyChunks) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    for (const uint64_t limit : {uint64_t{1}, uint64_t{3000}, uint64_t{1} << 30}) {
        SCOPED_TRACE(limit);
        MemoryStore store;
        const CheckedAvi avi = WriteRepeats(store, video, 10, {limit, 100});
        EXPECT_EQ(avi.fault, "");
        EXPECT_EQ(avi.segmentStarts.size() > 1, limit < 5000);
        EXPECT_EQ(avi.repeats, (std::vector<uint32_t>{0, 1, 2, 3, 0, 1, 2, 3, 0, 1}));
        EXPECT_EQ(avi.streamFrames, 23u);
        EXPECT_EQ(avi.totalFrames, 23u);
        AviReader reader;
        ASSERT_EQ(reader.Open(store), AviResult::Ok);
        EXPECT_FALSE(reader.IsTruncated());
        ASSERT_EQ(reader.FrameCount(), 23u);
        std::vector<std::byte> frame(reader.FrameBytes());
        ASSERT_EQ(reader.ReadFrame(8, frame), IoResult::Ok);
        EXPECT_EQ(frame, Picture(video, 3));
    }
}

TEST(AviWriter, RoomThatIsNotUsedIsSkipped) {
    const VideoFormat video = Video(PixelFormat::RGB24, 6, 4);
    MemoryStore store;
    const CheckedAvi avi = WriteRepeats(store, video, 10, {3000, 100}, false);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.repeats, std::vector<uint32_t>(10));
    EXPECT_EQ(avi.streamFrames, 10u);
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    EXPECT_EQ(reader.FrameCount(), 10u);
}

TEST(AviWriter, RoomIsLeftOnceForAFrame) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    EXPECT_EQ(writer.ReserveRepeats(1), IoResult::Failed);
    WriteFrames(writer, video, 2);
    EXPECT_EQ(writer.ReserveRepeats(0), IoResult::Ok);
    EXPECT_EQ(writer.ReserveRepeats(3), IoResult::Ok);
    EXPECT_EQ(writer.ReserveRepeats(3), IoResult::Failed);
    // More than were reserved, and for more frames than there are.
    writer.SetRepeats({7, 7, 7});
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.repeats, (std::vector<uint32_t>{0, 3}));
}

TEST(AviWriter, FullDiskWithRepeatsLeavesASoundFile) {
    const VideoFormat video = Video(PixelFormat::YUY2, 8, 4);  // 64 bytes
    constexpr AviLimits kLimits = {1500, 12};
    MemoryStore whole;
    const CheckedAvi all = WriteRepeats(whole, video, 30, kLimits);
    ASSERT_EQ(all.fault, "");
    const size_t headerEnd = static_cast<size_t>(all.frames[0]) - 8;
    for (size_t capacity = headerEnd + 40; capacity < whole.bytes.size(); capacity += 3) {
        SCOPED_TRACE(capacity);
        MemoryStore store;
        store.capacity = capacity;
        AviWriter writer(store, video, {25, 1}, kLimits);
        IoResult result = writer.Begin();
        std::vector<uint32_t> repeats;
        for (uint32_t n = 0; n < 30 && result == IoResult::Ok; ++n) {
            result = writer.WriteFrame(Picture(video, n));
            if (result == IoResult::Ok) result = writer.ReserveRepeats(5);
            repeats.push_back(n % 4);
        }
        writer.SetRepeats(repeats);
        ASSERT_EQ(writer.Finish(), IoResult::Ok);
        const CheckedAvi avi = CheckAvi(store);
        ASSERT_EQ(avi.fault, "");
        EXPECT_EQ(avi.frames.size(), writer.FrameCount());
        EXPECT_EQ(avi.streamFrames, writer.SlotCount());
    }
}

}  // namespace
}  // namespace tavo
