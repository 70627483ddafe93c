#include "resample/packed422/packed422_drivers.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "resample/packed422/packed422_stretch.h"
#include "resample/stretches.h"

namespace tavo {
namespace {

Packed422Ops::Pack PackOf(const RowOps& ops, Halves average) {
    return average == Halves::Up ? ops.packed422.PackUp : ops.packed422.PackDown;
}

Packed422Ops::BlendPack BlendPackOf(const RowOps& ops, Halves average) {
    return average == Halves::Up ? ops.packed422.BlendPackUp : ops.packed422.BlendPackDown;
}

PackedColumns ColumnsOf(const Frame& frame) {
    return {frame.xMap->indices, frame.xMap->weights, frame.dstWidth, frame.srcWidth};
}

// The two source rows that a destination row is blended from, kept while rows share them.
class RowPairCache {
  public:
    RowPairCache(const Frame& frame, const PackedLayout& layout, const PackedStretch& stretch)
        : frame_(frame), layout_(layout), stretch_(stretch) {}
    RowPairCache(const RowPairCache&) = delete;
    RowPairCache& operator=(const RowPairCache&) = delete;

    // Rows are asked for in ascending order, so a row that was lower may be upper next.
    PackedRow& Upper(int32_t y) {
        if (lowerRow_ == y) {
            std::swap(upper_, lower_);
            std::swap(upperRow_, lowerRow_);
        }
        return Load(y, *upper_, upperRow_);
    }
    PackedRow& Lower(int32_t y) { return Load(y, *lower_, lowerRow_); }

  private:
    PackedRow& Load(int32_t y, PackedRow& row, int32_t& held) {
        if (held != y) stretch_.BlendRow(layout_, frame_.SrcRow(y), row);
        held = y;
        return row;
    }

    const Frame& frame_;
    const PackedLayout& layout_;
    const PackedStretch& stretch_;
    PackedRow rows_[2];
    PackedRow* upper_ = &rows_[0];
    PackedRow* lower_ = &rows_[1];
    int32_t upperRow_ = -1;
    int32_t lowerRow_ = -1;
};

// A stretch with the source rows that it has scaled last.
struct BlendedStretch {
    BlendedStretch(const Frame& frame, const PackedLayout& layout, int32_t first, const RowOps& ops)
        : stretch(ColumnsOf(frame), first, ops), cache(frame, layout, stretch) {}

    PackedStretch stretch;
    RowPairCache cache;
};

void BlendRow(const Frame& frame, const PackedLayout& layout, BlendedStretch& blended, int32_t y,
              Halves average, const RowOps& ops) {
    const PackedStretch& stretch = blended.stretch;
    const int32_t weight = frame.yMap->weights[y];
    const int32_t upperRow = frame.UpperRow(y);
    PackedRow& upper = blended.cache.Upper(upperRow);
    if (upperRow == frame.srcHeight - 1) {
        PackedRow row;
        std::memcpy(row.bytes, upper.bytes, static_cast<size_t>(stretch.RowBytes()));
        stretch.BlendBackLastRow(layout, frame.SrcRow(upperRow), weight, row);
        stretch.Pack(layout, PackOf(ops, average), row, frame.DstRow(y));
    } else {
        stretch.BlendPack(layout, BlendPackOf(ops, average), upper,
                          blended.cache.Lower(upperRow + 1), weight, frame.DstRow(y));
    }
}

// Source row of a destination row when only the width changes.
int32_t SameRow(const Frame&, int32_t y) { return y; }
int32_t MappedRow(const Frame& frame, int32_t y) { return frame.UpperRow(y); }

template <typename RowOf>
int32_t TakeRows(const Frame& frame, const PackedLayout& layout, Member member, RowOf rowOf) {
    const RowOpsScope ops(member);
    ForStretches<Stretch>(
        frame.dstWidth,
        [&](Stretch& stretch, int32_t first) {
            stretch.first = first;
            stretch.count = std::min(frame.dstWidth - first, kMaxPlanColumns);
            ops->packed422.PlanTake(stretch.plan,
                                    {frame.xMap->indices + first, nullptr, 0, stretch.count},
                                    layout, frame.srcStride);
            return stretch.count;
        },
        [&](std::span<const Stretch> stretches) {
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                for (const Stretch& stretch : stretches) {
                    ops->packed422.TakeColumns(frame.DstRow(y) + frame.Bytes(stretch.first),
                                               frame.SrcRow(rowOf(frame, y)), stretch.plan, layout);
                }
            }
        });
    return frame.dstHeight;
}

using PlannedStretch = std::optional<PackedStretch>;

// Calls operation(stretch, srcOffset, dstOffset) for the whole width at a fixed ratio.
template <typename Operation>
void ForFixedStretches(const Frame& frame, const FixedRatio& ratio, const RowOps& ops,
                       Operation operation) {
    ptrdiff_t src = 0;
    for (int32_t first = 0; first < frame.dstWidth; first += ratio.columns) {
        const int32_t count = std::min(frame.dstWidth - first, ratio.columns);
        PackedStretch stretch({ratio.indices, ratio.weights, count, ratio.srcColumns}, 0, ops);
        operation(stretch, src * frame.bytesPerPixel,
                  static_cast<ptrdiff_t>(first) * frame.bytesPerPixel);
        src += ratio.srcColumns;
    }
}

}  // namespace

