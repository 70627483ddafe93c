// Copies, for frames of unchanged size.
//
// Deliberate: the _MMX variants move whole blocks of eight bytes, so they read and write up to
// seven bytes past the end of a row. Rows are written in the order of memory, also bottom-up: each
// row overwrites what the row before it spilled, and only the last one spills past the picture.

#pragma once

#include <cstddef>
#include <cstdint>

#include "resample/scale_kernel.h"

namespace tavo {

// One plane of bytes without padding.
TAVO_COPY_KERNEL(CopyPlane_Portable);
TAVO_COPY_KERNEL(CopyPlane_MMX);

// Rows of width * bitsPerPixel / 8 bytes, padded to a multiple of four.
TAVO_COPY_KERNEL(CopyPacked_Portable);
TAVO_COPY_KERNEL(CopyPacked_MMX);

// Bytes of any meaning, in the fastest way of this processor. `dst` must not overlap them.
void CopyBytes(uint8_t* dst, const uint8_t* src, size_t bytes);

}  // namespace tavo
