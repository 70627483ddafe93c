// Packed 4:2:2: figures worked by hand.

#include <algorithm>

#include "resample/kernel_table.h"
#include "resample/packed422/packed422_kernels.h"
#include "tests/kernel_check/figures.h"
#include "tests/kernel_check/packed422_rows.h"

namespace tavo::test {
namespace {

constexpr FormatKernel kNearest[] = {{Format::Yuy2, NAMED(ScaleNearest_YUY2_Portable)},
                                     {Format::Yuy2, NAMED(ScaleNearest_YUY2_MMX)},
                                     {Format::Uyvy, NAMED(ScaleNearest_UYVY_Portable)},
                                     {Format::Uyvy, NAMED(ScaleNearest_UYVY_MMX)}};
constexpr FormatKernel kNearestH[] = {{Format::Yuy2, NAMED(ScaleNearestH_YUY2_Portable)},
                                      {Format::Yuy2, NAMED(ScaleNearestH_YUY2_MMX)},
                                      {Format::Uyvy, NAMED(ScaleNearestH_UYVY_Portable)},
                                      {Format::Uyvy, NAMED(ScaleNearestH_UYVY_MMX)}};
constexpr FormatKernel kBilinear[] = {{Format::Yuy2, NAMED(ScaleBilinear_YUY2_Portable)},
                                      {Format::Yuy2, NAMED(ScaleBilinear_YUY2_MMX)},
                                      {Format::Yuy2, NAMED(ScaleBilinear_YUY2_SSE)},
                                      {Format::Uyvy, NAMED(ScaleBilinear_UYVY_Portable)},
                                      {Format::Uyvy, NAMED(ScaleBilinear_UYVY_MMX)},
                                      {Format::Uyvy, NAMED(ScaleBilinear_UYVY_SSE)}};
constexpr FormatKernel kBilinearH[] = {{Format::Yuy2, NAMED(ScaleBilinearH_YUY2_Portable)},
                                       {Format::Yuy2, NAMED(ScaleBilinearH_YUY2_MMX)},
                                       {Format::Yuy2, NAMED(ScaleBilinearH_YUY2_SSE)},
                                       {Format::Uyvy, NAMED(ScaleBilinearH_UYVY_Portable)},
                                       {Format::Uyvy, NAMED(ScaleBilinearH_UYVY_MMX)},
                                       {Format::Uyvy, NAMED(ScaleBilinearH_UYVY_SSE)}};

bool RoundsUp(ScaleKernel kernel) {
    constexpr ScaleKernel kSse[] = {ScaleBilinear_YUY2_SSE, ScaleBilinear_UYVY_SSE,
                                    ScaleBilinearH_YUY2_SSE, ScaleBilinearH_UYVY_SSE};
    return std::find(std::begin(kSse), std::end(kSse), kernel) != std::end(kSse);
}

AxisEntries OneToOne(int count, int weight) {
    AxisEntries entries;
    for (int i = 0; i < count; ++i) {
        entries.indices.push_back(i);
        entries.weights.push_back(weight);
    }
    return entries;
}

// Both axes

TEST_P(Figures, PackedNearestAtOneToOneGivesTheSourceBack) {
    for (const FormatKernel& k : kNearest) {
        const Picture source = RandomPicture(k.format, 38, 5, 41);
        const Picture out = Scale(k.kernel.kernel, source, {38, 5});
        for (int y = 0; y < 5; ++y) EXPECT_EQ(out.Row(y), source.Row(y)) << k.kernel.name;
    }
}

TEST_P(Figures, PackedNearestAveragesTheChromaOfTwoGroupsTruncating) {
    const std::vector<PackedGroup> groups = {{1, 2, 10, 101}, {3, 4, 11, 104}};
    for (const auto& kernels : {kNearest, kNearestH}) {
        for (int i = 0; i < 4; ++i) {
            const FormatKernel& k = kernels[i];
            const Picture source = MakeGroups(k.format, groups);
            const Picture out =
                ScaleWith(k.kernel.kernel, source, {2, 1}, {{1, 2}, {0, 0}}, {{0}, {0}});
            EXPECT_EQ(GroupAt(out, 0, 0), (PackedGroup{2, 3, 10, 102})) << k.kernel.name;
        }
    }
}

TEST_P(Figures, PackedBilinearOfSseRoundsTheChromaAverageUp) {
    const std::vector<PackedGroup> groups = {{1, 2, 10, 101}, {3, 4, 11, 104}};
    for (const FormatKernel& k : kBilinear) {
        const Picture source = MakeGroups(k.format, groups);
        const Picture out =
            ScaleWith(k.kernel.kernel, source, {2, 1}, {{1, 2}, {0, 0}}, {{0}, {0}});
        const PackedGroup expected =
            RoundsUp(k.kernel.kernel) ? PackedGroup{2, 3, 11, 103} : PackedGroup{2, 3, 10, 102};
        EXPECT_EQ(GroupAt(out, 0, 0), expected) << k.kernel.name;
    }
}

TEST_P(Figures, PackedOddWidthStaysWithinItsStride) {
    for (const auto& kernels : {kNearest, kNearestH}) {
        for (int i = 0; i < 4; ++i) {
            const Picture source = RandomPicture(kernels[i].format, 6, 1, 42);
            const Picture out = Scale(kernels[i].kernel.kernel, source, {3, 1});
            for (int at = 8; at < 8 + kBytesBehind; ++at) {
                EXPECT_EQ(out.bytes[static_cast<size_t>(at)], kLeftAlone) << kernels[i].kernel.name;
            }
        }
    }
    for (const FormatKernel& k : kBilinear) {
        const Picture source = RandomPicture(k.format, 6, 2, 43);
        const Picture out = Scale(k.kernel.kernel, source, {3, 1});
        EXPECT_EQ(out.bytes[8], kLeftAlone) << k.kernel.name;
    }
}

TEST_P(Figures, PackedBilinearBlendsAcrossBeforeDown) {
    // Across, 0 and 5 at 100 give 1, 1 and 9 at 100 give 4; down, 1 and 4 at 180 give 3.
    // Down first it would be 0 and 7, and then 2.
    for (const FormatKernel& k : kBilinear) {
        const Picture source =
            MakeRows(k.format, {{{0, 5, 0, 0}, {0, 0, 0, 0}}, {{1, 9, 0, 0}, {0, 0, 0, 0}}});
        const Picture out =
            ScaleWith(k.kernel.kernel, source, {2, 2}, {{0, 0}, {100, 100}}, {{0, 1}, {180, 0}});
        EXPECT_EQ(GroupAt(out, 0, 0).even, 3) << k.kernel.name;
    }
}

TEST_P(Figures, PackedBilinearLastRowBlendsBackAtOddPixelsOnly) {
    const std::vector<PackedGroup> groups = {{100, 120, 40, 60}, {200, 7, 80, 20}};
    for (const FormatKernel& k : kBilinear) {
        const Picture source = MakeGroups(k.format, groups);
        const Picture out =
            ScaleWith(k.kernel.kernel, source, {2, 1}, {{0, 1}, {128, 128}}, {{0}, {64}});
        const PackedGroup group = GroupAt(out, 0, 0);
        // Even: 100 + (20 * 128 >> 8) = 110, its lower row is the same.
        EXPECT_EQ(group.even, 110) << k.kernel.name;
        // Odd: across 160; down to its own 120: 160 + (-40 * 64 >> 8) = 150.
        EXPECT_EQ(group.odd, 150) << k.kernel.name;
        // Chroma of the odd pixel: across 60, down to 40: 55; and 40, down to 60: 45.
        EXPECT_EQ(group.first, RoundsUp(k.kernel.kernel) ? 48 : 47) << k.kernel.name;
        EXPECT_EQ(group.second, RoundsUp(k.kernel.kernel) ? 53 : 52) << k.kernel.name;
    }
}

// Width only

TEST_P(Figures, PackedWidthNegativeHeightStoresTheRowsInReverse) {
    const auto expectReversed = [](const FormatKernel& k, int srcWidth, int dstWidth) {
        ExpectRowsInReverse(k.kernel, RandomPicture(k.format, srcWidth, 5, 44), dstWidth);
    };
    for (const FormatKernel& k : kNearestH) expectReversed(k, 34, 50);
    for (const FormatKernel& k : kBilinearH) expectReversed(k, 34, 50);
    for (const NamedKernel& k : kFixed720Yuy2) expectReversed({Format::Yuy2, k}, 720, 480);
    for (const NamedKernel& k : kFixed720Uyvy) expectReversed({Format::Uyvy, k}, 720, 480);
    for (const NamedKernel& k : kFixed640Yuy2) expectReversed({Format::Yuy2, k}, 640, 480);
    for (const NamedKernel& k : kFixed640Uyvy) expectReversed({Format::Uyvy, k}, 640, 480);
}

TEST_P(Figures, PackedWidthSourceHeightAndVerticalMapHaveNoEffect) {
    const auto expectNoEffect = [](const FormatKernel& k, int srcWidth, int dstWidth) {
        Picture source = RandomPicture(k.format, srcWidth, 3, 45);
        const Picture usual = Scale(k.kernel.kernel, source, {dstWidth, 3});
        AxisEntries x = OneToOne(dstWidth, 0);
        for (int i = 0; i < dstWidth; ++i)
            x.indices[static_cast<size_t>(i)] = i * srcWidth / dstWidth;
        const Picture mapped = ScaleRowWith(k.kernel.kernel, source, x);
        source.height = 1;
        const Picture other =
            ScaleWith(k.kernel.kernel, source, {dstWidth, 3}, x, {{2, 2, 2}, {9, 99, 255}});
        EXPECT_EQ(mapped.bytes, other.bytes) << k.kernel.name;
        EXPECT_EQ(usual.bytes.size(), other.bytes.size()) << k.kernel.name;
    };
    for (const FormatKernel& k : kNearestH) expectNoEffect(k, 34, 50);
    for (const FormatKernel& k : kBilinearH) expectNoEffect(k, 34, 50);
    for (const NamedKernel& k : kFixed720Yuy2) expectNoEffect({Format::Yuy2, k}, 720, 480);
    for (const NamedKernel& k : kFixed640Uyvy) expectNoEffect({Format::Uyvy, k}, 640, 480);
}

TEST_P(Figures, PackedWidthLastPixelRepeatsItsLumaAndTheChromaOfItsGroup) {
    const std::vector<PackedGroup> groups = {{1, 2, 10, 100}, {3, 77, 33, 66}};
    for (const FormatKernel& k : kBilinearH) {
        const Picture source = MakeGroups(k.format, groups);
        const Picture out =
            ScaleRowWith(k.kernel.kernel, source, {{0, 1, 3, 3, 3, 3}, {0, 0, 1, 128, 254, 255}});
        EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{77, 77, 33, 66})) << k.kernel.name;
        EXPECT_EQ(GroupAt(out, 0, 2), (PackedGroup{77, 77, 33, 66})) << k.kernel.name;
    }
}

