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

// Nearest neighbour of packed rows, as ForColumns wants it.
struct PackedTake {
    const Packed422Ops& ops;
    const PackedLayout& layout;

    void Plan(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) const {
        ops.PlanTake(plan, columns, layout, rowBytes);
    }
    void Apply(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) const {
        ops.TakeColumns(dst, row, plan, layout);
    }
};

// A stretch of a fixed ratio, and where it lies in the rows.
struct FixedStretch {
    FixedStretch(const Frame& frame, const FixedRatio& ratio, int32_t first, const RowOps& ops)
        : stretch({ratio.indices, ratio.weights, std::min(frame.dstWidth - first, ratio.columns),
                   ratio.srcColumns},
                  0, ops),
          source(frame.Bytes(ratio.SourceOf(first))),
          destination(frame.Bytes(first)) {}

    PackedStretch stretch;
    ptrdiff_t source;
    ptrdiff_t destination;
};

// prepare(stretch) is called before the first row, change(samples, columns) on each row before its
// samples are packed.
template <typename Prepare, typename Change>
int32_t BlendFixed(const Frame& frame, const FixedRatio& ratio, const PackedLayout& layout,
                   const RowOps& ops, Prepare prepare, Change change) {
    using Item = std::optional<FixedStretch>;
    const auto plan = [&](Item& item, int32_t first) {
        prepare(item.emplace(frame, ratio, first, ops).stretch);
        return item->stretch.Count();
    };
    const auto blendRow = [&](const FixedStretch& item, int32_t y) {
        const PackedStretch& stretch = item.stretch;
        PackedRow row;
        stretch.BlendRow(layout, frame.SrcRow(y) + item.source, row);
        change(stretch.Samples(row), stretch.Count());
        stretch.Pack(layout, ops.packed422.PackDown, row, frame.DstRow(y) + item.destination);
    };
    ForStretches<Item>(frame.dstWidth, plan, [&](std::span<const Item> items) {
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            for (const Item& item : items) blendRow(*item, y);
        }
    });
    return frame.dstHeight;
}

}  // namespace

int32_t TakePacked(const Frame& frame, const PackedLayout& layout, Member member) {
    const RowOpsScope ops(member);
    const PackedTake take = {ops->packed422, layout};
    const auto takeRows = [&](std::span<const Stretch> stretches) {
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            ApplyToRow(frame, stretches, y, frame.UpperRow(y), take);
        }
    };
    ForColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth, take, takeRows);
    return frame.dstHeight;
}

int32_t TakePackedColumns(const Frame& frame, const PackedLayout& layout, Member member) {
    const RowOpsScope ops(member);
    ApplyToColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth,
                   PackedTake{ops->packed422, layout}, EndsAsItIs);
    return frame.dstHeight;
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
    using PlannedStretch = std::optional<PackedStretch>;
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
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth, PackedTake{ops->packed422, layout},
                   EndsAsItIs);
    return frame.dstHeight;
}

int32_t BlendPackedThreeToTwo(const Frame& frame, const PackedLayout& layout, Member member) {
    const RowOpsScope ops(member);
    return BlendFixed(
        frame, kThreeToTwo, layout, *ops, [](PackedStretch&) {},
        [](const PackedSamples&, int32_t) {});
}

// Deliberate, in every member: the second group of three takes its odd pixel's chroma from the
// first group's odd pixel.
//
// Deliberate, where whole positions are dimmed: a weight of 256 does not fit a byte, so pixels at
// whole positions come out as 255/256 of their luma.
int32_t BlendPackedFourToThree(const Frame& frame, const PackedLayout& layout,
                               WholePositions wholePositions, Member member) {
    const RowOpsScope ops(member);
    return BlendFixed(
        frame, kFourToThree, layout, *ops,
        [](PackedStretch& stretch) { stretch.RepeatChroma(3, 1, 6); },
        [&](const PackedSamples& samples, int32_t columns) {
            if (wholePositions == WholePositions::Dimmed) {
                ops->packed422.DimThirds(samples.luma, columns);
            }
        });
}

}  // namespace tavo
