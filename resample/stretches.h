// Destination columns are planned in stretches. Several of them are planned before the rows are
// gone through, so that memory is read and written in long runs.

#pragma once

#include <cstdint>
#include <span>

#include "resample/row_ops.h"

namespace tavo {

// Neighbouring destination columns and what was prepared for them.
struct Stretch {
    int32_t first;
    int32_t count;
    ColumnPlan plan;
};

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

}  // namespace tavo
