// Frames and bytes foreseen.

#include "host/graph/output_estimate.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

constexpr int64_t kSecond = 10'000'000;

TEST(OutputEstimate, FramesByTime) {
    EXPECT_EQ(EstimateOutput({2 * kSecond, 400'000, {}, 0, 100}).frames, 50u);
    // The rate of the input is rounded to units: the last frame must not be lost by that.
    EXPECT_EQ(EstimateOutput({33'366'666, 333'667, {}, 0, 100}).frames, 100u);
    EXPECT_EQ(EstimateOutput({2 * kSecond, 400'000, 49, 0, 100}).frames, 49u);
}

TEST(OutputEstimate, FramesOfAFixedRate) {
    EXPECT_EQ(EstimateOutput({2 * kSecond, 400'000, 50, 50.0, 100}).frames, 99u);
    EXPECT_EQ(EstimateOutput({2 * kSecond, 0, {}, 12.5, 100}).frames, 24u);
    EXPECT_EQ(EstimateOutput({1, 0, {}, 25.0, 100}).frames, 0u);
}

TEST(OutputEstimate, Bytes) {
    EXPECT_EQ(EstimateOutput({0, 0, 10, 0, 99}).bytes, 17'000u + 10 * (100 + 32));
    EXPECT_EQ(EstimateOutput({0, 0, UINT32_MAX, 0, 0x7FFFFFFE}).bytes,
              17'000u + UINT32_MAX * uint64_t{0x7FFFFFFE + 32u});
}

TEST(OutputEstimate, BytesOfSound) {
    EXPECT_EQ(*EstimateOutput({2 * kSecond, 0, 10, 0, 99, 1000}).bytes,
              17'000u + 10 * (100 + 32) + 16'600 + 10 * 32 + 2000);
    EXPECT_EQ(EstimateOutput({0, 0, 10, 0, 99, 1000}).bytes,
              17'000u + 10 * (100 + 32) + 16'600 + 10 * 32);
}

TEST(OutputEstimate, NothingIsMadeUp) {
    EXPECT_FALSE(EstimateOutput({0, 400'000, {}, 0, 100}).frames);
    EXPECT_FALSE(EstimateOutput({kSecond, 0, {}, 0, 100}).frames);
    EXPECT_FALSE(EstimateOutput({0, 400'000, 50, 25.0, 100}).frames);
    EXPECT_FALSE(EstimateOutput({0, 400'000, {}, 0, 100}).bytes);
    EXPECT_FALSE(EstimateOutput({kSecond, 400'000, {}, 0, 0}).bytes);
}

}  // namespace
}  // namespace tavo
