// Frame drivers of packed 4:2:2.

#include "resample/packed422/packed422_drivers.h"

#include <algorithm>
#include <utility>

#include "resample/column_blocks.h"
#include "resample/packed422/packed422_column_block.h"

namespace tavo {
namespace {

PackedColumns ColumnsOf(const Frame& frame) {
    return {frame.xMap->indices, frame.xMap->weights, frame.dstWidth, frame.srcWidth,
            frame.srcWidth};
}

// The two source rows of a destination row, blended across. They are kept while destination rows
// share them.
class RowPairCache {
  public:
    RowPairCache(const Frame& frame, const PackedLayout& layout, PackedColumnBlock& block,
                 const PackedMemory& memory)
        : frame_(frame),
          layout_(layout),
          block_(block),
          upper_(memory.rows[0]),
          lower_(memory.rows[1]) {}
    RowPairCache(const RowPairCache&) = delete;
    RowPairCache& operator=(const RowPairCache&) = delete;

    // Rows are asked for in ascending order: the lower row may be the upper one next. The last one
    // lies behind the source.
    uint8_t* Upper(int32_t y) {
        if (lowerRow_ == y) {
            std::swap(upper_, lower_);
            std::swap(upperRow_, lowerRow_);
        }
        return Load(y, upper_, upperRow_);
    }
    uint8_t* Lower(int32_t y) { return Load(y, lower_, lowerRow_); }

  private:
    uint8_t* Load(int32_t y, uint8_t* row, int32_t& held) {
        if (held == y) return row;
        if (y < frame_.srcHeight) {
            block_.BlendRow(layout_, frame_.SrcRow(y), row);
        } else {
            block_.BlendRowBelowLast(layout_, frame_.SrcRow(y - 1), row);
        }
        held = y;
        return row;
    }

    const Frame& frame_;
    const PackedLayout& layout_;
    PackedColumnBlock& block_;
    uint8_t* upper_;
    uint8_t* lower_;
    int32_t upperRow_ = -1;
    int32_t lowerRow_ = -1;
};

// Nearest neighbour, as ForColumns wants it.
struct PackedNearest {
    const Packed422Ops& ops;
    const PackedLayout& layout;

    void Plan(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) const {
        ops.PlanNearest(plan, columns, layout, rowBytes);
    }
    void Apply(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) const {
        ops.NearestColumns(dst, row, plan, layout);
    }
};

int32_t BlendFixed(const Frame& frame, const FixedRatio& ratio, RepeatedChroma repeated,
                   WholePositions wholePositions, const PackedLayout& layout, const RowOps& ops) {
    WorkMemory workMemory;
    const PackedMemory memory(workMemory);
    int32_t count = 0;
    for (int32_t first = 0; first < frame.dstWidth; first += count) {
        const int32_t columns = std::min(frame.dstWidth - first, ratio.columns);
        const int32_t srcFirst = ratio.SourceOf(first);
        PackedColumnBlock block(
            {ratio.indices, ratio.weights, columns, ratio.srcColumns, frame.srcWidth - srcFirst}, 0,
            repeated, memory, ops);
        count = block.Count();
        const ptrdiff_t source = frame.Bytes(srcFirst);
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            block.ScaleRow(layout, Rounding::Down, wholePositions, frame.SrcRow(y) + source,
                           frame.DstRow(y) + frame.Bytes(first));
        }
    }
    return frame.dstHeight;
}

}  // namespace

int32_t NearestPacked(const Frame& frame, const PackedLayout& layout, KernelVariant variant) {
    const RowOpsScope ops(variant);
    const PackedNearest nearest = {ops->packed422, layout};
    const auto nearestRows = [&](const ColumnBlock& block) {
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            ApplyToRow(frame, block, y, frame.UpperRow(y), nearest);
        }
    };
    ForColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth, nearest, nearestRows);
    return frame.dstHeight;
}

int32_t NearestPackedColumns(const Frame& frame, const PackedLayout& layout,
                             KernelVariant variant) {
    const RowOpsScope ops(variant);
    ApplyToColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth,
                   PackedNearest{ops->packed422, layout}, NoRowTail);
    return frame.dstHeight;
}

int32_t BlendPacked(const Frame& frame, const PackedLayout& layout, Rounding rounding,
                    KernelVariant variant) {
    const RowOpsScope ops(variant);
    WorkMemory workMemory;
    const PackedMemory memory(workMemory);
    int32_t count = 0;
    for (int32_t first = 0; first < frame.dstWidth; first += count) {
        PackedColumnBlock block(ColumnsOf(frame), first, kNoneRepeated, memory, *ops);
        count = block.Count();
        RowPairCache rows(frame, layout, block, memory);
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            const int32_t upperRow = frame.UpperRow(y);
            uint8_t* const upper = rows.Upper(upperRow);
            block.BlendPack(layout, rounding, upper, rows.Lower(upperRow + 1),
                            frame.yMap->weights[y], frame.DstRow(y));
        }
    }
    return frame.dstHeight;
}

int32_t BlendPackedColumns(const Frame& frame, const PackedLayout& layout, Rounding rounding,
                           KernelVariant variant) {
    const RowOpsScope ops(variant);
    WorkMemory workMemory;
    const PackedMemory memory(workMemory);
    int32_t count = 0;
    for (int32_t first = 0; first < frame.dstWidth; first += count) {
        PackedColumnBlock block(ColumnsOf(frame), first, kNoneRepeated, memory, *ops);
        count = block.Count();
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            block.ScaleRow(layout, rounding, WholePositions::Copied, frame.SrcRow(y),
                           frame.DstRow(y));
        }
    }
    return frame.dstHeight;
}

int32_t NearestPackedFixed(const Frame& frame, const FixedRatio& ratio, const PackedLayout& layout,
                           KernelVariant variant) {
    const RowOpsScope ops(variant);
    ApplyToColumns(frame, RatioColumns{ratio}, frame.dstWidth,
                   PackedNearest{ops->packed422, layout}, NoRowTail);
    return frame.dstHeight;
}

int32_t BlendPackedThreeToTwo(const Frame& frame, const PackedLayout& layout,
                              KernelVariant variant) {
    const RowOpsScope ops(variant);
    return BlendFixed(frame, kThreeToTwo, kNoneRepeated, WholePositions::Copied, layout, *ops);
}

// Deliberate: of every six columns, column 3 has the chroma of column 1 in place of its own.
//
// Deliberate: where whole positions are dimmed, their luma comes out as 255/256 of itself, as if by
// a weight that must fit a byte.
int32_t BlendPackedFourToThree(const Frame& frame, const PackedLayout& layout,
                               WholePositions wholePositions, KernelVariant variant) {
    const RowOpsScope ops(variant);
    return BlendFixed(frame, kFourToThree, {3, 1, 6}, wholePositions, layout, *ops);
}

}  // namespace tavo
