// The RGB24 kernels. Each names its driver and its variant.

#include "resample/rgb24/rgb24_kernels.h"

#include "resample/edges.h"
#include "resample/fixed_ratio.h"
#include "resample/frame_drivers.h"
#include "resample/rgb24/rgb24_fixed.h"

namespace tavo {
namespace {

constexpr PixelKind kRgb24 = &PixelOpsTable::rgb24;

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kRgb24Rows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_RGB24_Portable)   { return NearestFrame(TAVO_FRAME, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_RGB24_MMX)        { return NearestFrame(TAVO_FRAME, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_Portable)  { return BlendFrame<Rgb24Pixel>(TAVO_FRAME, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_MMX)       { return BlendFrame<Rgb24Pixel>(TAVO_FRAME, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB24_SSE)       { return BlendFrame<Rgb24Pixel>(TAVO_FRAME, kRgb24, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestV_RGB24_Portable)  { return NearestFrameRows(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_RGB24_MMX)       { return NearestFrameRows(TAVO_FRAME, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_Portable) { return BlendFrameRows(TAVO_FRAME, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_MMX)      { return BlendFrameRows(TAVO_FRAME, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB24_SSE)      { return BlendFrameRows(TAVO_FRAME, kRgb24, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_RGB24_Portable)  { return NearestFrameColumns(TAVO_FRAME, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_RGB24_MMX)       { return NearestFrameColumns(TAVO_FRAME, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_Portable) { return BlendFrameColumns(TAVO_FRAME, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_MMX)      { return BlendFrameColumns(TAVO_FRAME, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB24_SSE)      { return BlendFrameColumns(TAVO_FRAME, kRgb24, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB24_Portable)  { return NearestFrameFixed(TAVO_FRAME, kFourToThree, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB24_MMX)       { return NearestRgb24FourToThreeMixed(TAVO_FRAME, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB24_Portable) { return BlendRgb24FourToThreeSpilling(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB24_MMX)      { return BlendRgb24FourToThreeWithFaintEnd(TAVO_FRAME, KernelVariant::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB24_Portable)  { return NearestFrameFixed(TAVO_FRAME, kThreeToTwo, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_Portable) { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb24, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_MMX)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb24, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB24_SSE)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Up, kRgb24, KernelVariant::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
