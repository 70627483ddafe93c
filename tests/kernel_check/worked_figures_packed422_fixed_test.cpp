// Packed 4:2:2 at the fixed ratios: figures worked by hand.

#include "resample/kernel_table.h"
#include "resample/packed422/packed422_kernels.h"
#include "tests/kernel_check/packed422_rows.h"

namespace tavo::test {
namespace {

struct Family {
    Format format;
    const NamedKernel (&fixed720)[5];
    const NamedKernel (&fixed640)[5];
};
constexpr Family kFamilies[] = {{Format::Yuy2, kFixed720Yuy2, kFixed640Yuy2},
                                {Format::Uyvy, kFixed720Uyvy, kFixed640Uyvy}};

// The places of the kernels in the lists above.
constexpr int kNearest[] = {0, 1};
constexpr int kBilinear[] = {2, 3, 4};
constexpr int kFastBilinear[] = {3, 4};

TEST_P(Figures, PackedThreeToTwoBilinearTakesTruncatedAverages) {
    const std::vector<PackedGroup> six = {{50, 10, 4, 200}, {13, 90, 9, 101}, {21, 26, 30, 2}};
    for (const Family& family : kFamilies) {
        const Picture source = MakeGroups(family.format, six);
        for (int i : kBilinear) {
            const NamedKernel& k = family.fixed720[i];
            const Picture out = Scale(k.kernel, source, {4, 1});
            // Luma 10 and 13 give 11; 21 and 26 give 23. Chroma of the first group:
            // 2 * 4 + (5 * 128 >> 8) = 10, halved 5; 400 + (-99 * 128 >> 8) = 350, halved 175.
            EXPECT_EQ(GroupAt(out, 0, 0), (PackedGroup{50, 11, 5, 175})) << k.name;
            EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{90, 23, 19, 51})) << k.name;
        }
    }
}

TEST_P(Figures, PackedThreeToTwoNearestCopiesTheFirstGroup) {
    const std::vector<PackedGroup> six = {{50, 10, 4, 200}, {13, 90, 9, 101}, {21, 26, 30, 2}};
    for (const Family& family : kFamilies) {
        const Picture source = MakeGroups(family.format, six);
        for (int i : kNearest) {
            const NamedKernel& k = family.fixed720[i];
            const Picture out = Scale(k.kernel, source, {4, 1});
            EXPECT_EQ(GroupAt(out, 0, 0), six[0]) << k.name;
            EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{90, 21, 19, 51})) << k.name;
        }
    }
}

TEST_P(Figures, PackedFourToThreeNearestKeepsThreeOfFourLumas) {
    const std::vector<PackedGroup> eight = {
        {1, 2, 10, 20}, {3, 4, 13, 26}, {5, 6, 40, 50}, {7, 8, 43, 56}};
    for (const Family& family : kFamilies) {
        const Picture source = MakeGroups(family.format, eight);
        for (int i : kNearest) {
            const NamedKernel& k = family.fixed640[i];
            const Picture out = Scale(k.kernel, source, {6, 1});
            EXPECT_EQ(GroupAt(out, 0, 0), (PackedGroup{1, 2, 10, 20})) << k.name;
            EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{3, 5, 26, 38})) << k.name;
            EXPECT_EQ(GroupAt(out, 0, 2), (PackedGroup{6, 7, 41, 53})) << k.name;
        }
    }
}

TEST_P(Figures, PackedFourToThreeBilinearOfPortableBlendsInThirds) {
    const std::vector<PackedGroup> eight = {
        {0, 30, 0, 90}, {60, 90, 30, 60}, {90, 60, 60, 30}, {30, 0, 90, 0}};
    for (const Family& family : kFamilies) {
        const Picture source = MakeGroups(family.format, eight);
        const NamedKernel& k = family.fixed640[2];
        const Picture out = Scale(k.kernel, source, {6, 1});
        // a1: 0 + (30 * 85 >> 8) = 9 and 90 + (-30 * 85 >> 8) = 80;
        // a4: 60 + 9 = 69 and 30 + (-30 * 85 >> 8) = 20.
        EXPECT_EQ(GroupAt(out, 0, 0), (PackedGroup{0, 39, 4, 85})) << k.name;
        EXPECT_EQ(GroupAt(out, 0, 1), (PackedGroup{79, 90, 19, 70})) << k.name;
        EXPECT_EQ(GroupAt(out, 0, 2), (PackedGroup{50, 10, 79, 10})) << k.name;
    }
}

