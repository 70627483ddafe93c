// Kernels for 16-bit RGB: one word a pixel, rows padded to a multiple of four bytes. Nearest
// neighbour copies whole words, so RGB16 serves both layouts. Bilinear blends the three fields; bit
// 15 of an RGB555 result is 0. docs/kernels.md has the formulas.
//
// Deliberate: the _MMX and _SSE variants give the bytes of the portable ones, but
// ScaleBilinearH720To480_..._SSE round halves up.

#pragma once

#include "resample/scale_kernel.h"

namespace tavo {

// Both axes.
TAVO_SCALE_KERNEL(ScaleNearest_RGB16_Portable);
TAVO_SCALE_KERNEL(ScaleNearest_RGB16_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_SSE);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_SSE);

// Height only.
TAVO_SCALE_KERNEL(ScaleNearestV_RGB16_Portable);
TAVO_SCALE_KERNEL(ScaleNearestV_RGB16_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_SSE);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_SSE);

// Width only.
TAVO_SCALE_KERNEL(ScaleNearestH_RGB16_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH_RGB16_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_SSE);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_SSE);

// Width only, four pixels to three.
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB16_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB16_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB555_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB555_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB565_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB565_MMX);

// Width only, three pixels to two.
TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB16_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB16_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_SSE);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_SSE);

}  // namespace tavo
