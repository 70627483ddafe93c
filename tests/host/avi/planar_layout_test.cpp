// Planar frames of other programs: their length and their planes.

#include "host/avi/planar_layout.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/host/avi/written_frames.h"

namespace tavo {
namespace {

using tavo_test::Video;

struct Lengths {
    PixelFormat format;
    int width;
    int height;
    uint64_t tight;
    uint64_t rounded;  // as FFmpeg writes them
    uint64_t padded;   // as GStreamer does
};

// Lengths observed with these programs.
constexpr Lengths kLengths[] = {
    {PixelFormat::IYUV, 32, 32, 1536, 1536, 1536},
    {PixelFormat::IYUV, 33, 32, 1584, 1600, 1792},
    {PixelFormat::IYUV, 34, 32, 1632, 1632, 1792},
    {PixelFormat::IYUV, 35, 32, 1680, 1696, 1792},
    {PixelFormat::IYUV, 36, 32, 1728, 1728, 1792},
    {PixelFormat::IYUV, 37, 32, 1776, 1792, 1920},
    {PixelFormat::IYUV, 32, 33, 1584, 1600, 1632},
    {PixelFormat::YV12, 34, 33, 1683, 1700, 1904},
    {PixelFormat::YV12, 854, 480, 614880, 614880, 616320},
    {PixelFormat::YVU9, 33, 32, 1188, 1200, 1344},
    {PixelFormat::YVU9, 36, 32, 1296, 1296, 1344},
    {PixelFormat::YVU9, 32, 33, 1188, 1200, 1200},
    {PixelFormat::YVU9, 34, 33, 1262, 1284, 1404},
};

TEST(FilePlanes, LengthsOfFrames) {
    for (const Lengths& row : kLengths) {
        const VideoFormat video = Video(row.format, row.width, row.height);
        EXPECT_EQ(PlanarBytes(video, FilePlanes::Tight), row.tight);
        EXPECT_EQ(PlanarBytes(video, FilePlanes::Rounded), row.rounded);
        EXPECT_EQ(PlanarBytes(video, FilePlanes::Padded), row.padded);
        EXPECT_EQ(LayoutsDiffer(video), row.tight != row.rounded || row.tight != row.padded);
    }
}

// A length gives the same picture whichever layout of that length comes first.
TEST(FilePlanes, ALengthNamesItsLayout) {
    for (const Lengths& row : kLengths) {
        const VideoFormat video = Video(row.format, row.width, row.height);
        for (const FilePlanes layout :
             {FilePlanes::Tight, FilePlanes::Rounded, FilePlanes::Padded}) {
            const uint64_t length = PlanarBytes(video, layout);
            const auto named = LayoutOfLength(video, static_cast<uint32_t>(length));
            ASSERT_TRUE(named.has_value());
            EXPECT_EQ(PlanarBytes(video, *named), length);
        }
    }
}

TEST(FilePlanes, FramesMayBeLongerOnlyWhereNothingIsCut) {
    const VideoFormat even = Video(PixelFormat::YV12, 34, 32);
    EXPECT_EQ(LayoutOfLength(even, 1631), std::nullopt);
    EXPECT_EQ(LayoutOfLength(even, 1633), FilePlanes::Tight);
    EXPECT_EQ(LayoutOfLength(even, 1792), FilePlanes::Padded);
    EXPECT_EQ(LayoutOfLength(even, 1793), FilePlanes::Tight);
    const VideoFormat odd = Video(PixelFormat::YV12, 35, 32);
    EXPECT_EQ(LayoutOfLength(odd, 1681), std::nullopt);
    EXPECT_EQ(LayoutOfLength(odd, 1793), std::nullopt);
}

// 5 x 3 in YV12. Samples are numbered, padding is 0xFF.
TEST(FilePlanes, SamplesGoToTheirPlaces) {
    const VideoFormat video = Video(PixelFormat::YV12, 5, 3);
    const std::vector<int> rounded = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                                      14, 20, 21, -1, -1, -1, -1, 30, 31, -1, -1, -1, -1};
    std::vector<int> padded(48, -1);
    for (int i = 0; i < 15; ++i) padded[static_cast<size_t>(i / 5 * 8 + i % 5)] = i;
    padded[32] = 20;
    padded[33] = 21;
    padded[40] = 30;
    padded[41] = 31;

    std::vector<std::byte> want(22, std::byte{0});
    for (size_t i = 0; i < 15; ++i) want[i] = std::byte(i);
    want[15] = std::byte{20};
    want[16] = std::byte{21};
    want[18] = std::byte{30};  // a quarter of 15 samples, rounded down, lies between the two
    want[19] = std::byte{31};

    for (const auto& [layout, samples] :
         {std::pair{FilePlanes::Rounded, rounded}, std::pair{FilePlanes::Padded, padded}}) {
        std::vector<std::byte> from;
        for (const int sample : samples) from.push_back(std::byte(sample & 0xFF));
        ASSERT_EQ(from.size(), PlanarBytes(video, layout));
        std::vector<std::byte> to(22, std::byte{0});
        MakeTight(video, layout, from, to);
        EXPECT_EQ(to, want);
    }
}

}  // namespace
}  // namespace tavo
