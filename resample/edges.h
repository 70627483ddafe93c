// The edges of a bilinear picture: the columns and rows that have no next one. Plain code, one
// pixel at a time, for any kind of pixel (pixel_blend.h). docs/kernels.md has the formulas.

#pragma once

#include "resample/frame_drivers.h"
#include "resample/row_ops/pixel_blend.h"

namespace tavo {
namespace {

// Columns that read the last source column: the pixel is its own right neighbour.
template <typename Pixel>
void BlendLastColumns(const Frame& frame, Interior interior, Rows rows) {
    const ptrdiff_t offset = static_cast<ptrdiff_t>(frame.srcWidth - 1) * Pixel::kSize;
    for (int32_t y = rows.first; y < rows.end; ++y) {
        const uint8_t* upper = frame.SrcRow(frame.UpperRow(y)) + offset;
        const uint8_t* lower = frame.SrcRow(frame.LowerRow(y)) + offset;
        uint8_t* row = frame.DstRow(y);
        for (int32_t x = interior.columns; x < frame.dstWidth; ++x) {
            Pixel::template Blend<Rounding::Down>(row + x * Pixel::kSize, upper, lower,
                                                  frame.yMap->weights[y]);
        }
    }
}

// Rows that read the last source row, in the first `columns` columns, which have a next one.
//
// Deliberate: the lower right pixel is the upper left one. So the right-hand value blends from the
// next column's pixel back to the column's own.
template <typename Pixel>
void BlendLastRows(const Frame& frame, int32_t firstRow, int32_t columns) {
    const uint8_t* source = frame.SrcRow(frame.srcHeight - 1);
    for (int32_t y = firstRow; y < frame.dstHeight; ++y) {
        uint8_t* row = frame.DstRow(y);
        for (int32_t x = 0; x < columns; ++x) {
            const uint8_t* left =
                source + static_cast<ptrdiff_t>(frame.xMap->indices[x]) * Pixel::kSize;
            uint8_t right[Pixel::kSize];
            Pixel::template Blend<Rounding::Down>(right, left + Pixel::kSize, left,
                                                  frame.yMap->weights[y]);
            Pixel::template Blend<Rounding::Down>(row + x * Pixel::kSize, left, right,
                                                  frame.xMap->weights[x]);
        }
    }
}

// A whole picture, for families whose edges have no other departures.
template <typename Pixel>
int32_t BlendFrame(const Frame& frame, PixelKind kind, KernelVariant variant) {
    const Interior interior = FindInterior(frame);
    BlendInterior(frame, interior, kind, variant, BlendLastColumns<Pixel>);
    BlendLastColumns<Pixel>(frame, interior, {interior.rows, frame.dstHeight});
    BlendLastRows<Pixel>(frame, interior.rows, interior.columns);
    return frame.dstHeight;
}

}  // namespace
}  // namespace tavo
