// Frame drivers of packed 4:2:2. Pixels are blended across first and down second, and then the
// chroma of each two is averaged. docs/kernels.md has the formulas.
//
// Each returns the number of rows written. Widths are expected to be even; the last pixel of an odd
// one is repeated in its group.

#pragma once

#include "resample/fixed_ratio.h"
#include "resample/frame.h"
#include "resample/packed422/packed422_column_block.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// Nearest neighbour: both axes, width only.
//
// Deliberate: the chroma of two pixels is averaged here too.
int32_t NearestPacked(const Frame& frame, const PackedLayout& layout, KernelVariant variant);
int32_t NearestPackedColumns(const Frame& frame, const PackedLayout& layout, KernelVariant variant);

// Bilinear: both axes, width only. Rounding is that of the chroma average.
int32_t BlendPacked(const Frame& frame, const PackedLayout& layout, Rounding rounding,
                    KernelVariant variant);
int32_t BlendPackedColumns(const Frame& frame, const PackedLayout& layout, Rounding rounding,
                           KernelVariant variant);

// The fixed ratios, width only.
int32_t NearestPackedFixed(const Frame& frame, const FixedRatio& ratio, const PackedLayout& layout,
                           KernelVariant variant);
int32_t BlendPackedThreeToTwo(const Frame& frame, const PackedLayout& layout,
                              KernelVariant variant);
int32_t BlendPackedFourToThree(const Frame& frame, const PackedLayout& layout,
                               WholePositions wholePositions, KernelVariant variant);

}  // namespace tavo
