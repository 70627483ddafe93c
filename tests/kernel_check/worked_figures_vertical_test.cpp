// Height only, all formats: figures worked by hand.

#include "resample/packed422/packed422_kernels.h"
#include "resample/planar/planar_kernels.h"
#include "resample/rgb16/rgb16_kernels.h"
#include "resample/rgb24/rgb24_kernels.h"
#include "tests/kernel_check/figures.h"

namespace tavo::test {
namespace {

constexpr FormatKernel kBilinear[] = {
    {Format::Uyvy, NAMED(ScaleBilinearV_UYVY_Portable)},
    {Format::Yuy2, NAMED(ScaleBilinearV_YUY2_Portable)},
    {Format::Yuy2, NAMED(ScaleBilinearV_YUY2_MMX)},
    {Format::Yuy2, NAMED(ScaleBilinearV_YUY2_SSE)},
    {Format::Rgb565, NAMED(ScaleBilinearV_RGB565_Portable)},
    {Format::Rgb565, NAMED(ScaleBilinearV_RGB565_MMX)},
    {Format::Rgb565, NAMED(ScaleBilinearV_RGB565_SSE)},
    {Format::Rgb555, NAMED(ScaleBilinearV_RGB555_Portable)},
    {Format::Rgb555, NAMED(ScaleBilinearV_RGB555_MMX)},
    {Format::Rgb555, NAMED(ScaleBilinearV_RGB555_SSE)},
    {Format::Rgb24, NAMED(ScaleBilinearV_RGB24_Portable)},
    {Format::Rgb24, NAMED(ScaleBilinearV_RGB24_MMX)},
    {Format::Rgb24, NAMED(ScaleBilinearV_RGB24_SSE)},
    {Format::Planar, NAMED(ScaleBilinearV_Planar_Portable)},
    {Format::Planar, NAMED(ScaleBilinearV_Planar_MMX)},
    {Format::Planar, NAMED(ScaleBilinearV_Planar_SSE)},
};

constexpr FormatKernel kNearest[] = {
    {Format::Yuy2, NAMED(ScaleNearestV_YUY2_Portable)},
    {Format::Yuy2, NAMED(ScaleNearestV_YUY2_MMX)},
    {Format::Rgb565, NAMED(ScaleNearestV_RGB16_Portable)},
    {Format::Rgb565, NAMED(ScaleNearestV_RGB16_MMX)},
    {Format::Rgb24, NAMED(ScaleNearestV_RGB24_Portable)},
    {Format::Rgb24, NAMED(ScaleNearestV_RGB24_MMX)},
    {Format::Planar, NAMED(ScaleNearestV_Planar_Portable)},
    {Format::Planar, NAMED(ScaleNearestV_Planar_MMX)},
};

constexpr int kWidth = 22;

// Random, without the bit that RGB555 does not keep.
Picture PictureOf(Format format, int width, int height, uint64_t seed) {
    Picture picture = RandomPicture(format, width, height, seed);
    if (format == Format::Rgb555) {
        for (size_t i = 1; i < picture.bytes.size(); i += 2) picture.bytes[i] &= 0x7f;
    }
    return picture;
}

TEST_P(Figures, VerticalLastSourceRowIsCopiedWithoutReadingOn) {
    for (const FormatKernel& k : kBilinear) {
        const Picture source = PictureOf(k.format, kWidth, 2, 31);
        const Picture out =
            ScaleWith(k.kernel.kernel, source, {kWidth, 3}, {}, {{0, 1, 1}, {0, 128, 255}});
        EXPECT_EQ(out.RowPixels(0), source.RowPixels(0)) << k.kernel.name;
        EXPECT_EQ(out.RowPixels(1), source.RowPixels(1)) << k.kernel.name;
        EXPECT_EQ(out.RowPixels(2), source.RowPixels(1)) << k.kernel.name;
    }
}

TEST_P(Figures, VerticalEnlargementByTwoCopiesEvenRows) {
    for (const FormatKernel& k : kBilinear) {
        const Picture source = PictureOf(k.format, kWidth, 4, 32);
        const Picture out = Scale(k.kernel.kernel, source, {kWidth, 8});
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(out.RowPixels(2 * y), source.RowPixels(y)) << k.kernel.name;
        }
        EXPECT_EQ(out.RowPixels(7), source.RowPixels(3)) << k.kernel.name;
    }
}

TEST_P(Figures, VerticalEnlargementByTwoMakesOddRowsTheFloorAverage) {
    for (const FormatKernel& k : kBilinear) {
        if (k.format == Format::Rgb555 || k.format == Format::Rgb565) continue;
        const Picture source = PictureOf(k.format, kWidth, 4, 33);
        const Picture out = Scale(k.kernel.kernel, source, {kWidth, 8});
        for (int y = 0; y < 3; ++y) {
            const Bytes above = source.RowPixels(y);
            const Bytes below = source.RowPixels(y + 1);
            Bytes average;
            for (size_t i = 0; i < above.size(); ++i) {
                average.push_back(static_cast<uint8_t>((above[i] + below[i]) / 2));
            }
            EXPECT_EQ(out.RowPixels(2 * y + 1), average) << k.kernel.name;
        }
    }
}

TEST_P(Figures, VerticalEnlargementByTwoAveragesFieldsOfBits) {
    // Fields 1 and 2 halfway are 1 (the floor); 0 and 31 are 15, 0 and 63 are 31.
    const Picture rgb565 =
        MakePicture(Format::Rgb565, 2, {{0x21, 0x08, 0x00, 0x00}, {0x42, 0x10, 0xff, 0xff}});
    const Picture rgb555 =
        MakePicture(Format::Rgb555, 2, {{0x21, 0x04, 0x00, 0x00}, {0x42, 0x08, 0xff, 0x7f}});
    for (const FormatKernel& k : kBilinear) {
        if (k.format == Format::Rgb565) {
            const Picture out = Scale(k.kernel.kernel, rgb565, {2, 4});
            EXPECT_EQ(out.Word(1, 0), 0x0821) << k.kernel.name;
            EXPECT_EQ(out.Word(1, 1), 0x7bef) << k.kernel.name;
        } else if (k.format == Format::Rgb555) {
            const Picture out = Scale(k.kernel.kernel, rgb555, {2, 4});
            EXPECT_EQ(out.Word(1, 0), 0x0421) << k.kernel.name;
            EXPECT_EQ(out.Word(1, 1), 0x3def) << k.kernel.name;
        }
    }
}

template <size_t kCount>
void ExpectReversed(const FormatKernel (&kernels)[kCount]) {
    for (const FormatKernel& k : kernels) {
        const Picture source = PictureOf(k.format, kWidth, 5, 34);
        const Picture down = Scale(k.kernel.kernel, source, {kWidth, 9});
        const Picture up = Scale(k.kernel.kernel, source, {kWidth, -9});
        for (int y = 0; y < 9; ++y) {
            EXPECT_EQ(up.RowPixels(8 - y), down.RowPixels(y)) << k.kernel.name << ' ' << y;
        }
    }
}

TEST_P(Figures, VerticalANegativeHeightStoresTheRowsInReverse) {
    ExpectReversed(kBilinear);
    ExpectReversed(kNearest);
}

TEST_P(Figures, VerticalNearestCopiesTheIndexedRows) {
    for (const FormatKernel& k : kNearest) {
        const Picture source = RandomPicture(k.format, kWidth, 4, 35);
        const Picture out =
            ScaleWith(k.kernel.kernel, source, {kWidth, 3}, {}, {{0, 2, 3}, {9, 99, 255}});
        EXPECT_EQ(out.RowPixels(0), source.RowPixels(0)) << k.kernel.name;
        EXPECT_EQ(out.RowPixels(1), source.RowPixels(2)) << k.kernel.name;
        EXPECT_EQ(out.RowPixels(2), source.RowPixels(3)) << k.kernel.name;
    }
}

TEST_P(Figures, VerticalRgb555ClearsBit15WhenBilinearAndCopiesItWhenNearest) {
    const Picture source = {Format::Rgb555, 9, 3, Bytes(60, 0xff)};
    const auto everyWord = [](const Picture& out, int word) {
        for (int y = 0; y < out.height; ++y) {
            for (int x = 0; x < out.width; ++x) {
                if (out.Word(y, x) != word) return false;
            }
        }
        return true;
    };
    for (const FormatKernel& k : kBilinear) {
        if (k.format != Format::Rgb555) continue;
        for (int height : {1, 2, 3, 7}) {
            EXPECT_TRUE(everyWord(Scale(k.kernel.kernel, source, {9, height}), 0x7fff))
                << k.kernel.name;
        }
    }
    for (ScaleKernel kernel : {ScaleNearestV_RGB16_Portable, ScaleNearestV_RGB16_MMX}) {
        EXPECT_TRUE(everyWord(Scale(kernel, source, {9, 7}), 0xffff));
    }
}

}  // namespace
}  // namespace tavo::test
