// The AVI writer: headers of all formats, segments, indexes, full disks.

#include "host/avi/avi_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <utility>

#include "host/avi/avi_reader.h"
#include "host/avi/file_store.h"
#include "tests/host/avi/avi_checker.h"
#include "tests/host/avi/memory_store.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::MemoryStore;
using tavo_test::SparseStore;

VideoFormat Video(PixelFormat format, int32_t width, int32_t height) {
    return {format, InfoOf(format).compression, width, height};
}

std::vector<std::byte> Picture(const VideoFormat& video, uint32_t number) {
    std::vector<std::byte> frame(*FrameSize(video));
    for (size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<std::byte>(i * 7 + number * 31 + 1);
    }
    return frame;
}

void WriteFrames(AviWriter& writer, const VideoFormat& video, uint32_t count) {
    for (uint32_t n = 0; n < count; ++n) {
        ASSERT_EQ(writer.WriteFrame(Picture(video, n)), IoResult::Ok) << n;
    }
}

CheckedAvi WriteAndCheck(MemoryStore& store, const VideoFormat& video, uint32_t frames,
                         AviLimits limits = {}) {
    AviWriter writer(store, video, {30000, 1001}, limits);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, frames);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.FrameCount(), frames);
    EXPECT_EQ(writer.BytesWritten(), store.bytes.size());
    return CheckAvi(store);
}

TEST(AviWriter, HeaderOfEveryFormat) {
    struct Row {
        PixelFormat format;
        const char* compression;
        const char* handler;
        const char* frameCode;
        uint32_t bitCount;
        uint32_t imageSize;  // of 6 x 4
    };
    const Row rows[] = {
        {PixelFormat::YV12, "YV12", "YV12", "00dc", 12, 36},
        {PixelFormat::IYUV, "IYUV", "IYUV", "00dc", 12, 36},
        {PixelFormat::YVU9, "YVU9", "YVU9", "00dc", 9, 27},
        {PixelFormat::YUY2, "YUY2", "YUY2", "00dc", 16, 48},
        {PixelFormat::YUYV, "YUYV", "YUYV", "00dc", 16, 48},
        {PixelFormat::YVYU, "YVYU", "YVYU", "00dc", 16, 48},
        {PixelFormat::UYVY, "UYVY", "UYVY", "00dc", 16, 48},
        {PixelFormat::RGB24, "#0", "DIB ", "00db", 24, 80},
        {PixelFormat::RGB555, "#0", "DIB ", "00db", 16, 48},
        {PixelFormat::RGB565, "#3", "DIB ", "00db", 16, 48},
    };
    for (const Row& row : rows) {
        const VideoFormat video = Video(row.format, 6, 4);
        SCOPED_TRACE(row.compression);
        MemoryStore store;
        const CheckedAvi avi = WriteAndCheck(store, video, 3);
        EXPECT_EQ(avi.fault, "");
        EXPECT_EQ(avi.compression, row.compression);
        EXPECT_EQ(avi.handler, row.handler);
        EXPECT_EQ(avi.frameCode, row.frameCode);
        EXPECT_EQ(avi.bitCount, row.bitCount);
        EXPECT_EQ(avi.imageSize, row.imageSize);
        EXPECT_EQ(avi.width, 6);
        EXPECT_EQ(avi.height, 4);
        EXPECT_EQ(avi.rate, 30000u);
        EXPECT_EQ(avi.scale, 1001u);
        EXPECT_EQ(avi.mainFrames, 3u);
        EXPECT_EQ(avi.streamFrames, 3u);
        EXPECT_EQ(avi.totalFrames, 3u);
        EXPECT_EQ(avi.frames.size(), 3u);
        const std::vector<uint32_t> masks = row.format == PixelFormat::RGB565
                                                ? std::vector<uint32_t>{0xF800, 0x07E0, 0x001F}
                                                : std::vector<uint32_t>{};
        EXPECT_EQ(avi.masks, masks);
    }
}

