#include "resample/fixed_ratio.h"

#include <cstring>

#include "resample/stretches.h"

namespace tavo {
namespace {

// A group of `from` pixels becomes `to`, at these positions and weights.
constexpr FixedRatio MakeRatio(int32_t from, int32_t to, const int32_t* positions,
                               const uint8_t* weights) {
    FixedRatio ratio = {};
    ratio.columns = FixedRatio::kMaxColumns / to * to;
    for (int32_t i = 0; i < ratio.columns; ++i) {
        ratio.indices[i] = i / to * from + positions[i % to];
        ratio.weights[i] = weights[i % to];
    }
    ratio.srcColumns = ratio.columns / to * from;
    return ratio;
}

constexpr int32_t kFirstOnes[] = {0, 1, 2};
constexpr uint8_t kThirds[] = {0, 85, 170};
constexpr uint8_t kHalf[] = {0, 128};

// The bytes of three pixels out of four: the third takes blue and green from the third source pixel
// and red from the fourth.
constexpr int32_t kMixedBytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 11};
constexpr uint8_t kNoWeights[9] = {};

PixelOperation BlendOf(const PixelOps& ops, Halves halves) {
    return halves == Halves::Up ? BlendUpOf(ops) : BlendOf(ops);
}

}  // namespace

constexpr FixedRatio kFourToThree = MakeRatio(4, 3, kFirstOnes, kThirds);
constexpr FixedRatio kThreeToTwo = MakeRatio(3, 2, kFirstOnes, kHalf);
constexpr FixedRatio kFourToThreeMixedRgb24 = MakeRatio(12, 9, kMixedBytes, kNoWeights);

int32_t TakeFrameFixed(const Frame& frame, const FixedRatio& ratio, PixelKind kind, Member member) {
    const RowOpsScope ops(member);
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth, TakeOf(ops.Of(kind)), EndsAsItIs);
    return frame.dstHeight;
}

int32_t BlendFrameFixed(const Frame& frame, const FixedRatio& ratio, Halves halves, PixelKind kind,
                        Member member) {
    const RowOpsScope ops(member);
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth, BlendOf(ops.Of(kind), halves),
                   EndsAsItIs);
    return frame.dstHeight;
}

// Deliberate: the last destination pixel is the last source pixel but one, not blended with the
// last.
int32_t BlendFrameFixedCopyingLast(const Frame& frame, const FixedRatio& ratio, Halves halves,
                                   PixelKind kind, Member member) {
    const RowOpsScope ops(member);
    const auto size = static_cast<size_t>(frame.bytesPerPixel);
    const auto copyLast = [&](int32_t y) {
        std::memcpy(frame.DstRow(y) + frame.Bytes(frame.dstWidth - 1),
                    frame.SrcRow(y) + frame.Bytes(frame.srcWidth - 2), size);
    };
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth - 1, BlendOf(ops.Of(kind), halves),
                   copyLast);
    return frame.dstHeight;
}

}  // namespace tavo
