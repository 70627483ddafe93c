// The table of pixel formats and frame sizes.

#include "host/avi/pixel_format.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/host/avi/written_frames.h"

namespace tavo {
namespace {

using tavo_test::Video;

TEST(PixelFormat, TableIsInOrderOfCodes) {
    int code = 1;
    for (const PixelFormat format : AllPixelFormats()) {
        EXPECT_EQ(static_cast<int>(format), code);
        EXPECT_EQ(InfoOf(format).setting, code);
        ++code;
    }
    EXPECT_EQ(code, 11);
}

TEST(PixelFormat, EveryFormatIsFoundByItsHeader) {
    for (const PixelFormat format : AllPixelFormats()) {
        const PictureFormat& info = InfoOf(format);
        const auto bits = static_cast<uint16_t>(info.bitsPerPixel);
        const ColorMasks masks = format == PixelFormat::RGB565 ? kMasks565 : ColorMasks{};
        EXPECT_EQ(FormatOf(info.compression, bits, masks), format);
    }
    EXPECT_EQ(FormatOf(kCompressionI420, 12, {}), PixelFormat::IYUV);
    EXPECT_EQ(FormatOf(kCompressionBitFields, 16, kMasks555), PixelFormat::RGB555);
    EXPECT_EQ(FormatOf(FourCc('Y', 'V', '1', '2'), 24, {}), PixelFormat::YV12);
}

TEST(PixelFormat, OthersAreRefused) {
    EXPECT_EQ(FormatOf(kCompressionRgb, 32, {}), std::nullopt);
    EXPECT_EQ(FormatOf(kCompressionRgb, 8, {}), std::nullopt);
    EXPECT_EQ(FormatOf(kCompressionBitFields, 32, kMasks565), std::nullopt);
    EXPECT_EQ(FormatOf(kCompressionBitFields, 16, {0x0F00, 0x00F0, 0x000F}), std::nullopt);
    EXPECT_EQ(FormatOf(FourCc('M', 'J', 'P', 'G'), 24, {}), std::nullopt);
}

TEST(PixelFormat, FrameSizes) {
    EXPECT_EQ(FrameSize(Video(PixelFormat::YV12, 352, 288)), 152064u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YVU9, 352, 288)), 114048u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YUY2, 176, 100)), 35200u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YUY2, 175, 100)), 35200u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, 5, -3)), 48u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB555, 5, 3)), 36u);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YV12, 5, 3)), 22u);
}

TEST(PixelFormat, SizesThatNoFrameHas) {
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, 0, 3)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, 3, 0)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, -3, 3)), std::nullopt);
    EXPECT_EQ(FrameSize({}), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, 32768, 32768)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::RGB24, INT32_MAX, INT32_MAX)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YVU9, INT32_MAX, INT32_MIN)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YV12, 1, 0)), std::nullopt);
    EXPECT_EQ(FrameSize(Video(PixelFormat::YUY2, 32767, 32767)), 32767u * 65536u);
}

TEST(PixelFormat, Strides) {
    EXPECT_EQ(RowStride(PixelFormat::YV12, 5), 5u);
    EXPECT_EQ(RowStride(PixelFormat::YUY2, 5), 12u);
    EXPECT_EQ(RowStride(PixelFormat::RGB24, 5), 16u);
    EXPECT_EQ(RowStride(PixelFormat::RGB565, 5), 12u);
}

TEST(PixelFormat, FlippedRows) {
    for (const size_t rows : {0, 1, 2, 3, 4, 5}) {
        std::vector<std::byte> frame;
        std::vector<std::byte> flipped;
        for (size_t row = 0; row < rows; ++row) {
            frame.insert(frame.end(), 4, static_cast<std::byte>(row));
            flipped.insert(flipped.begin(), 4, static_cast<std::byte>(row));
        }
        FlipRows(frame, 4);
        EXPECT_EQ(frame, flipped) << rows;
    }
}

TEST(PixelFormat, PartialChroma) {
    EXPECT_TRUE(HasPartialChroma(Video(PixelFormat::YV12, 5, 4)));
    EXPECT_TRUE(HasPartialChroma(Video(PixelFormat::YVU9, 8, 6)));
    EXPECT_FALSE(HasPartialChroma(Video(PixelFormat::YVU9, 8, 4)));
    EXPECT_FALSE(HasPartialChroma(Video(PixelFormat::RGB24, 5, 3)));
}

}  // namespace
}  // namespace tavo