int32_t TakePacked(const Frame& frame, const PackedLayout& layout, Member member) {
    return TakeRows(frame, layout, member, MappedRow);
}

int32_t TakePackedColumns(const Frame& frame, const PackedLayout& layout, Member member) {
    return TakeRows(frame, layout, member, SameRow);
}

int32_t BlendPacked(const Frame& frame, const PackedLayout& layout, Halves average, Member member) {
    const RowOpsScope ops(member);
    ForStretches<std::optional<BlendedStretch>>(
        frame.dstWidth,
        [&](std::optional<BlendedStretch>& item, int32_t first) {
            return item.emplace(frame, layout, first, *ops).stretch.Count();
        },
        [&](std::span<std::optional<BlendedStretch>> items) {
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                for (auto& item : items) BlendRow(frame, layout, *item, y, average, *ops);
            }
        });
    return frame.dstHeight;
}

int32_t BlendPackedColumns(const Frame& frame, const PackedLayout& layout, Halves average,
                           Member member) {
    const RowOpsScope ops(member);
    ForStretches<PlannedStretch>(
        frame.dstWidth,
        [&](PlannedStretch& stretch, int32_t first) {
            return stretch.emplace(ColumnsOf(frame), first, *ops).Count();
        },
        [&](std::span<const PlannedStretch> stretches) {
            PackedRow row;
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                for (const PlannedStretch& stretch : stretches) {
                    stretch->BlendRow(layout, frame.SrcRow(y), row);
                    stretch->Pack(layout, PackOf(*ops, average), row, frame.DstRow(y));
                }
            }
        });
    return frame.dstHeight;
}

int32_t TakePackedFixed(const Frame& frame, const FixedRatio& ratio, const PackedLayout& layout,
                        Member member) {
    const RowOpsScope ops(member);
    const auto source = [&](const Stretch& stretch) {
        return frame.Bytes(stretch.first / ratio.columns * ratio.srcColumns);
    };
    ForStretches<Stretch>(
        frame.dstWidth,
        [&](Stretch& stretch, int32_t first) {
            stretch.first = first;
            stretch.count = std::min(frame.dstWidth - first, ratio.columns);
            ops->packed422.PlanTake(stretch.plan, {ratio.indices, nullptr, 0, stretch.count},
                                    layout,
                                    frame.srcStride - static_cast<int32_t>(source(stretch)));
            return stretch.count;
        },
        [&](std::span<const Stretch> stretches) {
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                for (const Stretch& stretch : stretches) {
                    ops->packed422.TakeColumns(frame.DstRow(y) + frame.Bytes(stretch.first),
                                               frame.SrcRow(y) + source(stretch), stretch.plan,
                                               layout);
                }
            }
        });
    return frame.dstHeight;
}

int32_t BlendPackedThreeToTwo(const Frame& frame, const PackedLayout& layout, Member member) {
    const RowOpsScope ops(member);
    ForFixedStretches(
        frame, kThreeToTwo, *ops, [&](const PackedStretch& stretch, ptrdiff_t src, ptrdiff_t dst) {
            PackedRow row;
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                stretch.BlendRow(layout, frame.SrcRow(y) + src, row);
                stretch.Pack(layout, ops->packed422.PackDown, row, frame.DstRow(y) + dst);
            }
        });
    return frame.dstHeight;
}

// Deliberate, in every member: the second group of three takes its odd pixel's chroma from the
// first group's odd pixel.
//
// Deliberate, where whole positions are dimmed: a weight of 256 does not fit a byte, so pixels at
// whole positions come out as 255/256 of their luma.
int32_t BlendPackedFourToThree(const Frame& frame, const PackedLayout& layout,
                               WholePositions wholePositions, Member member) {
    const RowOpsScope ops(member);
    ForFixedStretches(
        frame, kFourToThree, *ops, [&](PackedStretch& stretch, ptrdiff_t src, ptrdiff_t dst) {
            stretch.RepeatChroma(3, 1, 6);
            PackedRow row;
            for (int32_t y = 0; y < frame.dstHeight; ++y) {
                stretch.BlendRow(layout, frame.SrcRow(y) + src, row);
                if (wholePositions == WholePositions::Dimmed) {
                    ops->packed422.DimThirds(stretch.Samples(row).luma, stretch.Count());
                }
                stretch.Pack(layout, ops->packed422.PackDown, row, frame.DstRow(y) + dst);
            }
        });
    return frame.dstHeight;
}

}  // namespace tavo