TEST_P(Figures, PackedWidthAtEqualWidthsAppliesTheQuarterPixel) {
    const std::vector<PackedGroup> groups = {{100, 20, 40, 60}, {60, 200, 80, 20}};
    for (const FormatKernel& k : kBilinearH) {
        const Picture source = MakeGroups(k.format, groups);
        const Picture out = Scale(k.kernel.kernel, source, {4, 1});
        // 100 + (-80 * 64 >> 8) = 80; 20 + (40 >> 2) = 30; 60 + (140 >> 2) = 95; 200.
        // Chroma of pixel 1: 40 + (40 >> 2) = 50 and 60 - 10 = 50; averages 45 and 55.
        EXPECT_EQ(GroupAt(out, 0, 0), (PackedGroup{80, 30, 45, 55})) << k.kernel.name;
        EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{95, 200, 80, 20})) << k.kernel.name;
    }
}

TEST_P(Figures, PackedWidthNearestAtEqualWidthsGivesTheSourceBack) {
    for (const FormatKernel& k : kNearestH) {
        const Picture source = RandomPicture(k.format, 50, 3, 46);
        const Picture out = Scale(k.kernel.kernel, source, {50, 3});
        for (int y = 0; y < 3; ++y) EXPECT_EQ(out.Row(y), source.Row(y)) << k.kernel.name;
    }
}

