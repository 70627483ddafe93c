// Two lengths of 32 bits, signs included; then the source and the destination length of a bounded
// map. The map must have the entries of the oracle.

#include <cstdlib>

#include "resample/axis_map.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/kernel_oracle/axis_entries.h"

using namespace tavo;

namespace tavo_test {
namespace {

// Longer maps are no other, and take long.
constexpr int64_t kMostEntries = 1 << 14;

int32_t TakeLength(FuzzInput& input) {
    const auto length = input.Take<int32_t>();
    // Lengths below 4096 are the usual ones.
    return input.Take<uint8_t>() % 4 ? length % 4096 : length;
}

bool HasNoMap(int32_t length) { return length == 0 || length == INT32_MIN; }

void CheckEntries(const AxisMap& map, int32_t srcLen, int32_t dstLen) {
    const tavo::test::AxisEntries want = tavo::test::MakeAxisEntries(srcLen, dstLen);
    Require(map.count == std::abs(dstLen) && map.fracBits == 8 && map.srcPitch == 0);
    Require(map.srcSpan == want.srcSpan);
    for (int32_t i = 0; i < map.count; ++i) {
        const auto at = static_cast<size_t>(i);
        Require(map.indices[i] == want.indices[at] && map.weights[i] == want.weights[at]);
        Require(map.indices[i] < std::abs(srcLen));
        Require(i == 0 || map.indices[i - 1] <= map.indices[i]);
    }
}

void CheckBounded(const AxisMap& map, int32_t srcLen, int32_t dstLen) {
    const AxisMapPtr bounded(BuildBoundedAxisMap(map, srcLen, dstLen));
    Require((bounded != nullptr) == (srcLen > 0 && dstLen > 0));
    if (!bounded) return;
    Require(bounded->count == std::min(dstLen, map.count) && bounded->srcSpan <= srcLen);
    for (int32_t i = 0; i < bounded->count; ++i) {
        Require(bounded->indices[i] == std::min(map.indices[i], srcLen - 1));
        Require(bounded->weights[i] == map.weights[i]);
    }
}

}  // namespace

void FuzzAxisMap(FuzzBytes bytes) {
    FuzzInput input(bytes);
    const int32_t srcLen = TakeLength(input);
    const int32_t dstLen = TakeLength(input);
    if (dstLen != INT32_MIN && std::abs(int64_t{dstLen}) > kMostEntries) return;
    const AxisMapPtr map(BuildAxisMap(srcLen, dstLen, 0));
    Require((map != nullptr) == !(HasNoMap(srcLen) || HasNoMap(dstLen)));
    if (!map) return;
    CheckEntries(*map, srcLen, dstLen);
    const int32_t boundedSource = TakeLength(input);
    CheckBounded(*map, boundedSource, TakeLength(input));
}

}  // namespace tavo_test
