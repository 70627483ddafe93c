// Kernels for packed 4:2:2: two pixels in four bytes, rows padded to a multiple of four bytes.
// YUY2 has its luma in the even bytes, UYVY in the odd ones. docs/kernels.md has the formulas.
//
// Deliberate: the _MMX and _SSE variants give the bytes of the portable ones, but
//   ScaleBilinear_..._SSE, ScaleBilinearH_..._SSE   round the average of two chroma bytes up
//   ScaleBilinearH640To480_..._MMX and _SSE         dim the luma of pixels at whole positions

#pragma once

#include "resample/scale_kernel.h"

namespace tavo {

// Both axes.
TAVO_SCALE_KERNEL(ScaleNearest_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleNearest_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_SSE);
TAVO_SCALE_KERNEL(ScaleNearest_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleNearest_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_SSE);

// Height only. All but the portable bilinear variants serve both layouts.
TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_SSE);
TAVO_SCALE_KERNEL(ScaleBilinearV_UYVY_Portable);

// Width only.
TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_SSE);
TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_SSE);

// Width only, four pixels to three.
TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_SSE);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_SSE);

// Width only, three pixels to two.
TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_SSE);
TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_SSE);

}  // namespace tavo
