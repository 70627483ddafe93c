// The frequent reductions of the width by a fixed ratio, 640 to 480 and 720 to 480. Their columns
// and weights are constants, without the quarter that axis maps add when shrinking.

#pragma once

#include "resample/formulas.h"
#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// A ratio as constant columns for a block of row; longer rows repeat it.
struct FixedRatio {
    const int32_t* indices;
    const uint8_t* weights;  // null where nothing is blended
    int32_t columns;         // of one block, a whole number of groups
    int32_t srcColumns;      // that they are made from

    // The source column that the block of a destination column begins with.
    int32_t SourceOf(int32_t column) const { return column / columns * srcColumns; }
};

// Groups of four pixels become three, at 0, 1 1/3 and 2 2/3.
extern const FixedRatio kFourToThree;
// Groups of three pixels become two, at 0 and 1 1/2.
extern const FixedRatio kThreeToTwo;
// Of the bytes of RGB24 rows, taken as pixels of their own. Deliberate: the third pixel of every
// group takes blue and green from the third source pixel and red from the fourth.
extern const FixedRatio kFourToThreeMixedRgb24;

// Nearest neighbour: the pixel at or before each position.
int32_t NearestFrameFixed(const Frame& frame, const FixedRatio& ratio, PixelKind kind,
                          KernelVariant variant);

// Bilinear.
int32_t BlendFrameFixed(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                        PixelKind kind, KernelVariant variant);

// The same for families that end every row on a copy of the last source pixel but one.
int32_t BlendFrameFixedCopyingLast(const Frame& frame, const FixedRatio& ratio, Rounding rounding,
                                   PixelKind kind, KernelVariant variant);

}  // namespace tavo
