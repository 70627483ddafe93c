// The 16-bit RGB kernels. Each names its driver and its variant.

#include "resample/rgb16/rgb16_kernels.h"

#include "resample/edges.h"
#include "resample/fixed_ratio.h"
#include "resample/frame_drivers.h"

namespace tavo {
namespace {

// Nearest neighbour moves words: either layout will do.
constexpr PixelKind kRgb16 = &PixelOpsTable::rgb555;
constexpr PixelKind kRgb555 = &PixelOpsTable::rgb555;
constexpr PixelKind kRgb565 = &PixelOpsTable::rgb565;

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kTwoByteRows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_RGB16_Portable)   { return NearestFrame(TAVO_FRAME, kRgb16, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_RGB16_MMX)        { return NearestFrame(TAVO_FRAME, kRgb16, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_Portable) { return BlendFrame<Rgb555Pixel>(TAVO_FRAME, kRgb555, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_MMX)      { return BlendFrame<Rgb555Pixel>(TAVO_FRAME, kRgb555, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB555_SSE)      { return BlendFrame<Rgb555Pixel>(TAVO_FRAME, kRgb555, KernelVariant::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_Portable) { return BlendFrame<Rgb565Pixel>(TAVO_FRAME, kRgb565, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_MMX)      { return BlendFrame<Rgb565Pixel>(TAVO_FRAME, kRgb565, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_RGB565_SSE)      { return BlendFrame<Rgb565Pixel>(TAVO_FRAME, kRgb565, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestV_RGB16_Portable)   { return NearestFrameRows(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_RGB16_MMX)        { return NearestFrameRows(TAVO_FRAME, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_Portable) { return BlendFrameRows(TAVO_FRAME, kRgb555, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_MMX)      { return BlendFrameRows(TAVO_FRAME, kRgb555, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB555_SSE)      { return BlendFrameRows(TAVO_FRAME, kRgb555, KernelVariant::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_Portable) { return BlendFrameRows(TAVO_FRAME, kRgb565, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_MMX)      { return BlendFrameRows(TAVO_FRAME, kRgb565, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_RGB565_SSE)      { return BlendFrameRows(TAVO_FRAME, kRgb565, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_RGB16_Portable)   { return NearestFrameColumns(TAVO_FRAME, kRgb16, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_RGB16_MMX)        { return NearestFrameColumns(TAVO_FRAME, kRgb16, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_Portable) { return BlendFrameColumns(TAVO_FRAME, kRgb555, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_MMX)      { return BlendFrameColumns(TAVO_FRAME, kRgb555, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB555_SSE)      { return BlendFrameColumns(TAVO_FRAME, kRgb555, KernelVariant::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_Portable) { return BlendFrameColumns(TAVO_FRAME, kRgb565, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_MMX)      { return BlendFrameColumns(TAVO_FRAME, kRgb565, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_RGB565_SSE)      { return BlendFrameColumns(TAVO_FRAME, kRgb565, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB16_Portable)   { return NearestFrameFixed(TAVO_FRAME, kFourToThree, kRgb16, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_RGB16_MMX)        { return NearestFrameFixed(TAVO_FRAME, kFourToThree, kRgb16, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB555_Portable) { return BlendFrameFixed(TAVO_FRAME, kFourToThree, Rounding::Down, kRgb555, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB555_MMX)      { return BlendFrameFixed(TAVO_FRAME, kFourToThree, Rounding::Down, kRgb555, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB565_Portable) { return BlendFrameFixed(TAVO_FRAME, kFourToThree, Rounding::Down, kRgb565, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_RGB565_MMX)      { return BlendFrameFixed(TAVO_FRAME, kFourToThree, Rounding::Down, kRgb565, KernelVariant::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB16_Portable)   { return NearestFrameFixed(TAVO_FRAME, kThreeToTwo, kRgb16, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_RGB16_MMX)        { return NearestFrameFixed(TAVO_FRAME, kThreeToTwo, kRgb16, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_Portable) { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb555, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_MMX)      { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb555, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB555_SSE)      { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Up, kRgb555, KernelVariant::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_Portable) { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb565, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_MMX)      { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Down, kRgb565, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_RGB565_SSE)      { return BlendFrameFixed(TAVO_FRAME, kThreeToTwo, Rounding::Up, kRgb565, KernelVariant::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
