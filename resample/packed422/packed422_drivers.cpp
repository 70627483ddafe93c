// Frame drivers of packed 4:2:2.

#include "resample/packed422/packed422_drivers.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "resample/column_blocks.h"
#include "resample/packed422/packed422_column_block.h"

namespace tavo {
namespace {

Packed422Ops::Pack PackOf(const RowOps& ops, Rounding rounding) {
    return rounding == Rounding::Up ? ops.packed422.PackUp : ops.packed422.PackDown;
}

Packed422Ops::BlendPack BlendPackOf(const RowOps& ops, Rounding rounding) {
    return rounding == Rounding::Up ? ops.packed422.BlendPackUp : ops.packed422.BlendPackDown;
}

PackedColumns ColumnsOf(const Frame& frame) {
    return {frame.xMap->indices, frame.xMap->weights, frame.dstWidth, frame.srcWidth};
}

// The two source rows of a destination row, blended across. They are kept while destination rows
// share them.
class RowPairCache {
  public:
    RowPairCache(const Frame& frame, const PackedLayout& layout, const PackedColumnBlock& block,
                 const PackedMemory& memory)
        : frame_(frame),
          layout_(layout),
          block_(block),
          upper_(memory.rows[0]),
          lower_(memory.rows[1]) {}
    RowPairCache(const RowPairCache&) = delete;
    RowPairCache& operator=(const RowPairCache&) = delete;

    // Rows are asked for in ascending order: the lower row may be the upper one next.
    uint8_t* Upper(int32_t y) {
        if (lowerRow_ == y) {
            std::swap(upper_, lower_);
            std::swap(upperRow_, lowerRow_);
        }
        return Load(y, upper_, upperRow_);
    }
    uint8_t* Lower(int32_t y) { return Load(y, lower_, lowerRow_); }

    // A copy of the upper row in place of the lower one.
    uint8_t* CopyOfUpper(int32_t y) {
        const uint8_t* upper = Upper(y);
        std::memcpy(lower_, upper, static_cast<size_t>(block_.RowBytes()));
        lowerRow_ = -1;
        return lower_;
    }

  private:
    uint8_t* Load(int32_t y, uint8_t* row, int32_t& held) {
        if (held != y) block_.BlendRow(layout_, frame_.SrcRow(y), row);
        held = y;
        return row;
    }

    const Frame& frame_;
    const PackedLayout& layout_;
    const PackedColumnBlock& block_;
    uint8_t* upper_;
    uint8_t* lower_;
    int32_t upperRow_ = -1;
    int32_t lowerRow_ = -1;
};

void BlendRow(const Frame& frame, const PackedLayout& layout, const PackedColumnBlock& block,
              RowPairCache& rows, int32_t y, Rounding rounding, const RowOps& ops) {
    const int32_t weight = frame.yMap->weights[y];
    const int32_t upperRow = frame.UpperRow(y);
    if (upperRow == frame.srcHeight - 1) {
        uint8_t* const row = rows.CopyOfUpper(upperRow);
        block.BlendBackLastRow(layout, frame.SrcRow(upperRow), weight, row);
        block.Pack(layout, PackOf(ops, rounding), row, frame.DstRow(y));
    } else {
        uint8_t* const upper = rows.Upper(upperRow);
        block.BlendPack(layout, BlendPackOf(ops, rounding), upper, rows.Lower(upperRow + 1), weight,
                        frame.DstRow(y));
    }
}

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

// Calls change(samples, columns) on each row before it is packed.
template <typename Change>
int32_t BlendFixed(const Frame& frame, const FixedRatio& ratio, RepeatedChroma repeated,
                   const PackedLayout& layout, const RowOps& ops, Change change) {
    WorkMemory workMemory;
    const PackedMemory memory(workMemory);
    int32_t count = 0;
    for (int32_t first = 0; first < frame.dstWidth; first += count) {
        const int32_t columns = std::min(frame.dstWidth - first, ratio.columns);
        PackedColumnBlock block({ratio.indices, ratio.weights, columns, ratio.srcColumns}, 0,
                                repeated, memory, ops);
        count = block.Count();
        const ptrdiff_t source = frame.Bytes(ratio.SourceOf(first));
        uint8_t* const row = memory.rows[0];
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            block.BlendRow(layout, frame.SrcRow(y) + source, row);
            change(block.Samples(row), count);
            block.Pack(layout, ops.packed422.PackDown, row, frame.DstRow(y) + frame.Bytes(first));
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
            BlendRow(frame, layout, block, rows, y, rounding, *ops);
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
        uint8_t* const row = memory.rows[0];
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            block.BlendRow(layout, frame.SrcRow(y), row);
            block.Pack(layout, PackOf(*ops, rounding), row, frame.DstRow(y));
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
    return BlendFixed(frame, kThreeToTwo, kNoneRepeated, layout, *ops,
                      [](const PackedSamples&, int32_t) {});
}

// Deliberate: of every six columns, column 3 has the chroma of column 1 in place of its own.
//
// Deliberate: where whole positions are dimmed, their luma comes out as 255/256 of itself, as if by
// a weight that must fit a byte.
int32_t BlendPackedFourToThree(const Frame& frame, const PackedLayout& layout,
                               WholePositions wholePositions, KernelVariant variant) {
    const RowOpsScope ops(variant);
    const auto dim = [&](const PackedSamples& samples, int32_t columns) {
        if (wholePositions == WholePositions::Dimmed) {
            ops->packed422.DimThirds(samples.luma, columns);
        }
    };
    return BlendFixed(frame, kFourToThree, {3, 1, 6}, layout, *ops, dim);
}

}  // namespace tavo
