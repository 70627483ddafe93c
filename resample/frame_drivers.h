// Frame drivers: loops that make a picture out of row operations. These serve the families that
// blend down first and across second: planes, RGB24 and 16-bit RGB. Packed 4:2:2 has its own.
// docs/kernels.md has the formulas.
//
// Each returns the number of rows written. Only NearestFrameRows writes row padding.

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

// The part of a picture that needs no edge test: its columns and rows have a next source column and
// row. It begins at the first column and row.
struct Interior {
    int32_t columns;
    int32_t rows;
};
Interior FindInterior(const Frame& frame);

// Rows y with first <= y < end.
struct Rows {
    int32_t first;
    int32_t end;
};

// Blends the columns right of the interior in some of its rows.
using EndRows = void (*)(const Frame& frame, Interior interior, Rows rows);

// Bilinear, both axes, of the rows of the interior. Edges differ by family: endRows is called for
// all these rows, some at a time, while they are in the cache.
void BlendInterior(const Frame& frame, Interior interior, PixelKind kind, KernelVariant variant,
                   EndRows endRows);

}  // namespace tavo