TEST(AviWriter, I420KeepsItsOwnCode) {
    const VideoFormat video = {PixelFormat::IYUV, kCompressionI420, 8, 8};
    MemoryStore store;
    const CheckedAvi avi = WriteAndCheck(store, video, 1);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.compression, "I420");
}

TEST(AviWriter, SignOfHeightStaysForRgbAndGoesForOthers) {
    for (const PixelFormat format :
         {PixelFormat::RGB24, PixelFormat::RGB555, PixelFormat::RGB565}) {
        MemoryStore store;
        EXPECT_EQ(WriteAndCheck(store, Video(format, 6, -4), 1).height, -4);
    }
    MemoryStore store;
    EXPECT_EQ(WriteAndCheck(store, Video(PixelFormat::YUY2, 6, -4), 1).height, 4);
}

TEST(AviWriter, FramesComeBackUnchanged) {
    // 27 bytes: an odd length needs a pad byte.
    for (const PixelFormat format : {PixelFormat::YVU9, PixelFormat::RGB24}) {
        const VideoFormat video = Video(format, 6, 4);
        MemoryStore store;
        const CheckedAvi avi = WriteAndCheck(store, video, 5);
        ASSERT_EQ(avi.fault, "");
        for (uint32_t n = 0; n < 5; ++n) {
            std::vector<std::byte> frame(*FrameSize(video));
            ASSERT_EQ(store.ReadAt(avi.frames[n], frame), IoResult::Ok);
            EXPECT_EQ(frame, Picture(video, n)) << n;
        }
    }
}

TEST(AviWriter, SegmentsKeepTheirLimit) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);  // 512 bytes
    for (uint32_t frames : {1u, 2u, 30u, 31u, 100u}) {
        for (const uint64_t limit : {1u, 3000u, 5000u, 20000u}) {
            SCOPED_TRACE(testing::Message() << frames << " frames, limit " << limit);
            MemoryStore store;
            const CheckedAvi avi = WriteAndCheck(store, video, frames, {limit, 100});
            EXPECT_EQ(avi.fault, "");
            EXPECT_EQ(avi.frames.size(), frames);
            EXPECT_EQ(avi.streamFrames, frames);
            EXPECT_EQ(avi.totalFrames, frames);
            if (limit == 1) {
                EXPECT_EQ(avi.segmentStarts.size(), frames);
            }
            if (limit >= 5000) {
                EXPECT_LE(avi.longestSegment, limit);
            }
            AviReader reader;
            ASSERT_EQ(reader.Open(store), AviResult::Ok);
            EXPECT_EQ(reader.FrameCount(), frames);
            EXPECT_FALSE(reader.IsCutOff());
        }
    }
}

TEST(AviWriter, MoreSegmentsThanTheHeaderHasRoomFor) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1}, {1, 3});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 3);
    EXPECT_EQ(writer.WriteFrame(Picture(video, 3)), IoResult::TooLarge);
    EXPECT_EQ(writer.WriteFrame(Picture(video, 3)), IoResult::Failed);
    EXPECT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.frames.size(), 3u);
}

TEST(AviWriter, FilesBeyondFourGibibytes) {
    const VideoFormat video = Video(PixelFormat::RGB24, 4096, 4096);  // 48 MiB
    const std::vector<std::byte> frame(*FrameSize(video));
    SparseStore store;
    AviWriter writer(store, video, {25, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    constexpr uint32_t kFrames = 120;  // 5.6 GiB
    for (uint32_t n = 0; n < kFrames; ++n) ASSERT_EQ(writer.WriteFrame(frame), IoResult::Ok);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_GT(store.Size(), uint64_t{5} << 30);

    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.frames.size(), kFrames);
    EXPECT_EQ(avi.segmentStarts.size(), 6u);
    EXPECT_LE(avi.longestSegment, uint64_t{1} << 30);
    EXPECT_EQ(avi.mainFrames, 20u);

    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    EXPECT_EQ(reader.FrameCount(), kFrames);
}

TEST(AviWriter, FrameOfAnotherLengthIsRefused) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    EXPECT_EQ(writer.WriteFrame(std::vector<std::byte>(511)), IoResult::Failed);
    EXPECT_EQ(writer.WriteFrame(std::vector<std::byte>(513)), IoResult::Failed);
    EXPECT_EQ(writer.WriteFrame({}), IoResult::Failed);
    EXPECT_EQ(writer.FrameCount(), 0u);
}

