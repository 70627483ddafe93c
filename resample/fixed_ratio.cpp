#include "resample/fixed_ratio.h"

#include <algorithm>
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

// Applies an operation to the first `end` columns of all rows, a stretch of the ratio at a time;
// endRow(y) follows on each row.
template <typename EndRow>
void ApplyColumns(const Frame& frame, const FixedRatio& ratio, int32_t end, PixelOps::Plan plan,
                  PixelOps::Apply apply, EndRow endRow) {
    const auto source = [&](const Stretch& stretch) {
        return frame.Bytes(stretch.first / ratio.columns * ratio.srcColumns);
    };
    ForStretches<Stretch>(
        end,
        [&](Stretch& stretch, int32_t first) {
            stretch.first = first;
            stretch.count = std::min(end - first, ratio.columns);
            plan(stretch.plan, {ratio.indices, ratio.weights, 0, stretch.count},
                 frame.srcStride - static_cast<int32_t>(source(stretch)));
            return stretch.count;
        },
        [&](std::span<const Stretch> stretches) {
            const bool isLast = stretches.back().first + stretches.back().count == end;
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                for (const Stretch& stretch : stretches) {
                    apply(frame.DstRow(y) + frame.Bytes(stretch.first),
                          frame.SrcRow(y) + source(stretch), stretch.plan);
                }
                if (isLast) endRow(y);
            }
        });
}

template <typename EndRow>
void BlendColumns(const Frame& frame, const FixedRatio& ratio, Halves halves, const PixelOps& ops,
                  int32_t end, EndRow endRow) {
    ApplyColumns(frame, ratio, end, ops.PlanBlend,
                 halves == Halves::Up ? ops.BlendColumnsUp : ops.BlendColumns, endRow);
}

void EndsAsItIs(int32_t) {}

}  // namespace

constexpr FixedRatio kFourToThree = MakeRatio(4, 3, kFirstOnes, kThirds);
constexpr FixedRatio kThreeToTwo = MakeRatio(3, 2, kFirstOnes, kHalf);
constexpr FixedRatio kFourToThreeMixedRgb24 = MakeRatio(12, 9, kMixedBytes, kNoWeights);

int32_t TakeFrameFixed(const Frame& frame, const FixedRatio& ratio, PixelKind kind, Member member) {
    const RowOpsScope ops(member);
    ApplyColumns(frame, ratio, frame.dstWidth, ops.Of(kind).PlanTake, ops.Of(kind).TakeColumns,
                 EndsAsItIs);
    return frame.dstHeight;
}

int32_t BlendFrameFixed(const Frame& frame, const FixedRatio& ratio, Halves halves, PixelKind kind,
                        Member member) {
    const RowOpsScope ops(member);
    BlendColumns(frame, ratio, halves, ops.Of(kind), frame.dstWidth, EndsAsItIs);
    return frame.dstHeight;
}

// Deliberate: the last destination pixel is the last source pixel but one, not blended with the
// last.
int32_t BlendFrameFixedCopyingLast(const Frame& frame, const FixedRatio& ratio, Halves halves,
                                   PixelKind kind, Member member) {
    const RowOpsScope ops(member);
    const auto size = static_cast<size_t>(frame.bytesPerPixel);
    BlendColumns(frame, ratio, halves, ops.Of(kind), frame.dstWidth - 1, [&](int32_t y) {
        std::memcpy(frame.DstRow(y) + frame.Bytes(frame.dstWidth - 1),
                    frame.SrcRow(y) + frame.Bytes(frame.srcWidth - 2), size);
    });
    return frame.dstHeight;
}

}  // namespace tavo
