// Frame drivers for planes, RGB24 and 16-bit RGB.

#include "resample/frame_drivers.h"

#include <algorithm>

#include "resample/column_blocks.h"

namespace tavo {
namespace {

// A row between the two blends, or a part of one. It stays in the first-level cache.
constexpr int32_t kBlendedRowBytes = 8192;
constexpr int32_t kSmallBlendedRowBytes = 4096;

// How many entries of a map come before those of the last source sample. Indices never decrease.
int32_t InnerEntries(const AxisMap& map, int32_t count, int32_t srcLength) {
    return static_cast<int32_t>(std::lower_bound(map.indices, map.indices + count, srcLength - 1) -
                                map.indices);
}

// As many columns from `first` on as one blended row has pixels for. At least one: a column needs
// two pixels.
ColumnRun ColumnsThatFit(const Frame& frame, int32_t first, int32_t end, int32_t rowBytes) {
    const int32_t* indices = frame.xMap->indices;
    const int32_t limit = indices[first] + rowBytes / frame.bytesPerPixel - 2;
    const int32_t* last = std::upper_bound(indices + first, indices + end, limit);
    return {indices + first, frame.xMap->weights + first, indices[first],
            static_cast<int32_t>(last - (indices + first))};
}

// The columns of the source that a block of columns is blended of.
struct SourceColumns {
    ptrdiff_t first;  // in bytes
    int32_t bytes;

    SourceColumns(const Frame& frame, const ColumnRun& columns)
        : first(frame.Bytes(columns.firstIndex)),
          bytes(static_cast<int32_t>(
              frame.Bytes(columns.indices[columns.count - 1] + 2 - columns.firstIndex))) {}
};

// Asks for source rows before they are read, each once and in their order. The processor does so by
// itself, but begins anew in each page of memory.
class RowsAhead {
  public:
    RowsAhead(const Frame& frame, const SourceColumns& columns, const PixelOps& ops, int32_t rows)
        : frame_(frame), columns_(columns), fetch_(ops.Fetch), rows_(rows) {}

    // While destination row `y` is made.
    void Fetch(int32_t y) {
        constexpr int32_t kRowsAhead = 2;
        const int32_t ahead = y + kRowsAhead;
        if (!fetch_ || ahead >= rows_) return;
        const int32_t last = frame_.LowerRow(ahead);
        for (next_ = std::max(next_, frame_.UpperRow(ahead)); next_ <= last; ++next_) {
            fetch_(frame_.SrcRow(next_) + columns_.first, columns_.bytes);
        }
    }

  private:
    const Frame& frame_;
    const SourceColumns columns_;
    void (*const fetch_)(const uint8_t* row, int32_t bytes);
    const int32_t rows_;  // of the destination that are made
    int32_t next_ = 0;
};

// Blends the two source rows of a destination row, then the columns of the result.
void BlendBlockRow(const Frame& frame, const ColumnBlock& block, const SourceColumns& source,
                   int32_t y, const PixelOps& ops, uint8_t* blendedRow) {
    uint8_t* const dst = frame.DstRow(y) + frame.Bytes(block.first);
    const uint8_t* const upper = frame.SrcRow(frame.UpperRow(y)) + source.first;
    const uint8_t* const lower = frame.SrcRow(frame.LowerRow(y)) + source.first;
    const int32_t weight = frame.yMap->weights[y];
    if (ops.BlendDownAndAcross) {
        ops.BlendDownAndAcross(dst, blendedRow, upper, lower, weight, source.bytes, block.plan);
        return;
    }
    ops.BlendRows(blendedRow, upper, lower, weight, source.bytes);
    ops.BlendColumns(dst, blendedRow, block.plan);
}

}  // namespace

int32_t NearestFrame(const Frame& frame, PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    const PixelOperation nearest = NearestOf(ops.Of(kind));
    const auto nearestRows = [&](const ColumnBlock& block) {
        const ptrdiff_t from = frame.Bytes(block.first);
        const auto bytes = static_cast<int32_t>(frame.Bytes(block.plan.columns.count));
        for (int32_t y = 0; y < frame.dstHeight; ++y) {
            if (y > 0 && frame.UpperRow(y) == frame.UpperRow(y - 1)) {
                ops->CopyRow(frame.DstRow(y) + from, frame.DstRow(y - 1) + from, bytes);
            } else {
                ApplyToRow(frame, block, y, frame.UpperRow(y), nearest);
            }
        }
    };
    ForColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth, nearest, nearestRows);
    return frame.dstHeight;
}

