// Kernels for RGB24: three bytes a pixel, rows padded to a multiple of four bytes. docs/kernels.md
// has the formulas.
//
// Deliberate: the _MMX and _SSE variants give the bytes of the portable ones, but
//   ScaleNearestH640To480_RGB24_MMX    mixes every third pixel of two source pixels
//   ScaleBilinearH640To480_RGB24_MMX   ends its rows differently, and does not write past them
//   ScaleBilinearH720To480_RGB24_SSE   rounds halves up

#pragma once

#include "resample/scale_kernel.h"

namespace tavo {

// Both axes.
TAVO_SCALE_KERNEL(ScaleNearest_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleNearest_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_SSE);

// Height only.
TAVO_SCALE_KERNEL(ScaleNearestV_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleNearestV_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_SSE);

// Width only.
TAVO_SCALE_KERNEL(ScaleNearestH_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_SSE);

// Width only, four pixels to three. The portable bilinear variant writes one byte past each row, so
// the buffer must be one byte longer than the picture.
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB24_MMX);

// Width only, three pixels to two.
TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_SSE);

}  // namespace tavo
