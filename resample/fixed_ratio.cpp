#include "resample/fixed_ratio.h"

#include <cstring>

#include "resample/column_blocks.h"

namespace tavo {
namespace {

// Destination columns of one block.
constexpr int32_t kColumns = 480;
static_assert(3 * kColumns <= PlannedBytes(WorkMemory::kOwnBytes));

// A group of kFrom pixels becomes kTo.
template <int32_t kFrom, int32_t kTo, int32_t kCount>
struct Indices {
    static_assert(kCount % kTo == 0);

    constexpr explicit Indices(const int32_t (&positions)[kTo]) {
        for (int32_t i = 0; i < kCount; ++i) of[i] = i / kTo * kFrom + positions[i % kTo];
    }
    constexpr FixedRatio Ratio(const uint8_t* weights) const {
        return {of, weights, kCount, kCount / kTo * kFrom};
    }

    int32_t of[kCount] = {};
};

template <int32_t kTo, int32_t kCount>
struct Weights {
    constexpr explicit Weights(const uint8_t (&weights)[kTo]) {
        for (int32_t i = 0; i < kCount; ++i) of[i] = weights[i % kTo];
    }

    uint8_t of[kCount] = {};
};

constexpr Indices<4, 3, kColumns> kFourToThreeIndices({0, 1, 2});
constexpr Weights<3, kColumns> kFourToThreeWeights({0, 85, 170});
constexpr Indices<3, 2, kColumns> kThreeToTwoIndices({0, 1});
constexpr Weights<2, kColumns> kThreeToTwoWeights({0, 128});

// Single bytes of four RGB24 pixels that become three.
constexpr Indices<12, 9, 3 * kColumns> kMixedIndices({0, 1, 2, 3, 4, 5, 6, 7, 11});

PixelOperation BlendOf(const PixelOps& ops, Rounding rounding) {
    return rounding == Rounding::Up ? BlendUpOf(ops) : BlendOf(ops);
}

}  // namespace

constexpr FixedRatio kFourToThree = kFourToThreeIndices.Ratio(kFourToThreeWeights.of);
constexpr FixedRatio kThreeToTwo = kThreeToTwoIndices.Ratio(kThreeToTwoWeights.of);
constexpr FixedRatio kFourToThreeMixedRgb24 = kMixedIndices.Ratio(nullptr);

int32_t NearestFrameFixed(const Frame& frame, const FixedRatio& ratio, PixelKind kind,
                          KernelVariant variant) {
    const RowOpsScope ops(variant);
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth, NearestOf(ops.Of(kind)), NoRowTail);
    return frame.dstHeight;
}

int32_t BlendFrameFixed(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                        PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth, BlendOf(ops.Of(kind), rounding),
                   NoRowTail);
    return frame.dstHeight;
}

// Deliberate: the last destination pixel is the last source pixel but one, not blended with the
// last.
int32_t BlendFrameFixedCopyingLast(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                                   PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    const auto size = static_cast<size_t>(frame.bytesPerPixel);
    const auto copyLast = [&](int32_t y) {
        std::memcpy(frame.DstRow(y) + frame.Bytes(frame.dstWidth - 1),
                    frame.SrcRow(y) + frame.Bytes(frame.srcWidth - 2), size);
    };
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth - 1, BlendOf(ops.Of(kind), rounding),
                   copyLast);
    return frame.dstHeight;
}

}  // namespace tavo