int32_t NearestFrameColumns(const Frame& frame, PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    ApplyToColumns(frame, MappedColumns{*frame.xMap}, frame.dstWidth, NearestOf(ops.Of(kind)),
                   NoRowTail);
    return frame.dstHeight;
}

// Deliberate: rows are copied with their padding, which all other scalers leave alone. Rows at a
// stated pitch have none.
int32_t NearestFrameRows(const Frame& frame, KernelVariant variant) {
    const RowOpsScope ops(variant);
    for (int32_t y = 0; y < frame.dstHeight; ++y) {
        ops->CopyRow(frame.DstRow(y), frame.SrcRow(frame.UpperRow(y)), frame.dstPaddedBytes);
    }
    return frame.dstHeight;
}

int32_t BlendFrameColumns(const Frame& frame, PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    const PixelOps& pixels = ops.Of(kind);
    const int32_t inner = InnerEntries(*frame.xMap, frame.dstWidth, frame.srcWidth);
    const auto endRow = [&](int32_t y) {
        const uint8_t* last = frame.SrcRow(y) + frame.Bytes(frame.srcWidth - 1);
        for (int32_t x = inner; x < frame.dstWidth; ++x) {
            pixels.BlendRows(frame.DstRow(y) + frame.Bytes(x), last, last, 0, frame.bytesPerPixel);
        }
    };
    if (inner > 0) {
        ApplyToColumns(frame, MappedColumns{*frame.xMap}, inner, BlendOf(pixels), endRow);
    } else {
        for (int32_t y = 0; y < frame.dstHeight; ++y) endRow(y);
    }
    return frame.dstHeight;
}

int32_t BlendFrameRows(const Frame& frame, PixelKind kind, KernelVariant variant) {
    const RowOpsScope ops(variant);
    for (int32_t y = 0; y < frame.dstHeight; ++y) {
        ops.Of(kind).BlendRows(frame.DstRow(y), frame.SrcRow(frame.UpperRow(y)),
                               frame.SrcRow(frame.LowerRow(y)), frame.yMap->weights[y],
                               frame.dstRowBytes);
    }
    return frame.dstHeight;
}

Interior FindInterior(const Frame& frame) {
    return {InnerEntries(*frame.xMap, frame.dstWidth, frame.srcWidth),
            InnerEntries(*frame.yMap, frame.dstHeight, frame.srcHeight)};
}

void BlendInterior(const Frame& frame, Interior interior, PixelKind kind, KernelVariant variant,
                   EndRows endRows) {
    // Few enough to be in the cache still.
    constexpr int32_t kRowsAtOnce = 16;
    const RowOpsScope ops(variant);
    WorkMemory memory;
    uint8_t* const blendedRow = memory.Bytes();
    const int32_t rowBytes = memory.IsShared() ? kBlendedRowBytes : kSmallBlendedRowBytes;
    const int32_t most = PlannedBytes(memory.Size() - rowBytes) / frame.bytesPerPixel;
    ColumnBlock block;
    block.plan.tables = memory.Bytes() + rowBytes;
    const int32_t end = interior.rows > 0 ? interior.columns : 0;
    for (int32_t first = 0; first < end; first = block.End()) {
        const ColumnRun columns =
            ColumnsThatFit(frame, first, std::min(end, first + most), rowBytes);
        block.first = first;
        block.source = columns.firstIndex;
        ops.Of(kind).PlanBlend(block.plan, columns, rowBytes);
        const SourceColumns source(frame, columns);
        RowsAhead rowsAhead(frame, source, ops.Of(kind), interior.rows);
        for (int32_t y = 0; y < interior.rows; ++y) {
            rowsAhead.Fetch(y);
            BlendBlockRow(frame, block, source, y, ops.Of(kind), blendedRow);
            const bool isEnd = y % kRowsAtOnce == kRowsAtOnce - 1 || y == interior.rows - 1;
            if (block.End() == end && isEnd) {
                endRows(frame, interior, {y - y % kRowsAtOnce, y + 1});
            }
        }
    }
    if (interior.columns == 0) endRows(frame, interior, {0, interior.rows});
}

}  // namespace tavo
