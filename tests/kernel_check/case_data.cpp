// The pictures and maps of a case.

#include <algorithm>

#include "tests/kernel_check/cases.h"
#include "tests/kernel_oracle/axis_entries.h"

namespace tavo::test {
namespace {

constexpr int kDifferences = 511;  // of two bytes

// Never decreasing, with repeated indices, single steps and leaps.
AxisEntries RandomEntries(int srcLen, int dstLen, Random& random) {
    constexpr int kSteps[] = {0, 0, 1, 1, 1, 1, 2, 3, 9};
    AxisEntries entries;
    const int reach = random.Between(1, 9);
    int index = random.Between(0, 3) == 0 ? random.Between(0, srcLen - 1) : 0;
    for (int i = 0; i < dstLen; ++i) {
        const int weight = random.Between(0, 9);
        entries.indices.push_back(std::min(index, srcLen - 1));
        entries.weights.push_back(weight == 0 ? 0 : weight == 1 ? 255 : random.NextByte());
        index += kSteps[random.Between(0, reach - 1)];
    }
    return entries;
}

// Two samples to each entry, those at 4i + 1 and 4i + 2.
AxisEntries EveryWeight(int dstLen) {
    AxisEntries entries;
    for (int i = 0; i < dstLen; ++i) {
        entries.indices.push_back(4 * i + 1);
        entries.weights.push_back(i % 256);
    }
    return entries;
}

AxisEntries Unchanged(int length) {
    AxisEntries entries;
    for (int i = 0; i < length; ++i) {
        entries.indices.push_back(i);
        entries.weights.push_back(0);
    }
    return entries;
}

// Two bytes; as n grows, they differ by -255 to 255 and again.
struct BytePair {
    int from;
    int to;
};
BytePair PairOfDifference(int n, Random& random) {
    const int difference = n % kDifferences - 255;
    const int from = random.Between(std::max(0, -difference), std::min(255, 255 - difference));
    return {from, from + difference};
}

std::vector<uint8_t> PairsAcross(Format format, const Sizes& sizes, Random& random) {
    const int stride = StrideOf(format, sizes.srcWidth);
    std::vector<uint8_t> bytes;
    for (int y = 0; y < sizes.srcHeight; ++y) {
        const BytePair pair = PairOfDifference(y, random);
        for (int at = 0; at < stride; ++at) {
            const int pixel = at / BytesPerPixel(format);
            bytes.push_back(static_cast<uint8_t>(pixel % 4 < 2 ? pair.from : pair.to));
        }
    }
    return bytes;
}

std::vector<uint8_t> PairsDown(Format format, const Sizes& sizes, Random& random) {
    const int stride = StrideOf(format, sizes.srcWidth);
    std::vector<BytePair> pairs;
    for (int at = 0; at < stride; ++at) pairs.push_back(PairOfDifference(at, random));
    std::vector<uint8_t> bytes;
    for (int y = 0; y < sizes.srcHeight; ++y) {
        for (const BytePair& pair : pairs) {
            bytes.push_back(static_cast<uint8_t>(y % 4 < 2 ? pair.from : pair.to));
        }
    }
    return bytes;
}

}  // namespace

Source MakeSource(Format format, const CasePlan& plan) {
    const Sizes& sizes = plan.sizes;
    Random random(plan.seed);
    Source source{format, sizes.srcWidth, sizes.srcHeight, {}};
    switch (plan.maps) {
        case MapKind::OfSizes:
        case MapKind::Random:
            source.bytes = MakeBytes(plan.pattern, StrideOf(format, sizes.srcWidth),
                                     sizes.srcHeight, plan.seed);
            break;
        case MapKind::EveryWeightX: source.bytes = PairsAcross(format, sizes, random); break;
        case MapKind::EveryWeightY: source.bytes = PairsDown(format, sizes, random); break;
    }
    return source;
}

Maps MakeMaps(const CasePlan& plan) {
    const Sizes& sizes = plan.sizes;
    Random random(plan.seed ^ 0x5a5a);
    switch (plan.maps) {
        case MapKind::OfSizes: break;
        case MapKind::Random: {
            // Kernels of unchanged height are given row for row.
            const bool rowForRow = plan.axis != Axis::Both && plan.axis != Axis::Vertical;
            const AxisEntries x = RandomEntries(sizes.srcWidth, sizes.dstWidth, random);
            return {x, rowForRow ? MakeAxisEntries(sizes.srcHeight, sizes.dstHeight)
                                 : RandomEntries(sizes.srcHeight, sizes.dstHeight, random)};
        }
        case MapKind::EveryWeightX:
            return {EveryWeight(sizes.dstWidth), Unchanged(sizes.dstHeight)};
        case MapKind::EveryWeightY:
            return {Unchanged(sizes.dstWidth), EveryWeight(sizes.dstHeight)};
    }
    return {MakeAxisEntries(sizes.srcWidth, sizes.dstWidth),
            MakeAxisEntries(sizes.srcHeight, sizes.dstHeight)};
}

}  // namespace tavo::test
