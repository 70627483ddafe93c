// The planar kernels in every slot of their row, over many sizes and kinds of data, against the
// oracle, between guard pages.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "resample/kernel_table.h"
#include "resample/planar/planar_kernels.h"
#include "tests/resample/support/expected_table.h"
#include "tests/resample/support/forced_level.h"
#include "tests/resample/support/kernel_trial.h"

namespace tavo::test {
namespace {

constexpr struct {
    const char* name;
    ScaleKernel kernel;
    Oracle oracle;
} kKernels[] = {
    {"ScaleNearest_Planar_Portable", ScaleNearest_Planar_Portable, NearestPlanar},
    {"ScaleNearest_Planar_MMX", ScaleNearest_Planar_MMX, NearestPlanar},
    {"ScaleBilinear_Planar_Portable", ScaleBilinear_Planar_Portable, BilinearPlanar},
    {"ScaleBilinear_Planar_MMX", ScaleBilinear_Planar_MMX, BilinearPlanar},
};

// Each kernel on the row operations of this processor and on the portable ones.
void ExpectAllKernelsMatch(const KernelTrial& trial) {
    const Expectation nearest = trial.Expect(NearestPlanar);
    const Expectation bilinear = trial.Expect(BilinearPlanar);
    for (int level : {OwnLevel(), 0}) {
        const ForcedLevel forced(level, 0);
        for (const auto& tried : kKernels) {
            const auto& expected = tried.oracle == NearestPlanar ? nearest : bilinear;
            for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
                ASSERT_TRUE(trial.Run(tried.kernel, expected, guard))
                    << tried.name << " at level " << level;
            }
        }
    }
}

int32_t EitherSign(int32_t height, Random& random) {
    return random.Next() & 0x10 ? height : -height;
}

Pattern AnyPattern(Random& random) {
    constexpr int32_t kCount = std::size(kPatterns);
    // Random bytes in half of the trials.
    return random.Next() & 0x20 ? Pattern::Random : kPatterns[random.Between(0, kCount - 1)];
}

void ExpectMatchesAt(FrameShape shape, Random& random) {
    shape.dstHeight = EitherSign(shape.dstHeight, random);
    shape.srcHeight = EitherSign(shape.srcHeight, random);
    const KernelTrial trial(shape, AnyPattern(random), random.Next());
    ExpectAllKernelsMatch(trial);
}

TEST(Planar, EveryPairOfShortWidths) {
    Random random(1);
    for (int32_t srcWidth = 1; srcWidth <= 40; ++srcWidth) {
        for (int32_t dstWidth = 1; dstWidth <= 40; ++dstWidth) {
            for (int trial = 0; trial < 3; ++trial) {
                ExpectMatchesAt({dstWidth, random.Between(1, 9), srcWidth, random.Between(1, 9)},
                                random);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(Planar, EveryPairOfShortHeights) {
    Random random(2);
    for (int32_t srcHeight = 1; srcHeight <= 40; ++srcHeight) {
        for (int32_t dstHeight = 1; dstHeight <= 40; ++dstHeight) {
            for (int trial = 0; trial < 2; ++trial) {
                ExpectMatchesAt(
                    {random.Between(1, 25), dstHeight, random.Between(1, 25), srcHeight}, random);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(Planar, RandomShortSizesInBothDirections) {
    Random random(3);
    for (int trial = 0; trial < 4000; ++trial) {
        ExpectMatchesAt({random.Between(1, 40), random.Between(1, 40), random.Between(1, 40),
                         random.Between(1, 40)},
                        random);
        if (HasFatalFailure()) return;
    }
}

TEST(Planar, EveryPatternAndSignAtSeveralRatios) {
    constexpr FrameShape kShapes[] = {
        {24, 12, 24, 12}, {16, 8, 32, 16}, {48, 20, 24, 10}, {27, 9, 18, 6},  {33, 11, 47, 13},
        {47, 13, 33, 11}, {64, 3, 5, 3},   {100, 17, 3, 2},  {3, 2, 100, 17}, {40, 40, 1, 1},
        {1, 1, 40, 40},   {48, 5, 64, 5},  {48, 5, 72, 5},
    };
    for (const FrameShape& base : kShapes) {
        for (Pattern pattern : kPatterns) {
            for (int signs = 0; signs < 4; ++signs) {
                FrameShape shape = base;
                if (signs & 1) shape.dstHeight = -shape.dstHeight;
                if (signs & 2) shape.srcHeight = -shape.srcHeight;
                ExpectAllKernelsMatch(KernelTrial(shape, pattern, 17));
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(Planar, FullFramesAndOddOnes) {
    constexpr FrameShape kShapes[] = {
        {640, 480, 352, 288},  {352, 288, 640, 480},    {640, 480, 720, 576},
        {720, 576, 640, 480},  {1280, 720, 1920, 1080}, {1920, 1080, 1280, 720},
        {1281, 719, 353, 287}, {353, 287, 1281, 719},   {176, 144, 1920, 1080},
        {1920, 31, 641, 17},   {641, 17, 1920, 31},     {1919, 13, 1921, 11},
        {1279, 7, 7, 1279},    {480, 11, 640, 11},      {480, 11, 720, 11},
        {719, 2, 1, 2},        {3000, 3, 1000, 9},
    };
    Random random(4);
    for (const FrameShape& shape : kShapes) {
        ExpectMatchesAt(shape, random);
        if (HasFatalFailure()) return;
    }
}

TEST(Planar, RandomLongRows) {
    Random random(5);
    for (int trial = 0; trial < 300; ++trial) {
        ExpectMatchesAt({random.Between(1, 2000), random.Between(1, 6), random.Between(1, 2000),
                         random.Between(1, 6)},
                        random);
        if (HasFatalFailure()) return;
    }
}

// Rows longer than any block that a kernel may hold at once.
TEST(Planar, VeryLongRows) {
    constexpr int32_t kWidths[] = {1, 9, 4095, 4097, 8193, 12289, 20000};
    Random random(8);
    for (int32_t srcWidth : kWidths) {
        for (int32_t dstWidth : kWidths) {
            ExpectMatchesAt({dstWidth, random.Between(2, 5), srcWidth, random.Between(2, 5)},
                            random);
            if (HasFatalFailure()) return;
        }
    }
    for (int trial = 0; trial < 40; ++trial) {
        ExpectMatchesAt({random.Between(1, 15000), random.Between(1, 4),
                         random.Between(4000, 15000), random.Between(1, 4)},
                        random);
        if (HasFatalFailure()) return;
    }
}

// Chroma planes: the maps of the luma plane with all sizes shifted right.
TEST(Planar, ChromaPlanesUnderTheMapsOfTheLumaPlane) {
    Random random(6);
    for (int32_t shift : {1, 2}) {
        for (int trial = 0; trial < 400; ++trial) {
            const int32_t align = 1 << shift;
            const FrameShape luma = {random.Between(1, 30) * align, random.Between(1, 12) * align,
                                     random.Between(1, 30) * align, random.Between(1, 12) * align};
            const FrameShape chroma = {luma.dstWidth >> shift,
                                       EitherSign(luma.dstHeight >> shift, random),
                                       luma.srcWidth >> shift, luma.srcHeight >> shift};
            ExpectAllKernelsMatch(KernelTrial(
                chroma, MakeAxisEntries(luma.srcWidth, luma.dstWidth),
                MakeAxisEntries(luma.srcHeight, luma.dstHeight),
                MakeBytes(AnyPattern(random), chroma.srcWidth, chroma.srcHeight, random.Next())));
            if (HasFatalFailure()) return;
        }
    }
}

// Maps of the kernel contract that no pair of lengths produces: any indices that never decrease,
// any weights.
AxisEntries AnyMap(int32_t srcLen, int32_t dstLen, Random& random) {
    AxisEntries map;
    map.srcSpan = srcLen;
    int32_t index = random.Next() & 0x40 ? 0 : random.Between(0, srcLen - 1);
    const int32_t longestStep = random.Between(0, 3);
    for (int32_t i = 0; i < dstLen; ++i) {
        map.indices.push_back(index);
        map.weights.push_back(random.NextByte());
        index = std::min(index + random.Between(0, longestStep), srcLen - 1);
    }
    return map;
}

TEST(Planar, AnyMapsOfTheContract) {
    Random random(7);
    for (int trial = 0; trial < 3000; ++trial) {
        const FrameShape shape = {random.Between(1, 70), EitherSign(random.Between(1, 9), random),
                                  random.Between(1, 70), EitherSign(random.Between(1, 9), random)};
        const int32_t srcRows = std::abs(shape.srcHeight);
        ExpectAllKernelsMatch(
            KernelTrial(shape, AnyMap(shape.srcWidth, shape.dstWidth, random),
                        AnyMap(srcRows, std::abs(shape.dstHeight), random),
                        MakeBytes(AnyPattern(random), shape.srcWidth, srcRows, random.Next())));
        if (HasFatalFailure()) return;
    }
}

TEST(Planar, EverySlotAtEveryLevelAndSpeed) {
    constexpr FrameShape kShapes[] = {
        {1, 1, 1, 1},      {24, 12, 24, -12}, {16, -8, 32, 16}, {48, 20, 24, 10}, {27, 9, 18, -6},
        {33, -11, 47, 13}, {47, 13, 33, 11},  {100, -17, 3, 2}, {3, 2, 100, 17},  {40, 40, 1, 1},
    };
    const ScaleRow& row = kScaleRows[RowBothPlanar - kFirstScaleRow];
    ASSERT_EQ(row.row, int{RowBothPlanar});
    for (const FrameShape& shape : kShapes) {
        const KernelTrial trial(shape, Pattern::Random, 99);
        const Expectation nearest = trial.Expect(NearestPlanar);
        const Expectation bilinear = trial.Expect(BilinearPlanar);
        for (int level : RunnableLevels()) {
            for (int speedClass : kSpeedClasses) {
                const ForcedLevel forced(level, speedClass);
                for (int slot = 0; slot < kKernelSlots; ++slot) {
                    const Oracle oracle = row.InSlot(slot, level, speedClass).oracle;
                    const auto& expected = oracle == NearestPlanar ? nearest : bilinear;
                    ASSERT_TRUE(trial.Run(KernelTable[RowBothPlanar][slot].scale, expected,
                                          BufferGuard::kPageAfter))
                        << "slot " << slot << " level " << level << " class " << speedClass;
                }
            }
        }
    }
}

TEST(Planar, AHeightOfZeroWritesNothing) {
    for (const auto& tried : kKernels) {
        const KernelTrial trial({16, 0, 8, 4}, Pattern::Random, 1);
        EXPECT_TRUE(trial.Matches(tried.kernel, tried.oracle)) << tried.name;
    }
}

}  // namespace
}  // namespace tavo::test