TEST_P(Figures, PackedWidthSseDiffersByOneInChromaOnlyAndUpward) {
    const auto expectUpward = [](Format format, ScaleKernel plain, ScaleKernel sse) {
        const Picture source = RandomPicture(format, 353, 4, 47);
        const Picture low = Scale(plain, source, {500, 4});
        const Picture high = Scale(sse, source, {500, 4});
        int raised = 0;
        for (int y = 0; y < 4; ++y) {
            for (int group = 0; group < 250; ++group) {
                const PackedGroup a = GroupAt(low, y, group);
                const PackedGroup b = GroupAt(high, y, group);
                ASSERT_EQ(a.even, b.even);
                ASSERT_EQ(a.odd, b.odd);
                ASSERT_TRUE(b.first == a.first || b.first == a.first + 1);
                ASSERT_TRUE(b.second == a.second || b.second == a.second + 1);
                raised += b.first - a.first;
            }
        }
        EXPECT_GT(raised, 0);
    };
    expectUpward(Format::Yuy2, ScaleBilinearH_YUY2_Portable, ScaleBilinearH_YUY2_SSE);
    expectUpward(Format::Yuy2, ScaleBilinearH_YUY2_MMX, ScaleBilinearH_YUY2_SSE);
    expectUpward(Format::Uyvy, ScaleBilinearH_UYVY_Portable, ScaleBilinearH_UYVY_SSE);
    expectUpward(Format::Uyvy, ScaleBilinearH_UYVY_MMX, ScaleBilinearH_UYVY_SSE);
}

}  // namespace
}  // namespace tavo::test
