// Kernels for one plane of 8-bit samples without row padding. docs/kernels.md has the formulas.
//
// Deliberate: the _MMX and _SSE variants give the bytes of the portable ones, but
// ScaleBilinearH720To480_Planar_SSE rounds halves up.

#pragma once

#include "resample/scale_kernel.h"

namespace tavo {

// Both axes.
TAVO_SCALE_KERNEL(ScaleNearest_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleNearest_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_MMX);

// Height only.
TAVO_SCALE_KERNEL(ScaleNearestV_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleNearestV_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_SSE);

// Width only.
TAVO_SCALE_KERNEL(ScaleNearestH_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_MMX);

// Width only, four samples to three.
TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_MMX);

// Width only, three samples to two.
TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_Portable);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_MMX);
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_SSE);

}  // namespace tavo
