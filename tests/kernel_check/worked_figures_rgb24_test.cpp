// RGB24: figures worked by hand.

#include "resample/rgb24/rgb24_kernels.h"
#include "tests/kernel_check/figures.h"

namespace tavo::test {
namespace {

constexpr NamedKernel kBilinear[] = {NAMED(ScaleBilinear_RGB24_Portable),
                                     NAMED(ScaleBilinear_RGB24_MMX),
                                     NAMED(ScaleBilinear_RGB24_SSE)};
constexpr NamedKernel kBoth[] = {NAMED(ScaleNearest_RGB24_Portable), NAMED(ScaleNearest_RGB24_MMX),
                                 NAMED(ScaleBilinear_RGB24_Portable),
                                 NAMED(ScaleBilinear_RGB24_MMX), NAMED(ScaleBilinear_RGB24_SSE)};
constexpr NamedKernel kBilinearH[] = {NAMED(ScaleBilinearH_RGB24_Portable),
                                      NAMED(ScaleBilinearH_RGB24_MMX),
                                      NAMED(ScaleBilinearH_RGB24_SSE)};
constexpr NamedKernel kH[] = {NAMED(ScaleNearestH_RGB24_Portable), NAMED(ScaleNearestH_RGB24_MMX),
                              NAMED(ScaleBilinearH_RGB24_Portable), NAMED(ScaleBilinearH_RGB24_MMX),
                              NAMED(ScaleBilinearH_RGB24_SSE)};
constexpr NamedKernel k640[] = {
    NAMED(ScaleNearestH640To480_RGB24_Portable), NAMED(ScaleNearestH640To480_RGB24_MMX),
    NAMED(ScaleBilinearH640To480_RGB24_Portable), NAMED(ScaleBilinearH640To480_RGB24_MMX)};
constexpr NamedKernel k720[] = {
    NAMED(ScaleNearestH720To480_RGB24_Portable), NAMED(ScaleBilinearH720To480_RGB24_Portable),
    NAMED(ScaleBilinearH720To480_RGB24_MMX), NAMED(ScaleBilinearH720To480_RGB24_SSE)};

Bytes Grey(std::initializer_list<int> values) {
    Bytes bytes;
    for (int value : values) bytes.insert(bytes.end(), 3, static_cast<uint8_t>(value));
    return bytes;
}

// Both axes

TEST_P(Figures, Rgb24RowsOf321PixelsKeepTheirStrideAndPadding) {
    const Picture source = RandomPicture(Format::Rgb24, 321, 4, 1);
    EXPECT_EQ(source.Stride(), 964);
    for (const NamedKernel& k : kBoth) {
        const Picture out = Scale(k.kernel, source, {333, 6});
        ASSERT_EQ(out.Stride(), 1000) << k.name;
        // The first pixels of these rows are pixels of the source, found by its stride.
        EXPECT_EQ(out.Pixel(0, 0), source.Pixel(0, 0)) << k.name;
        EXPECT_EQ(out.Pixel(3, 0), source.Pixel(2, 0)) << k.name;
        for (int y = 0; y < 6; ++y) EXPECT_EQ(out.Row(y)[999], kLeftAlone) << k.name;
    }
}

TEST_P(Figures, Rgb24LastColumnOfAnEnlargementReadsTheLastPixelTwice) {
    const Bytes row = Grey({10, 20, 200});
    const Picture source = MakePicture(Format::Rgb24, 3, {row, row, row});
    for (const NamedKernel& k : kBilinear) {
        const Picture out = Scale(k.kernel, source, {9, 7});
        for (int y = 0; y < 7; ++y) {
            for (int x : {6, 7, 8}) EXPECT_EQ(out.Pixel(y, x), Grey({200})) << k.name << ' ' << y;
        }
    }
}

TEST_P(Figures, Rgb24ColoursAreBlendedIndependently) {
    const Bytes upper = {255, 0, 7, 0, 255, 7};
    const Bytes lower = {0, 255, 7, 255, 0, 7};
    const Picture source = MakePicture(Format::Rgb24, 2, {upper, lower});
    const AxisEntries half = {{0, 1}, {128, 128}};
    for (const NamedKernel& k : kBilinear) {
        const Picture out = ScaleWith(k.kernel, source, {2, 2}, half, half);
        // Down: 255 + (-255 * 128 >> 8) = 127 and 0 + (255 * 128 >> 8) = 127.
        EXPECT_EQ(out.Pixel(0, 0), (Bytes{127, 127, 7})) << k.name;
    }
}

TEST_P(Figures, Rgb24LastRowBlendsBackToTheUpperLeftPixel) {
    const Picture source = MakePicture(Format::Rgb24, 2, {Grey({100, 200})});
    const AxisEntries half = {{0, 1}, {128, 0}};
    for (const NamedKernel& k : kBilinear) {
        // right = 200 + ((100 - 200) * 64 >> 8) = 175; 100 + ((175 - 100) * 128 >> 8) = 137.
        const Picture out = ScaleWith(k.kernel, source, {2, 1}, half, {{0}, {64}});
        EXPECT_EQ(out.RowPixels(0), Grey({137, 200})) << k.name;
    }
}

// Width only, by maps

TEST_P(Figures, Rgb24OnePixelWideSourceRepeatsThatPixel) {
    const Picture source = MakePicture(Format::Rgb24, 1, {{1, 2, 3}, {4, 5, 6}});
    for (const NamedKernel& k : kH) {
        for (int width : {1, 2, 5, 40}) {
            const Picture out = Scale(k.kernel, source, {width, 2});
            for (int x = 0; x < width; ++x) {
                EXPECT_EQ(out.Pixel(0, x), (Bytes{1, 2, 3})) << k.name;
                EXPECT_EQ(out.Pixel(1, x), (Bytes{4, 5, 6})) << k.name;
            }
        }
    }
}

TEST_P(Figures, Rgb24WeightZeroYieldsThePixelItself) {
    const Picture source = RandomPicture(Format::Rgb24, 40, 1, 2);
    AxisEntries entries;
    for (int i = 0; i < 40; ++i) {
        entries.indices.push_back(i);
        entries.weights.push_back(0);
    }
    for (const NamedKernel& k : kBilinearH) {
        EXPECT_EQ(ScaleRowWith(k.kernel, source, entries).RowPixels(0), source.RowPixels(0))
            << k.name;
    }
}

TEST_P(Figures, Rgb24AFallingEdgeRoundsDown) {
    const Picture source = MakePicture(Format::Rgb24, 2, {Grey({10, 9})});
    for (const NamedKernel& k : kBilinearH) {
        const Picture out = ScaleRowWith(k.kernel, source, {{0, 1}, {128, 128}});
        EXPECT_EQ(out.RowPixels(0), Grey({9, 9})) << k.name;
    }
}

// 640 to 480

TEST_P(Figures, Rgb24FourToThreeBlendsOneGroupInThirds) {
    const Bytes row = Grey({0, 30, 60, 90, 1, 2, 3, 4});
    const Picture source = MakePicture(Format::Rgb24, 8, {row});
    for (const NamedKernel& k :
         {NAMED(ScaleBilinearH640To480_RGB24_Portable), NAMED(ScaleBilinearH640To480_RGB24_MMX)}) {
        const Picture out = Scale(k.kernel, source, {6, 1});
        EXPECT_EQ(out.Pixel(0, 0), Grey({0})) << k.name;
        EXPECT_EQ(out.Pixel(0, 1), Grey({39})) << k.name;
        EXPECT_EQ(out.Pixel(0, 2), Grey({79})) << k.name;
    }
}

TEST_P(Figures, Rgb24FourToThreeNearestKeepsTheFirstThree) {
    const Picture source = RandomPicture(Format::Rgb24, 640, 2, 3);
    const Picture out = Scale(ScaleNearestH640To480_RGB24_Portable, source, {480, 2});
    for (int y : {0, 1}) {
        for (int x = 0; x < 480; ++x) {
            ASSERT_EQ(out.Pixel(y, x), source.Pixel(y, x / 3 * 4 + x % 3)) << x;
        }
    }
}

TEST_P(Figures, Rgb24FourToThreeNearestOfMmxMixesTheThirdPixel) {
    const Picture source = MakePicture(Format::Rgb24, 4, {Grey({0, 30, 60, 90})});
    const Picture out = Scale(ScaleNearestH640To480_RGB24_MMX, source, {3, 1});
    EXPECT_EQ(out.RowPixels(0), (Bytes{0, 0, 0, 30, 30, 30, 60, 60, 90}));
}

TEST_P(Figures, Rgb24FourToThreeRowTailsOfPortableAndMmxDiffer) {
    const Picture source = MakePicture(Format::Rgb24, 8, {Grey({9, 9, 9, 9, 7, 30, 60, 200})});
    const Picture portable = Scale(ScaleBilinearH640To480_RGB24_Portable, source, {6, 1});
    const Picture mmx = Scale(ScaleBilinearH640To480_RGB24_MMX, source, {6, 1});
    EXPECT_EQ(portable.Pixel(0, 3), Grey({7}));
    EXPECT_EQ(portable.Pixel(0, 4), Grey({39}));
    EXPECT_EQ(portable.Pixel(0, 5), Grey({60}));
    EXPECT_EQ(mmx.Pixel(0, 3), Grey({7}));
    EXPECT_EQ(mmx.Pixel(0, 4), Grey({30}));
    EXPECT_EQ(mmx.Pixel(0, 5), Grey({60}));
}

TEST_P(Figures, Rgb24FourToThreeRowTailOfMmxMovesUpFiveAndDownSixStepsAtMost) {
    const auto secondToLast = [](int from, int to) {
        const Picture source = MakePicture(Format::Rgb24, 4, {Grey({0, from, to, 0})});
        return Scale(ScaleBilinearH640To480_RGB24_MMX, source, {3, 1}).Pixel(0, 1);
    };
    EXPECT_EQ(secondToLast(0, 255), Grey({5}));    // 255 * 85 / 4096 = 5.29
    EXPECT_EQ(secondToLast(255, 0), Grey({249}));  // the floor of -5.29 is -6
    EXPECT_EQ(secondToLast(100, 99), Grey({99}));
}

TEST_P(Figures, Rgb24FourToThreeOfPortableSpillsOneByteBehindEachRow) {
    const Picture source = RandomPicture(Format::Rgb24, 640, 3, 4);
    const auto lastBlue = [&](int row) { return source.Pixel(row, 639)[0]; };

    Picture out = Scale(ScaleBilinearH640To480_RGB24_Portable, source, {480, 3});
    EXPECT_EQ(out.Row(0)[0], source.Row(0)[0]);
    EXPECT_EQ(out.Row(1)[0], lastBlue(0));
    EXPECT_EQ(out.Row(2)[0], lastBlue(1));
    EXPECT_EQ(out.bytes[3 * 1440], lastBlue(2));
    EXPECT_EQ(out.bytes[3 * 1440 + 1], kLeftAlone);

    // Bottom-up the memory holds source rows 2, 1, 0.
    out = Scale(ScaleBilinearH640To480_RGB24_Portable, source, {480, -3});
    EXPECT_EQ(out.Row(0)[0], source.Row(2)[0]);
    EXPECT_EQ(out.Row(1)[0], lastBlue(2));
    EXPECT_EQ(out.Row(2)[0], lastBlue(1));
    EXPECT_EQ(out.bytes[3 * 1440], lastBlue(0));

    out = Scale(ScaleBilinearH640To480_RGB24_MMX, source, {480, 3});
    for (int y : {0, 1, 2}) EXPECT_EQ(out.Row(y)[0], source.Row(y)[0]);
    EXPECT_EQ(out.bytes[3 * 1440], kLeftAlone);
}

TEST_P(Figures, Rgb24FixedThirdsAreNotThePictureOfTheMap) {
    const Picture source = RandomPicture(Format::Rgb24, 640, 1, 5);
    ExpectNotAsMapped(ScaleBilinearH640To480_RGB24_Portable, ScaleBilinearH_RGB24_Portable, source,
                      480);
}

// 720 to 480

TEST_P(Figures, Rgb24ThreeToTwoNearestKeepsTheFirstTwo) {
    const Picture source = RandomPicture(Format::Rgb24, 720, 1, 6);
    const Picture out = Scale(ScaleNearestH720To480_RGB24_Portable, source, {480, 1});
    for (int x = 0; x < 480; ++x) {
        ASSERT_EQ(out.Pixel(0, x), source.Pixel(0, x / 2 * 3 + x % 2)) << x;
    }
}

TEST_P(Figures, Rgb24NearestOfMmxTakes720PixelsThroughTheFourToThreePattern) {
    const Picture source = RandomPicture(Format::Rgb24, 720, 1, 7);
    const Picture out = Scale(ScaleNearestH640To480_RGB24_MMX, source, {480, 1});
    for (int group = 0; group < 160; ++group) {
        const Bytes mixed = {source.Pixel(0, 4 * group + 2)[0], source.Pixel(0, 4 * group + 2)[1],
                             source.Pixel(0, 4 * group + 3)[2]};
        ASSERT_EQ(out.Pixel(0, 3 * group), source.Pixel(0, 4 * group));
        ASSERT_EQ(out.Pixel(0, 3 * group + 1), source.Pixel(0, 4 * group + 1));
        ASSERT_EQ(out.Pixel(0, 3 * group + 2), mixed);
    }
}

TEST_P(Figures, Rgb24ThreeToTwoHalvesOf10And11AreTruncatedOrRoundedUp) {
    const Picture source = MakePicture(Format::Rgb24, 6, {Grey({5, 10, 11, 1, 2, 3})});
    const auto half = [&](ScaleKernel kernel) { return Scale(kernel, source, {4, 1}).Pixel(0, 1); };
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB24_Portable), Grey({10}));
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB24_MMX), Grey({10}));
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB24_SSE), Grey({11}));
}