TEST_P(Figures, PackedFourToThreeOfMmxAndSseDimsWholePositionsByOne) {
    for (const Family& family : kFamilies) {
        for (int y = 0; y < 256; ++y) {
            const Picture source =
                MakeGroups(family.format, {{y, 9, 1, 2}, {8, 7, 3, 4}, {y, 6, 5, 6}, {5, 4, 7, 8}});
            const int dimmed = y == 0 ? 0 : y - 1;
            for (int i : kFastBilinear) {
                const Picture out = Scale(family.fixed640[i].kernel, source, {6, 1});
                ASSERT_EQ(GroupAt(out, 0, 0).even, dimmed) << family.fixed640[i].name;
                ASSERT_EQ(GroupAt(out, 0, 1).odd, dimmed) << family.fixed640[i].name;
            }
            const Picture out = Scale(family.fixed640[2].kernel, source, {6, 1});
            ASSERT_EQ(GroupAt(out, 0, 0).even, y);
            ASSERT_EQ(GroupAt(out, 0, 1).odd, y);
        }
    }
}

TEST_P(Figures, PackedFourToThreeOfMmxAndSseAreOtherwiseThePortableOne) {
    for (const Family& family : kFamilies) {
        const Picture source = RandomPicture(family.format, 640, 3, 51);
        const Picture portable = Scale(family.fixed640[2].kernel, source, {480, 3});
        for (int i : kFastBilinear) {
            const Picture out = Scale(family.fixed640[i].kernel, source, {480, 3});
            for (int y = 0; y < 3; ++y) {
                for (int group = 0; group < 240; ++group) {
                    PackedGroup expected = GroupAt(portable, y, group);
                    if (group % 3 == 0 && expected.even > 0) --expected.even;
                    if (group % 3 == 1 && expected.odd > 0) --expected.odd;
                    ASSERT_EQ(GroupAt(out, y, group), expected) << family.fixed640[i].name;
                }
            }
        }
    }
}

TEST_P(Figures, PackedFourToThreeChromaOfGroup1ComesFromSourceGroups0And1Only) {
    for (const Family& family : kFamilies) {
        for (int i : kBilinear) {
            const auto chroma = [&](int third, int fourth) {
                const Picture source = MakeGroups(family.format, {{1, 2, 10, 20},
                                                                  {3, 4, 100, 50},
                                                                  {5, 6, third, fourth},
                                                                  {7, 8, fourth, third}});
                const Picture out = Scale(family.fixed640[i].kernel, source, {6, 1});
                return std::pair(GroupAt(out, 0, 1).first, GroupAt(out, 0, 1).second);
            };
            // a1: 10 + (90 * 85 >> 8) = 39 and 20 + (30 * 85 >> 8) = 29; (100 + 39) / 2 = 69,
            // (50 + 29) / 2 = 39.
            const std::pair expected(69, 39);
            EXPECT_EQ(chroma(0, 0), expected) << family.fixed640[i].name;
            EXPECT_EQ(chroma(255, 0), expected) << family.fixed640[i].name;
            EXPECT_EQ(chroma(0, 255), expected) << family.fixed640[i].name;
        }
    }
}

TEST_P(Figures, PackedFixedRatiosGiveOtherBytesThanTheMap) {
    const Picture wide = RandomPicture(Format::Yuy2, 720, 1, 52);
    const Picture narrow = RandomPicture(Format::Uyvy, 640, 1, 53);
    ExpectNotAsMapped(ScaleBilinearH720To480_YUY2_Portable, ScaleBilinearH_YUY2_Portable, wide,
                      480);
    ExpectNotAsMapped(ScaleBilinearH640To480_UYVY_Portable, ScaleBilinearH_UYVY_Portable, narrow,
                      480);
}

TEST_P(Figures, PackedThreeToTwoKeepsPortableKernelsInAutomaticSlots) {
    for (int level : {0, 1, 2, 3, 4}) {
        FillKernelTable(level, 0);
        EXPECT_EQ(KernelTable[RowH720Uyvy][SlotAuto].scale, ScaleBilinearH720To480_UYVY_Portable);
        EXPECT_EQ(KernelTable[RowH720Yuy2][SlotAuto].scale, ScaleBilinearH720To480_YUY2_Portable);
        EXPECT_EQ(KernelTable[RowH720Uyvy][SlotNearestAuto].scale,
                  ScaleNearestH720To480_UYVY_Portable);
        EXPECT_EQ(KernelTable[RowH720Yuy2][SlotBilinearAuto].scale,
                  ScaleBilinearH720To480_YUY2_Portable);
    }
    FillKernelTable();
}

}  // namespace
}  // namespace tavo::test
