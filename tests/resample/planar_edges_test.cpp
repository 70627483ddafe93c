// What happens at the borders of a plane and at the simple ratios, in figures worked by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "resample/axis_map.h"
#include "resample/kernel_table.h"
#include "resample/planar/planar_kernels.h"
#include "tests/resample/support/forced_level.h"
#include "tests/resample/support/kernel_trial.h"

namespace tavo::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr ScaleKernel kNearest[] = {ScaleNearest_Planar_Portable, ScaleNearest_Planar_MMX};
constexpr ScaleKernel kBilinear[] = {ScaleBilinear_Planar_Portable, ScaleBilinear_Planar_MMX};

class PlanarEdges : public testing::Test {
  protected:
    void SetUp() override { FillTableForThisMachine(); }
};

KernelTrial TrialOf(const FrameShape& shape, Bytes source) {
    return KernelTrial(shape, MakeAxisEntries(shape.srcWidth, shape.dstWidth),
                       MakeAxisEntries(shape.srcHeight, shape.dstHeight), std::move(source));
}

Bytes Repeat(const Bytes& row, int times) {
    Bytes rows;
    for (int i = 0; i < times; ++i) rows.insert(rows.end(), row.begin(), row.end());
    return rows;
}

Bytes RowOf(const Bytes& plane, int width, int row) {
    return {plane.begin() + row * width, plane.begin() + (row + 1) * width};
}

