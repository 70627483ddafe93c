// Planes, width only: figures worked by hand.

#include "resample/planar/planar_kernels.h"
#include "tests/kernel_check/figures.h"

namespace tavo::test {
namespace {

constexpr NamedKernel kBilinearH[] = {NAMED(ScaleBilinearH_Planar_Portable),
                                      NAMED(ScaleBilinearH_Planar_MMX)};
constexpr NamedKernel kH[] = {NAMED(ScaleNearestH_Planar_Portable), NAMED(ScaleNearestH_Planar_MMX),
                              NAMED(ScaleBilinearH_Planar_Portable),
                              NAMED(ScaleBilinearH_Planar_MMX)};
constexpr NamedKernel kNearest640[] = {NAMED(ScaleNearestH640To480_Planar_Portable),
                                       NAMED(ScaleNearestH640To480_Planar_MMX)};
constexpr NamedKernel kBilinear640[] = {NAMED(ScaleBilinearH640To480_Planar_Portable),
                                        NAMED(ScaleBilinearH640To480_Planar_MMX)};
constexpr NamedKernel kNearest720[] = {NAMED(ScaleNearestH720To480_Planar_Portable),
                                       NAMED(ScaleNearestH720To480_Planar_MMX)};
constexpr NamedKernel kBilinear720[] = {NAMED(ScaleBilinearH720To480_Planar_Portable),
                                        NAMED(ScaleBilinearH720To480_Planar_MMX),
                                        NAMED(ScaleBilinearH720To480_Planar_SSE)};

int Third(int a, int b, int weight) { return a + (((b - a) * weight) >> 8); }

TEST_P(Figures, PlanarFourToThreeServesChromaPlanesOfAnyWidthOfItsRatio) {
    for (int width : {640, 320, 160, 4, 8}) {
        const Picture source = RandomPicture(Format::Planar, width, 2, 21);
        for (const NamedKernel& k : kBilinear640) {
            const Picture out = Scale(k.kernel, source, {width / 4 * 3, 2});
            const Bytes row = out.Row(1);
            const Bytes s = source.Row(1);
            for (size_t g = 0; 4 * g + 4 < s.size(); ++g) {
                ASSERT_EQ(row[3 * g], s[4 * g]) << k.name;
                ASSERT_EQ(row[3 * g + 1], Third(s[4 * g + 1], s[4 * g + 2], 85)) << k.name;
                ASSERT_EQ(row[3 * g + 2], Third(s[4 * g + 2], s[4 * g + 3], 170)) << k.name;
            }
        }
        for (const NamedKernel& k : kNearest640) {
            const Bytes row = Scale(k.kernel, source, {width / 4 * 3, 2}).Row(1);
            for (size_t x = 0; x < row.size(); ++x) {
                ASSERT_EQ(row[x], source.Row(1)[x / 3 * 4 + x % 3]) << k.name;
            }
        }
    }
}

TEST_P(Figures, PlanarThreeToTwoServesChromaPlanesOfAnyWidthOfItsRatio) {
    for (int width : {720, 360, 180, 3, 6}) {
        const Picture source = RandomPicture(Format::Planar, width, 2, 22);
        const Bytes s = source.Row(1);
        for (const NamedKernel& k : kBilinear720) {
            const int rounding = k.kernel == ScaleBilinearH720To480_Planar_SSE ? 1 : 0;
            const Bytes row = Scale(k.kernel, source, {width / 3 * 2, 2}).Row(1);
            for (size_t g = 0; 3 * g + 3 < s.size(); ++g) {
                ASSERT_EQ(row[2 * g], s[3 * g]) << k.name;
                ASSERT_EQ(row[2 * g + 1], (s[3 * g + 1] + s[3 * g + 2] + rounding) / 2) << k.name;
            }
        }
        for (const NamedKernel& k : kNearest720) {
            const Bytes row = Scale(k.kernel, source, {width / 3 * 2, 2}).Row(1);
            for (size_t x = 0; x < row.size(); ++x) {
                ASSERT_EQ(row[x], s[x / 2 * 3 + x % 2]) << k.name;
            }
        }
    }
}

TEST_P(Figures, PlanarFourToThreeEndsWithSourceSample638) {
    const Picture source = RandomPicture(Format::Planar, 640, 4, 23);
    for (const NamedKernel& k : kBilinear640) {
        const Picture out = Scale(k.kernel, source, {480, 4});
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(out.Row(y)[479], source.Row(y)[638]) << k.name;
            EXPECT_EQ(out.Row(y)[478], Third(source.Row(y)[637], source.Row(y)[638], 85)) << k.name;
            EXPECT_EQ(out.Row(y)[477], source.Row(y)[636]) << k.name;
        }
    }
}

TEST_P(Figures, PlanarThreeToTwoEndsWithSourceSamples717And718) {
    const Picture source = RandomPicture(Format::Planar, 720, 4, 24);
    for (const NamedKernel& k : kBilinear720) {
        const Picture out = Scale(k.kernel, source, {480, 4});
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(out.Row(y)[478], source.Row(y)[717]) << k.name;
            EXPECT_EQ(out.Row(y)[479], source.Row(y)[718]) << k.name;
        }
    }
}

