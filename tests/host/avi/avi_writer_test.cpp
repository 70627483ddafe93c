// The AVI writer: headers of all formats, segments, indexes.

#include "host/avi/avi_writer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "host/avi/avi_reader.h"
#include "host/avi/file_store.h"
#include "tests/host/avi/written_frames.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::MemoryStore;
using tavo_test::Picture;
using tavo_test::SparseStore;
using tavo_test::Video;
using tavo_test::WriteAndCheck;
using tavo_test::WriteFrames;

// Milliseconds, where each frame does not move those before.
TEST(AviWriter, ManyFramesTakeNoLongerEach) {
    AviLayout layout(Video(PixelFormat::YUY2, 8, 4));
    layout.AddSegment(0, 0);
    const auto start = std::chrono::steady_clock::now();
    constexpr uint32_t kFrames = 1'000'000;
    uint32_t frames = 0;
    while (frames < kFrames &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(10)) {
        for (int n = 0; n < 1000; ++n, ++frames) layout.AddFrame();
    }
    EXPECT_EQ(frames, kFrames);
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
            EXPECT_FALSE(reader.IsTruncated());
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

TEST(AviWriter, TheDisplayAspectIsInTheHeader) {
    const VideoFormat video = Video(PixelFormat::YUY2, 32, 8);
    MemoryStore store;
    AviWriter writer(store, video, {25, 1});
    writer.SetDisplayAspect({16, 9});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    WriteFrames(writer, video, 2);
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    const CheckedAvi avi = CheckAvi(store);
    EXPECT_EQ(avi.fault, "");
    EXPECT_EQ(avi.displayAspect, 16u << 16 | 9u);
    EXPECT_EQ(avi.frames.size(), 2u);
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
