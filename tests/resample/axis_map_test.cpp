// Axis maps: worked figures, and equality with integer arithmetic for every pair of short lengths.

#include "resample/axis_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tests/kernel_oracle/axis_entries.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

AxisMapPtr Build(int32_t srcLen, int32_t dstLen) {
    return AxisMapPtr(BuildAxisMap(srcLen, dstLen, 0));
}

std::vector<int> Indices(const AxisMap& map) { return {map.indices, map.indices + map.count}; }

std::vector<int> Weights(const AxisMap& map) { return {map.weights, map.weights + map.count}; }

testing::AssertionResult MatchesOracle(int32_t srcLen, int32_t dstLen) {
    const AxisMapPtr map = Build(srcLen, dstLen);
    const auto fail = [&] {
        return testing::AssertionFailure() << srcLen << " to " << dstLen << ": ";
    };
    if (!map) return fail() << "no map";
    const AxisEntries expected = MakeAxisEntries(srcLen, dstLen);
    const auto count = static_cast<int32_t>(expected.indices.size());
    if (map->count != count) return fail() << "count " << map->count;
    if (map->srcSpan != expected.srcSpan) {
        return fail() << "span " << map->srcSpan << ", expected " << expected.srcSpan;
    }
    if (map->fracBits != 8) return fail() << "fracBits " << map->fracBits;
    for (int32_t i = 0; i < count; ++i) {
        const auto at = static_cast<size_t>(i);
        if (map->indices[i] != expected.indices[at] || map->weights[i] != expected.weights[at]) {
            return fail() << "entry " << i << " is " << map->indices[i] << " weight "
                          << int{map->weights[i]} << ", expected " << expected.indices[at]
                          << " weight " << expected.weights[at];
        }
    }
    return testing::AssertionSuccess();
}

TEST(AxisMap, EqualLengthsGiveEverySampleWithWeight64) {
    const AxisMapPtr map = Build(5, 5);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->count, 5);
    EXPECT_EQ(map->srcSpan, 5);
    EXPECT_EQ(map->fracBits, 8);
    EXPECT_EQ(Indices(*map), (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(Weights(*map), (std::vector<int>{64, 64, 64, 64, 64}));
}

TEST(AxisMap, TwofoldEnlargementAlternatesWeights0And128) {
    const AxisMapPtr map = Build(3, 6);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->srcSpan, 3);
    EXPECT_EQ(Indices(*map), (std::vector<int>{0, 0, 1, 1, 2, 2}));
    EXPECT_EQ(Weights(*map), (std::vector<int>{0, 128, 0, 128, 0, 128}));
}

TEST(AxisMap, TwofoldReductionTakesEverySecondSampleWithWeight64) {
    const AxisMapPtr map = Build(8, 4);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->srcSpan, 8);
    EXPECT_EQ(Indices(*map), (std::vector<int>{0, 2, 4, 6}));
    EXPECT_EQ(Weights(*map), (std::vector<int>{64, 64, 64, 64}));
}

TEST(AxisMap, EnlargementByThreeHalvesCountsInThirds) {
    const AxisMapPtr map = Build(4, 6);
    ASSERT_TRUE(map);
    EXPECT_EQ(Indices(*map), (std::vector<int>{0, 0, 1, 2, 2, 3}));
    EXPECT_EQ(Weights(*map), (std::vector<int>{0, 170, 85, 0, 170, 85}));
}

TEST(AxisMap, ReductionAddsAQuarterAndSaturatesAt255) {
    const AxisMapPtr map = Build(9, 5);  // ratio 1.8: fractions 0, .8, .6, .4, .2
    ASSERT_TRUE(map);
    EXPECT_EQ(Indices(*map), (std::vector<int>{0, 1, 3, 5, 7}));
    EXPECT_EQ(Weights(*map), (std::vector<int>{64, 255, 217, 166, 115}));
}

TEST(AxisMap, WeightsAreNeverWrappedBy256) {
    const AxisMapPtr map = Build(7, 4);  // ratio 1.75: a fraction of .75 makes exactly 256
    ASSERT_TRUE(map);
    EXPECT_EQ(Weights(*map), (std::vector<int>{64, 255, 192, 128}));
}

TEST(AxisMap, TheLastEntryMayNameTheLastSample) {
    const AxisMapPtr map = Build(640, 1280);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->indices[1279], 639);
    EXPECT_EQ(map->weights[1279], 128);
}

// Three times the rounded third is 1 after rounding, and less before: what a wider register keeps.
TEST(AxisMap, EveryOperationRoundsToDouble) {
    const AxisMapPtr map = Build(1, 3);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->srcSpan, 1);
}

TEST(AxisMap, OnlyMagnitudesCount) {
    for (const auto& [srcLen, dstLen] : {std::pair{-480, 360}, {480, -360}, {-480, -360}}) {
        const AxisMapPtr map = Build(srcLen, dstLen);
        const AxisMapPtr positive = Build(480, 360);
        ASSERT_TRUE(map && positive);
        EXPECT_EQ(map->count, 360);
        EXPECT_EQ(map->srcSpan, positive->srcSpan);
        EXPECT_EQ(Indices(*map), Indices(*positive));
        EXPECT_EQ(Weights(*map), Weights(*positive));
    }
}

