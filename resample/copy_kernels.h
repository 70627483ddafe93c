// The copies that serve a frame of unchanged size. The _MMX variants move whole blocks of eight
// bytes: up to seven bytes past the end of a row are read and written. Rows are written in the
// order of memory, also when the destination is bottom-up, so that each row overwrites what spilled
// into it and only the last row of the buffer spills over.

#pragma once

#include "resample/scale_kernel.h"

namespace tavo {

// One plane of bytes without padding.
TAVO_COPY_KERNEL(CopyPlane_Portable);
TAVO_COPY_KERNEL(CopyPlane_MMX);

// Rows of width * bitsPerPixel / 8 bytes, padded to a multiple of four.
TAVO_COPY_KERNEL(CopyPacked_Portable);
TAVO_COPY_KERNEL(CopyPacked_MMX);

}  // namespace tavo