TEST(AviWriter, NothingWrittenIsAnEmptyMovie) {
    MemoryStore store;
    const CheckedAvi avi = WriteAndCheck(store, Video(PixelFormat::YV12, 16, 16), 0);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.frames.size(), 0u);
}

TEST(AviWriter, RateMayBeSettledLater) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 2);
    writer.SetRate({12, 1});
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    EXPECT_EQ(writer.WriteFrame(Picture(video, 2)), IoResult::Failed);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.rate, 12u);
    EXPECT_EQ(avi.frames.size(), 2u);
}

// Frame n is shown n % 4 times more, in a room for 5.
CheckedAvi WriteRepeats(MemoryStore& store, const VideoFormat& video, uint32_t frames,
                        AviLimits limits, bool repeat = true) {
    AviWriter writer(store, video, {25, 1}, limits);
    EXPECT_EQ(writer.Begin(), IoResult::Ok);
    std::vector<uint32_t> repeats;
    for (uint32_t n = 0; n < frames; ++n) {
        EXPECT_EQ(writer.WriteFrame(Picture(video, n)), IoResult::Ok) << n;
        EXPECT_EQ(writer.LeaveRoom(5), IoResult::Ok);
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
        EXPECT_FALSE(reader.IsCutOff());
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
    EXPECT_EQ(writer.LeaveRoom(1), IoResult::Failed);
    WriteFrames(writer, video, 2);
    EXPECT_EQ(writer.LeaveRoom(0), IoResult::Ok);
    EXPECT_EQ(writer.LeaveRoom(3), IoResult::Ok);
    EXPECT_EQ(writer.LeaveRoom(3), IoResult::Failed);
    // More than there is room for, and for more frames than there are.
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
            if (result == IoResult::Ok) result = writer.LeaveRoom(5);
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

TEST(AviWriter, TheShownAspectIsInTheHeader) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    writer.SetShownAspect({16, 9});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 2);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.shownAspect, 16u << 16 | 9u);
    EXPECT_EQ(avi.frames.size(), 2u);
}

// The disk fills up at every possible byte: the file must be sound each time, with all frames but
// those whose place the index needs.
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

// Frames smaller than their own index entries: most of them have to go.
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

    // One more would have been too many.
    const uint32_t kept = writer.FrameCount();
    EXPECT_LT(kept, written / 2);
    for (const uint32_t frames : {kept, kept + 1}) {
        MemoryStore whole;
        WriteAndCheck(whole, video, frames);
        EXPECT_EQ(whole.bytes.size() <= store.capacity, frames == kept);
    }
}

// A disk that compresses what is written: how much of it is left cannot be measured with zeros.
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

TEST(AviWriter, ThroughARealFile) {
    // The same program may run twice at once, from two builds.
    const std::string number = std::to_string(std::random_device()());
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / std::filesystem::path(u8"tavo writer \u00FC ");
    path += number + ".avi";
    const VideoFormat video = Video(PixelFormat::RGB565, 6, -4);
    FileStore file;
    ASSERT_EQ(file.Create(path), IoResult::Ok);
    AviWriter writer(file, video, {25, 1}, {3000, 100});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 100);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    ASSERT_EQ(file.Close(), IoResult::Ok);

    ASSERT_EQ(file.OpenForReading(path), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(file);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.frames.size(), 100u);
    AviReader reader;
    ASSERT_EQ(reader.Open(file), AviResult::Ok);
    EXPECT_EQ(reader.Video(), video);
    std::vector<std::byte> frame(reader.FrameBytes());
    ASSERT_EQ(reader.ReadFrame(99, frame), IoResult::Ok);
    EXPECT_EQ(frame, Picture(video, 99));
    ASSERT_EQ(file.Close(), IoResult::Ok);
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace tavo
