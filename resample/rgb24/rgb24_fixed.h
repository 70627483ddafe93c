// The 640 to 480 kernels of RGB24, which differ from the other fixed ratios.

#pragma once

#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// Each returns the number of rows written.
int32_t NearestRgb24FourToThreeMixed(const Frame& frame, KernelVariant variant);
int32_t BlendRgb24FourToThreeSpilling(const Frame& frame, KernelVariant variant);
int32_t BlendRgb24FourToThreeWithFaintEnd(const Frame& frame, KernelVariant variant);

}  // namespace tavo
