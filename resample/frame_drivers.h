// The frame drivers: how whole pictures are made of row operations. They serve every family whose
// pixels are blended downward first and sideways second; packed 4:2:2 has drivers of its own.
// Each returns the number of rows written. Row padding is left alone, but for NearestFrameRows.

#pragma once

#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// Nearest neighbour: both axes, width only, height only.
int32_t NearestFrame(const Frame& frame, PixelKind kind, KernelVariant variant);
int32_t NearestFrameColumns(const Frame& frame, PixelKind kind, KernelVariant variant);
int32_t NearestFrameRows(const Frame& frame, KernelVariant variant);

// Bilinear, width only. At the last source column a pixel is its own neighbour.
int32_t BlendFrameColumns(const Frame& frame, PixelKind kind, KernelVariant variant);

// Bilinear, height only. The last source row is its own neighbour.
int32_t BlendFrameRows(const Frame& frame, PixelKind kind, KernelVariant variant);

// The part of a picture whose columns and rows all have a next source column and row, so that it
// needs no edge test. It begins at the first column and row.
struct Interior {
    int32_t columns;
    int32_t rows;
};
Interior FindInterior(const Frame& frame);

// Rows from `first` on, before `end`.
struct Rows {
    int32_t first;
    int32_t end;
};

// Blends the columns right of the interior in some of its rows.
using EndRows = void (*)(const Frame& frame, Interior interior, Rows rows);

// Bilinear, both axes, of the rows of the interior. The edges are the family's: endRows is called
// for all of these rows, some at a time, soon after they were done.
void BlendInterior(const Frame& frame, Interior interior, PixelKind kind, KernelVariant variant,
                   EndRows endRows);

}  // namespace tavo