TEST_P(Figures, Rgb24ThreeToTwoCopiesTheLastTwoPixelsUnblended) {
    const Picture source = RandomPicture(Format::Rgb24, 720, 2, 8);
    for (const NamedKernel& k : k720) {
        const Picture out = Scale(k.kernel, source, {480, 2});
        for (int y : {0, 1}) {
            EXPECT_EQ(out.Pixel(y, 478), source.Pixel(y, 717)) << k.name;
            EXPECT_EQ(out.Pixel(y, 479), source.Pixel(y, 718)) << k.name;
        }
        EXPECT_EQ(out.bytes[2 * 1440], kLeftAlone) << k.name;
    }
}

// All of them

TEST_P(Figures, Rgb24ANegativeHeightStoresTheFirstRowLast) {
    const auto expectFirstRowLast = [](const NamedKernel& k, int srcWidth, int dstWidth) {
        // Blue of the last pixel is equal in all rows, so that what spills does not tell.
        Picture source = RandomPicture(Format::Rgb24, srcWidth, 5, 9);
        for (int y = 0; y < 5; ++y) {
            source.bytes[static_cast<size_t>(y * source.Stride())] = 77;
            source.bytes[static_cast<size_t>(y * source.Stride() + 3 * srcWidth - 3)] = 77;
        }
        ExpectRowsInReverse(k, source, dstWidth);
    };
    for (const NamedKernel& k : kBoth) expectFirstRowLast(k, 33, 50);
    for (const NamedKernel& k : kH) expectFirstRowLast(k, 33, 50);
    for (const NamedKernel& k : k640) expectFirstRowLast(k, 640, 480);
    for (const NamedKernel& k : k720) expectFirstRowLast(k, 720, 480);
}

}  // namespace
}  // namespace tavo::test