TEST_P(Figures, PlanarThreeToTwoHalvesAreTruncatedOrRoundedUp) {
    const Picture source = MakePicture(Format::Planar, 6, {{5, 10, 11, 1, 2, 3}});
    const auto half = [&](ScaleKernel kernel) { return Scale(kernel, source, {4, 1}).Row(0)[1]; };
    EXPECT_EQ(half(ScaleBilinearH720To480_Planar_Portable), 10);
    EXPECT_EQ(half(ScaleBilinearH720To480_Planar_MMX), 10);
    EXPECT_EQ(half(ScaleBilinearH720To480_Planar_SSE), 11);
}

TEST_P(Figures, PlanarANegativeHeightStoresTheRowsInReverse) {
    const auto expectReversed = [](const NamedKernel& k, int srcWidth, int dstWidth) {
        ExpectRowsInReverse(k, RandomPicture(Format::Planar, srcWidth, 5, 25), dstWidth);
    };
    for (const NamedKernel& k : kH) expectReversed(k, 33, 50);
    for (const NamedKernel& k : kNearest640) expectReversed(k, 640, 480);
    for (const NamedKernel& k : kBilinear640) expectReversed(k, 640, 480);
    for (const NamedKernel& k : kNearest720) expectReversed(k, 720, 480);
    for (const NamedKernel& k : kBilinear720) expectReversed(k, 720, 480);
}

TEST_P(Figures, PlanarAnIndexOfTheLastColumnGivesThatSample) {
    const Picture source = MakePicture(Format::Planar, 3, {{10, 20, 200}, {1, 2, 3}});
    for (const NamedKernel& k : kBilinearH) {
        const Picture out = ScaleRowWith(k.kernel, source, {{0, 1, 2, 2, 2}, {0, 64, 1, 128, 255}});
        EXPECT_EQ(out.Row(0), (Bytes{10, 65, 200, 200, 200})) << k.name;
        EXPECT_EQ(out.Row(1), (Bytes{1, 2, 3, 3, 3})) << k.name;
    }
}

TEST_P(Figures, PlanarFixedRatiosGiveOtherBytesThanTheMap) {
    const Picture wide = RandomPicture(Format::Planar, 720, 1, 26);
    const Picture narrow = RandomPicture(Format::Planar, 640, 1, 27);
    ExpectNotAsMapped(ScaleBilinearH720To480_Planar_Portable, ScaleBilinearH_Planar_Portable, wide,
                      480);
    ExpectNotAsMapped(ScaleBilinearH640To480_Planar_Portable, ScaleBilinearH_Planar_Portable,
                      narrow, 480);
}

}  // namespace
}  // namespace tavo::test
