// Reductions of the width by a fixed ratio: 640 to 480 and 720 to 480. docs/kernels.md has the
// formulas.
//
// Deliberate: the weights lack the quarter that axis maps add when shrinking.

#pragma once

#include "resample/formulas.h"
#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// A ratio as the constant columns of one block. Longer rows repeat the block.
struct FixedRatio {
    const int32_t* indices;
    const uint8_t* weights;  // null where nothing is blended
    int32_t columns;         // of the block: whole groups
    int32_t srcColumns;      // of the source, that the block is made from

    // The first source column of the block that holds a destination column.
    int32_t SourceOf(int32_t column) const { return column / columns * srcColumns; }
};

// Groups of four pixels become three, at 0, 1 1/3 and 2 2/3.
extern const FixedRatio kFourToThree;
// Groups of three pixels become two, at 0 and 1 1/2.
extern const FixedRatio kThreeToTwo;
// Groups of four RGB24 pixels become three, as rows of single bytes.
//
// Deliberate: the third pixel has blue and green of the third source pixel and red of the fourth.
extern const FixedRatio kFourToThreeMixedRgb24;

// Nearest neighbour: the pixel at or before each position.
int32_t NearestFrameFixed(const Frame& frame, const FixedRatio& ratio, PixelKind kind,
                          KernelVariant variant);

// Bilinear.
int32_t BlendFrameFixed(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                        PixelKind kind, KernelVariant variant);

// The same, but every row ends on a copy of the last source pixel but one.
int32_t BlendFrameFixedCopyingLast(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                                   PixelKind kind, KernelVariant variant);

}  // namespace tavo
