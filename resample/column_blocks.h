// Destination columns are planned in blocks, and each block is applied to all rows. A block is as
// long as there is memory for its plan: long runs are read and written faster.

#pragma once

#include <algorithm>
#include <cstdint>

#include "resample/fixed_ratio.h"
#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"
#include "resample/work_memory.h"

namespace tavo {

// Neighbouring destination columns and their plan.
struct ColumnBlock {
    int32_t first;
    int32_t source;  // the source column that the plan's rows begin with
    ColumnPlan plan;

    int32_t End() const { return first + plan.columns.count; }
};

// Columns by the frame's axis map. Indices count from the first pixel of the source row.
struct MappedColumns {
    const AxisMap& map;

    ColumnRun Run(int32_t first, int32_t count) const {
        return {map.indices + first, map.weights + first, 0, count};
    }
    int32_t Source(int32_t /*first*/) const { return 0; }
};

// Columns by a fixed ratio, whose block repeats.
struct RatioColumns {
    const FixedRatio& ratio;

    ColumnRun Run(int32_t /*first*/, int32_t count) const {
        return {ratio.indices, ratio.weights, 0, std::min(count, ratio.columns)};
    }
    int32_t Source(int32_t first) const { return ratio.SourceOf(first); }
};

// Plans the first `end` columns by operation.Plan(plan, run, rowBytes), block by block, and calls
// work(block) for each.
template <typename Columns, typename Operation, typename Work>
void ForColumns(const Frame& frame, const Columns& columns, int32_t end, const Operation& operation,
                Work work) {
    WorkMemory memory;
    // A multiple of 6 columns: whole groups of both fixed ratios.
    const int32_t most = PlannedBytes(memory.Size()) / (frame.bytesPerPixel * 6) * 6;
    ColumnBlock block;
    block.plan.tables = memory.Bytes();
    for (int32_t first = 0; first < end; first = block.End()) {
        block.first = first;
        block.source = columns.Source(first);
        operation.Plan(block.plan, columns.Run(first, std::min(end - first, most)),
                       frame.srcStride - static_cast<int32_t>(frame.Bytes(block.source)));
        work(block);
    }
}

// Applies operation.Apply(dst, row, plan) to the planned columns of a row.
template <typename Operation>
void ApplyToRow(const Frame& frame, const ColumnBlock& block, int32_t dstY, int32_t srcY,
                const Operation& operation) {
    operation.Apply(frame.DstRow(dstY) + frame.Bytes(block.first),
                    frame.SrcRow(srcY) + frame.Bytes(block.source), block.plan);
}

// Plans the first `end` columns and applies the operation to all rows, where only the width
// changes. rowTail(y) is called last on each row.
template <typename Columns, typename Operation, typename RowTail>
void ApplyToColumns(const Frame& frame, const Columns& columns, int32_t end,
                    const Operation& operation, RowTail rowTail) {
    ForColumns(frame, columns, end, operation, [&](const ColumnBlock& block) {
        const bool isLast = block.End() == end;
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            ApplyToRow(frame, block, y, y, operation);
            if (isLast) rowTail(y);
        }
    });
}
inline void NoRowTail(int32_t /*y*/) {}

// What ForColumns needs to know of an operation.
struct PixelOperation {
    PixelOps::Plan Plan;
    PixelOps::Apply Apply;
};
inline PixelOperation NearestOf(const PixelOps& ops) {
    return {.Plan = ops.PlanNearest, .Apply = ops.NearestColumns};
}
inline PixelOperation BlendOf(const PixelOps& ops) {
    return {.Plan = ops.PlanBlend, .Apply = ops.BlendColumns};
}
inline PixelOperation BlendUpOf(const PixelOps& ops) {
    return {.Plan = ops.PlanBlend, .Apply = ops.BlendColumnsUp};
}

}  // namespace tavo