TEST(AxisMap, FlagsAreIgnored) {
    for (int32_t flags : {1, -1, INT32_MAX}) {
        const AxisMapPtr map(BuildAxisMap(31, 17, flags));
        const AxisMapPtr plain = Build(31, 17);
        ASSERT_TRUE(map && plain);
        EXPECT_EQ(Indices(*map), Indices(*plain));
        EXPECT_EQ(Weights(*map), Weights(*plain));
    }
}

TEST(AxisMap, LengthsWithoutAMapGiveNone) {
    for (const auto& [srcLen, dstLen] :
         {std::pair{0, 0}, {0, 7}, {7, 0}, {INT32_MIN, 7}, {7, INT32_MIN}}) {
        EXPECT_EQ(BuildAxisMap(srcLen, dstLen, 0), nullptr) << srcLen << " to " << dstLen;
    }
}

TEST(AxisMap, FreeingNoneIsAllowed) { FreeAxisMap(nullptr); }

TEST(AxisMap, AllPairsOfShortLengthsEqualIntegerArithmetic) {
    for (int32_t srcLen = 1; srcLen <= 300; ++srcLen) {
        for (int32_t dstLen = 1; dstLen <= 300; ++dstLen) {
            ASSERT_TRUE(MatchesOracle(srcLen, dstLen));
        }
    }
}

TEST(AxisMap, LongLengthsEqualIntegerArithmetic) {
    constexpr int32_t kLengths[] = {1,    2,    3,    352,  480,  576,   640,   720,   1023,
                                    1280, 1920, 1921, 4096, 8191, 65535, 65537, 99991, 1000003};
    for (int32_t srcLen : kLengths) {
        for (int32_t dstLen : kLengths) ASSERT_TRUE(MatchesOracle(srcLen, dstLen));
    }
    for (int32_t srcLen : {INT32_MAX, INT32_MAX - 1, 1 << 30, 1234567891}) {
        for (int32_t dstLen : {1, 2, 3, 7, 1000, 65537}) {
            ASSERT_TRUE(MatchesOracle(srcLen, dstLen));
        }
    }
}

TEST(AxisMap, IndicesNeverDecreaseAndStayInsideTheSource) {
    for (int32_t srcLen = 1; srcLen <= 97; ++srcLen) {
        for (int32_t dstLen = 1; dstLen <= 97; ++dstLen) {
            const AxisMapPtr map = Build(srcLen, dstLen);
            ASSERT_TRUE(map);
            int32_t previous = 0;
            for (int32_t index : Indices(*map)) {
                ASSERT_GE(index, previous);
                ASSERT_LT(index, srcLen) << srcLen << " to " << dstLen;
                previous = index;
            }
        }
    }
}

TEST(BoundedAxisMap, KeepsTheFirstEntriesAndBoundsTheirIndices) {
    const AxisMapPtr whole = Build(9, 27);
    ASSERT_TRUE(whole);
    const AxisMapPtr part(BuildBoundedAxisMap(*whole, 4, 13));
    ASSERT_TRUE(part);
    ASSERT_EQ(part->count, 13);
    EXPECT_EQ(part->fracBits, 8);
    for (int32_t i = 0; i < 13; ++i) {
        EXPECT_EQ(part->indices[i], std::min(whole->indices[i], 3)) << i;
        EXPECT_EQ(part->weights[i], whole->weights[i]) << i;
    }
    EXPECT_EQ(part->indices[12], 3);  // the whole map says 4
}

TEST(BoundedAxisMap, HasNoMoreEntriesThanTheMapItIsMadeFrom) {
    const AxisMapPtr whole = Build(10, 5);
    ASSERT_TRUE(whole);
    const AxisMapPtr part(BuildBoundedAxisMap(*whole, 10, 8));
    ASSERT_TRUE(part);
    EXPECT_EQ(part->count, 5);
    EXPECT_EQ(Indices(*part), Indices(*whole));
    EXPECT_EQ(Weights(*part), Weights(*whole));
}

TEST(BoundedAxisMap, LengthsBelowOneGiveNone) {
    const AxisMapPtr whole = Build(10, 5);
    ASSERT_TRUE(whole);
    EXPECT_EQ(BuildBoundedAxisMap(*whole, 10, 0), nullptr);
    EXPECT_EQ(BuildBoundedAxisMap(*whole, 10, -3), nullptr);
    EXPECT_EQ(BuildBoundedAxisMap(*whole, 0, 5), nullptr);
    EXPECT_EQ(BuildBoundedAxisMap(*whole, -1, 5), nullptr);
}

// Maps do not depend on what the host application has set, and leave it as it was.
TEST(AxisMap, SameUnderEveryX87Setting) {
    for (const X87Setting& setting : kX87Settings) {
        SCOPED_TRACE(setting.name);
        for (const auto& [srcLen, dstLen] : {std::pair{1, 3}, {2, 3}, {640, 480}, {352, 1280}}) {
            const AxisEntries expected = MakeAxisEntries(srcLen, dstLen);
            AxisMap* built;
            uint16_t after;
            {
                const X87ControlWordScope scope(setting.word);
                built = BuildAxisMap(srcLen, dstLen, 0);
                after = X87ControlWord();
            }
            const AxisMapPtr map(built);
            ASSERT_TRUE(map);
            EXPECT_EQ(after, TAVO_TEST_HAS_X87 ? setting.word : 0);
            EXPECT_EQ(map->srcSpan, expected.srcSpan);
            EXPECT_EQ(Indices(*map), expected.indices);
            EXPECT_EQ(Weights(*map), expected.weights);
        }
    }
}

}  // namespace
}  // namespace tavo::test
