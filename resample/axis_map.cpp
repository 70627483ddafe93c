// Axis maps. Their arithmetic is that of doubles in every build (DoublePrecisionScope).
// docs/kernels.md has the formula.

#include "resample/axis_map.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "cpu/double_precision.h"

namespace tavo {
namespace {

constexpr int32_t kFracBits = 8;
constexpr double kWeightOne = 256.0;
// Deliberate: the most that a weight can be.
constexpr double kWeightMax = 255.0;

// Deliberate: added to weights, never to indices, when shrinking and at equal size.
constexpr double kShrinkOffset = 0.25;

AxisMapPtr AllocateAxisMap(int32_t count) {
    // operator new[] throws above this size, even the nothrow one.
    constexpr auto kMaxCount = std::numeric_limits<ptrdiff_t>::max() / sizeof(int32_t);
    if (static_cast<size_t>(count) > kMaxCount) return nullptr;
    AxisMapPtr map(new (std::nothrow) AxisMap{count, 0, kFracBits, nullptr, nullptr});
    if (!map) return nullptr;
    map->weights = new (std::nothrow) uint8_t[count];
    map->indices = new (std::nothrow) int32_t[count];
    if (!map->weights || !map->indices) return nullptr;
    return map;
}

// Not inlined: no operation may leave the precision scope of the caller.
[[gnu::noinline]] void FillEntries(AxisMap& map, int32_t srcLen, int32_t dstLen) {
    const double ratio = static_cast<double>(srcLen) / static_cast<double>(dstLen);
    const double offset = ratio >= 1.0 ? kShrinkOffset : 0.0;
    map.srcSpan = static_cast<int32_t>(map.count * ratio);
    for (int32_t i = 0; i < map.count; ++i) {
        const double x = i * ratio;
        const int32_t index = static_cast<int32_t>(x);  // floor, since x >= 0
        const double weight = (x - index + offset) * kWeightOne;
        map.indices[i] = index;
        map.weights[i] = static_cast<uint8_t>(std::min(weight, kWeightMax));
    }
}

}  // namespace

AxisMap* BuildAxisMap(int32_t srcLen, int32_t dstLen, int32_t /*flags*/) {
    constexpr int32_t kMostNegative = std::numeric_limits<int32_t>::min();
    if (srcLen == 0 || dstLen == 0 || srcLen == kMostNegative || dstLen == kMostNegative) {
        return nullptr;
    }
    const int32_t srcCount = std::abs(srcLen);
    const int32_t dstCount = std::abs(dstLen);
    AxisMapPtr map = AllocateAxisMap(dstCount);
    if (!map) return nullptr;
    const DoublePrecisionScope scope;
    FillEntries(*map, srcCount, dstCount);
    return map.release();
}

AxisMap* BuildBoundedAxisMap(const AxisMap& map, int32_t srcLen, int32_t dstLen) {
    if (srcLen < 1 || dstLen < 1) return nullptr;
    const int32_t count = std::min(dstLen, map.count);
    AxisMapPtr bounded = AllocateAxisMap(count);
    if (!bounded) return nullptr;
    bounded->srcSpan = std::min(map.srcSpan, srcLen);
    std::memcpy(bounded->weights, map.weights, static_cast<size_t>(count));
    std::transform(map.indices, map.indices + count, bounded->indices,
                   [=](int32_t index) { return std::min(index, srcLen - 1); });
    return bounded.release();
}

void FreeAxisMap(AxisMap* map) {
    if (!map) return;
    delete[] map->weights;
    delete[] map->indices;
    delete map;
}

}  // namespace tavo
