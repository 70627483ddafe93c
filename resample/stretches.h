// Destination columns are planned in stretches. Several of them are planned before the rows are
// gone through, so that memory is read and written in long runs.

#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "resample/fixed_ratio.h"
#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// Enough for the widths of today's pictures; their tables still fit the caches.
inline constexpr int32_t kStretchesAtOnce = 4;

// Prepares stretches by prepare(item, first), which returns the number of columns it took, and
// calls work(items) for as many as there may be at once, until all `columns` are done.
template <typename Item, typename Prepare, typename Work>
void ForStretches(int32_t columns, Prepare prepare, Work work) {
    Item items[kStretchesAtOnce];
    for (int32_t first = 0; first < columns;) {
        int32_t count = 0;
        for (; count < kStretchesAtOnce && first < columns; ++count) {
            first += prepare(items[count], first);
        }
        work(std::span<Item>(items, static_cast<size_t>(count)));
    }
}

// Neighbouring destination columns and what was prepared for them.
struct Stretch {
    int32_t first;
    int32_t source;  // the source column that the plan's rows begin with
    ColumnPlan plan;

    int32_t End() const { return first + plan.columns.count; }
};

// Where a frame's axis map takes columns from. The plans' rows are whole source rows.
struct MappedColumns {
    const AxisMap& map;

    ColumnRun Run(int32_t first, int32_t end) const {
        return {map.indices + first, map.weights + first, 0,
                std::min(end - first, kMaxPlanColumns)};
    }
    int32_t Source(int32_t /*first*/) const { return 0; }
};

// Where a fixed ratio takes them from, over and over.
struct RatioColumns {
    const FixedRatio& ratio;

    ColumnRun Run(int32_t first, int32_t end) const {
        return {ratio.indices, ratio.weights, 0, std::min(end - first, ratio.columns)};
    }
    int32_t Source(int32_t first) const { return ratio.SourceOf(first); }
};

// Plans the first `end` columns, and calls work(stretches) for some of them at a time. What is
// planned is operation.Plan(plan, run, rowBytes).
template <typename Columns, typename Operation, typename Work>
void ForColumns(const Frame& frame, const Columns& columns, int32_t end, const Operation& operation,
                Work work) {
    ForStretches<Stretch>(
        end,
        [&](Stretch& stretch, int32_t first) {
            stretch.first = first;
            stretch.source = columns.Source(first);
            operation.Plan(stretch.plan, columns.Run(first, end),
                           frame.srcStride - static_cast<int32_t>(frame.Bytes(stretch.source)));
            return stretch.plan.columns.count;
        },
        work);
}

// Applies operation.Apply(dst, row, plan) to the planned columns of a row.
template <typename Operation>
void ApplyToRow(const Frame& frame, std::span<const Stretch> stretches, int32_t dstY, int32_t srcY,
                const Operation& operation) {
    for (const Stretch& stretch : stretches) {
        operation.Apply(frame.DstRow(dstY) + frame.Bytes(stretch.first),
                        frame.SrcRow(srcY) + frame.Bytes(stretch.source), stretch.plan);
    }
}

// Does both to the first `end` columns of all rows, where only the width changes; endRow(y) follows
// on each row.
template <typename Columns, typename Operation, typename EndRow>
void ApplyToColumns(const Frame& frame, const Columns& columns, int32_t end,
                    const Operation& operation, EndRow endRow) {
    ForColumns(frame, columns, end, operation, [&](std::span<const Stretch> stretches) {
        const bool isLast = stretches.back().End() == end;
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            ApplyToRow(frame, stretches, y, y, operation);
            if (isLast) endRow(y);
        }
    });
}
inline void EndsAsItIs(int32_t /*y*/) {}

// A plan and what it is applied by, as ForColumns wants them.
struct PixelOperation {
    PixelOps::Plan Plan;
    PixelOps::Apply Apply;
};
inline PixelOperation TakeOf(const PixelOps& ops) { return {ops.PlanTake, ops.TakeColumns}; }
inline PixelOperation BlendOf(const PixelOps& ops) { return {ops.PlanBlend, ops.BlendColumns}; }
inline PixelOperation BlendUpOf(const PixelOps& ops) { return {ops.PlanBlend, ops.BlendColumnsUp}; }

}  // namespace tavo
