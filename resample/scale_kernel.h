// The contract that all frame kernels share: their arguments and the axis maps.

#pragma once

#include <cstdint>

namespace tavo {

// One axis of a change of size. Entry i reads source sample indices[i] and, in bilinear kernels,
// the next one. docs/kernels.md has the formulas.
struct AxisMap {
    int32_t count;     // number of entries: max(abs(dstLen), 1)
    int32_t srcSpan;   // trunc(count * ratio): about the length of the source
    int32_t fracBits;  // always 8: weights are fractions in 1/256
    uint8_t* weights;  // [count]
    int32_t* indices;  // [count], never decreasing

    // In a horizontal map: bytes from one row to the next, or 0 where width and format say it.
    int32_t srcPitch = 0;
    int32_t dstPitch = 0;
};

// Scales one picture, or one plane of a planar picture, without changing its format.
//   dst        first byte of the destination; row strides follow from width and format unless the
//              horizontal map states a pitch, and then bytes between the rows are left alone
//   src        first byte of the source, always read top-down
//   dstWidth   pixels
//   dstHeight  rows; negative: destination row y is stored at row abs(dstHeight) - 1 - y
//   srcWidth   pixels
//   srcHeight  rows; only its magnitude counts
//   xMap       at least dstWidth entries, all below srcWidth; may state pitches
//   yMap       at least abs(dstHeight) entries, all below abs(srcHeight)
// Returns the number of rows written, abs(dstHeight). Nothing is tested and nothing is allocated:
// sizes and maps must fit the buffers. Any thread; source and destination must not overlap.
using ScaleKernel = int32_t (*)(uint8_t* dst, const uint8_t* src, int32_t dstWidth,
                                int32_t dstHeight, int32_t srcWidth, int32_t srcHeight,
                                const AxisMap* xMap, const AxisMap* yMap);

// Copies a picture or plane of unchanged size. A negative height writes the destination bottom-up.
// bitsPerPixel is ignored by the plane copies. Returns the number of rows written, abs(height).
using CopyKernel = int32_t (*)(uint8_t* dst, const uint8_t* src, int32_t width, int32_t height,
                               int32_t bitsPerPixel);

}  // namespace tavo

// Spells a kernel's signature once; the name stands in full where it is declared and defined.
#define TAVO_SCALE_KERNEL(name)                                                         \
    int32_t name(uint8_t* dst, const uint8_t* src, int32_t dstWidth, int32_t dstHeight, \
                 int32_t srcWidth, int32_t srcHeight, const tavo::AxisMap* xMap,        \
                 const tavo::AxisMap* yMap)
// The names of these arguments, to hand them on.
#define TAVO_SCALE_ARGUMENTS dst, src, dstWidth, dstHeight, srcWidth, srcHeight, xMap, yMap

#define TAVO_COPY_KERNEL(name)                                                    \
    int32_t name(uint8_t* dst, const uint8_t* src, int32_t width, int32_t height, \
                 int32_t bitsPerPixel)