TEST_F(PlanarEdges, NearestReductionByTwoTakesEverySecondSampleOfEverySecondRow) {
    const KernelTrial trial =
        TrialOf({2, 2, 4, 4}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    for (ScaleKernel kernel : kNearest) EXPECT_EQ(trial.Output(kernel), (Bytes{0, 2, 8, 10}));
}

TEST_F(PlanarEdges, BilinearReductionByTwoGoesAQuarterOfTheWay) {
    const KernelTrial trial = TrialOf({2, 2, 4, 4}, {0, 100, 200, 255,  //
                                                     100, 0, 50, 77,    //
                                                     255, 128, 64, 32,  //
                                                     16, 8, 4, 2});
    for (ScaleKernel kernel : kBilinear) {
        EXPECT_EQ(trial.Output(kernel), (Bytes{37, 174, 170, 42}));
    }
}

TEST_F(PlanarEdges, BilinearReductionByTwoIsTheSameInTheMainBlock) {
    constexpr int kWidth = 64;
    constexpr int kHeight = 12;
    const Bytes source = MakeBytes(Pattern::Random, kWidth, kHeight, 5);
    const KernelTrial trial = TrialOf({kWidth / 2, kHeight / 2, kWidth, kHeight}, source);
    const auto quarter = [](int a, int b) { return a + (((b - a) * 64) >> 8); };
    for (ScaleKernel kernel : kBilinear) {
        const Bytes output = trial.Output(kernel);
        for (int y = 0; y < kHeight / 2; ++y) {
            for (int x = 0; x < kWidth / 2; ++x) {
                const uint8_t* s = &source[static_cast<size_t>(2 * y * kWidth + 2 * x)];
                const int expected =
                    quarter(quarter(s[0], s[kWidth]), quarter(s[1], s[kWidth + 1]));
                ASSERT_EQ(output[static_cast<size_t>(y * kWidth / 2 + x)], expected)
                    << x << ',' << y;
            }
        }
    }
}

TEST_F(PlanarEdges, NearestEnlargementByTwoDoublesEverySample) {
    const KernelTrial trial = TrialOf({4, 4, 2, 2}, {1, 2, 3, 4});
    for (ScaleKernel kernel : kNearest) {
        EXPECT_EQ(trial.Output(kernel), (Bytes{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4}));
    }
}

// All rows but the last one, which the last source row gives with a weight of 128.
TEST_F(PlanarEdges, BilinearEnlargementByTwoKeepsSamplesAndFlooredMidpoints) {
    constexpr int kWidth = 30;
    constexpr int kHeight = 6;
    const Bytes source = MakeBytes(Pattern::Random, kWidth, kHeight, 6);
    const KernelTrial trial = TrialOf({kWidth * 2, kHeight * 2, kWidth, kHeight}, source);
    const auto sample = [&](int row, int column) -> int {
        return source[static_cast<size_t>(row * kWidth + std::min(column, kWidth - 1))];
    };
    const auto middle = [](int a, int b) { return a + ((b - a) >> 1); };
    for (ScaleKernel kernel : kBilinear) {
        const Bytes output = trial.Output(kernel);
        for (int y = 0; y < kHeight * 2 - 1; ++y) {
            const auto vertical = [&](int column) {
                const int here = sample(y / 2, column);
                return y % 2 == 0 ? here : middle(here, sample(y / 2 + 1, column));
            };
            for (int x = 0; x < kWidth * 2; ++x) {
                const int left = vertical(x / 2);
                const int expected = x % 2 == 0 ? left : middle(left, vertical(x / 2 + 1));
                ASSERT_EQ(output[static_cast<size_t>(y * kWidth * 2 + x)], expected)
                    << x << ',' << y;
            }
        }
    }
}

// The lower right sample of the last source row is that of the column itself; the first column of
// the last sample begins with what comes of that, its second one is computed afresh.
TEST_F(PlanarEdges, TheLastRowOfAnEnlargementByTwoBlendsTheRightSampleBack) {
    const KernelTrial trial = TrialOf({4, 4, 2, 2}, {0, 0, 100, 200});
    for (ScaleKernel kernel : kBilinear) {
        // right = 200 + ((100 - 200) * 128 >> 8) = 150, and 100 + ((150 - 100) * 128 >> 8) = 125
        EXPECT_EQ(RowOf(trial.Output(kernel), 4, 3), (Bytes{100, 125, 150, 200}));
        EXPECT_EQ(RowOf(trial.Output(kernel), 4, 2), (Bytes{100, 150, 200, 200}));
    }
}

constexpr uint8_t kSixSamples[] = {10, 20, 40, 80, 160, 250};

TEST_F(PlanarEdges, AtTwoThirdsTheFirstColumnOfTheLastSampleBlendsBack) {
    const Bytes source = Repeat(Bytes(std::begin(kSixSamples), std::end(kSixSamples)), 3);
    const KernelTrial trial = TrialOf({9, 3, 6, 3}, source);
    for (ScaleKernel kernel : kBilinear) {
        // 250 + ((160 - 250) * 85 >> 8) = 220
        EXPECT_EQ(RowOf(trial.Output(kernel), 9, 0),
                  (Bytes{10, 16, 26, 40, 66, 106, 160, 219, 220}));
    }
}

TEST_F(PlanarEdges, InTheLastRowReusedColumnsBlendTowardTheLastOneComputedInFull) {
    const Bytes source = Repeat(Bytes(std::begin(kSixSamples), std::end(kSixSamples)), 3);
    const KernelTrial trial = TrialOf({9, 3, 6, 3}, source);
    for (ScaleKernel kernel : kBilinear) {
        EXPECT_EQ(RowOf(trial.Output(kernel), 9, 2), (Bytes{10, 14, 14, 10, 59, 60, 40, 204, 204}));
    }
}

TEST_F(PlanarEdges, TheBottomStripBlendsTheLowerRightSampleBackInTheLastRow) {
    Bytes source(32, 0);
    source[17] = 100;
    source[18] = 200;
    source[19] = 255;
    const KernelTrial trial = TrialOf({16, 2, 16, 2}, source);
    for (ScaleKernel kernel : kBilinear) {
        const Bytes row = RowOf(trial.Output(kernel), 16, 1);
        EXPECT_EQ(row[0], 18);   // right = 100 + ((0 - 100) * 64 >> 8) = 75
        EXPECT_EQ(row[1], 118);  // right = 200 + ((100 - 200) * 64 >> 8) = 175
        EXPECT_EQ(row[2], 210);  // right = 255 + ((200 - 255) * 64 >> 8) = 241
    }
}

// At a ninth the strip begins with source index 1, one more than where the reuse rule starts out;
// there is no earlier column to reuse.
TEST_F(PlanarEdges, AStripThatBeginsWithIndexOneIsComputedInFull) {
    const KernelTrial trial = TrialOf({27, 3, 3, 3}, Repeat({0, 90, 180}, 3));
    for (ScaleKernel kernel : kBilinear) {
        const Bytes output = trial.Output(kernel);
        EXPECT_EQ(output[16], 159);  // 90 + (90 * 199 >> 8)
        EXPECT_EQ(output[17], 169);  // 90 + (90 * 227 >> 8)
        EXPECT_EQ(RowOf(output, 27, 0), RowOf(output, 27, 1));
    }
}

TEST_F(PlanarEdges, OneSampleFillsThePlane) {
    const KernelTrial trial = TrialOf({40, 9, 1, 1}, {123});
    for (ScaleKernel kernel : kNearest) EXPECT_EQ(trial.Output(kernel), Bytes(360, 123));
    for (ScaleKernel kernel : kBilinear) EXPECT_EQ(trial.Output(kernel), Bytes(360, 123));
}

TEST_F(PlanarEdges, ASingleColumnIsBlendedVertically) {
    const KernelTrial trial = TrialOf({9, 4, 1, 2}, {100, 200});
    Bytes expected(36, 200);
    std::fill_n(expected.begin(), 9, 100);
    std::fill_n(expected.begin() + 9, 9, 150);
    for (ScaleKernel kernel : kBilinear) EXPECT_EQ(trial.Output(kernel), expected);
}

TEST_F(PlanarEdges, TheLastColumnOfAnEnlargementReadsNothingBehindTheRow) {
    for (const FrameShape& shape : {FrameShape{80, 1, 7, 1}, {64, 2, 9, 1}, {1000, 3, 333, 2}}) {
        const KernelTrial trial(shape, Pattern::Random, 3);
        for (ScaleKernel kernel : kNearest) {
            EXPECT_TRUE(trial.Matches(kernel, NearestPlanar));
        }
        for (ScaleKernel kernel : kBilinear) {
            EXPECT_TRUE(trial.Matches(kernel, BilinearPlanar));
        }
    }
}

TEST_F(PlanarEdges, ANegativeHeightStoresTheSameRowsFromTheBottomUp) {
    const Bytes source = MakeBytes(Pattern::Random, 31, 11, 8);
    const KernelTrial down = TrialOf({45, 17, 31, 11}, source);
    const KernelTrial up = TrialOf({45, -17, 31, 11}, source);
    for (ScaleKernel kernel : {kNearest[0], kNearest[1], kBilinear[0], kBilinear[1]}) {
        const Bytes downward = down.Output(kernel);
        const Bytes upward = up.Output(kernel);
        for (int row = 0; row < 17; ++row) {
            EXPECT_EQ(RowOf(upward, 45, row), RowOf(downward, 45, 16 - row)) << row;
        }
    }
}

TEST_F(PlanarEdges, ANegativeSourceHeightChangesNothing) {
    const Bytes source = MakeBytes(Pattern::Random, 31, 11, 9);
    const KernelTrial positive = TrialOf({45, 17, 31, 11}, source);
    const KernelTrial negative = TrialOf({45, 17, 31, -11}, source);
    for (ScaleKernel kernel : {kNearest[0], kNearest[1], kBilinear[0], kBilinear[1]}) {
        EXPECT_EQ(positive.Output(kernel), negative.Output(kernel));
    }
}

TEST_F(PlanarEdges, AChromaPlaneNeedsNoMapsOfItsOwn) {
    const Bytes source = MakeBytes(Pattern::Random, 32, 24, 10);
    const FrameShape chroma = {48, 18, 32, 24};
    const KernelTrial own = TrialOf(chroma, source);
    for (int shift : {1, 2}) {
        const KernelTrial shared(chroma, MakeAxisEntries(32 << shift, 48 << shift),
                                 MakeAxisEntries(24 << shift, 18 << shift), source);
        for (ScaleKernel kernel : {kNearest[0], kNearest[1], kBilinear[0], kBilinear[1]}) {
            EXPECT_EQ(shared.Output(kernel), own.Output(kernel));
        }
    }
}

}  // namespace
}  // namespace tavo::test
