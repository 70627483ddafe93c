// The packed 4:2:2 kernels. Each names its driver, its layout and its variant.

#include "resample/packed422/packed422_kernels.h"

#include "resample/frame_drivers.h"
#include "resample/packed422/packed422_drivers.h"

namespace tavo {
namespace {

// A change of height treats all bytes alike.
constexpr PixelKind kBytes = &PixelOpsTable::plane;

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kTwoByteRows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_YUY2_Portable)  { return NearestPacked(TAVO_FRAME, kYuy2Layout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_YUY2_MMX)       { return NearestPacked(TAVO_FRAME, kYuy2Layout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_Portable) { return BlendPacked(TAVO_FRAME, kYuy2Layout, Rounding::Down, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_MMX)      { return BlendPacked(TAVO_FRAME, kYuy2Layout, Rounding::Down, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_SSE)      { return BlendPacked(TAVO_FRAME, kYuy2Layout, Rounding::Up, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearest_UYVY_Portable)  { return NearestPacked(TAVO_FRAME, kUyvyLayout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_UYVY_MMX)       { return NearestPacked(TAVO_FRAME, kUyvyLayout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_Portable) { return BlendPacked(TAVO_FRAME, kUyvyLayout, Rounding::Down, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_MMX)      { return BlendPacked(TAVO_FRAME, kUyvyLayout, Rounding::Down, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_SSE)      { return BlendPacked(TAVO_FRAME, kUyvyLayout, Rounding::Up, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_Portable)  { return NearestFrameRows(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_MMX)       { return NearestFrameRows(TAVO_FRAME, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_Portable) { return BlendFrameRows(TAVO_FRAME, kBytes, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_MMX)      { return BlendFrameRows(TAVO_FRAME, kBytes, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_SSE)      { return BlendFrameRows(TAVO_FRAME, kBytes, KernelVariant::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinearV_UYVY_Portable) { return BlendFrameRows(TAVO_FRAME, kBytes, KernelVariant::Portable); }

TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_Portable)  { return NearestPackedColumns(TAVO_FRAME, kYuy2Layout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_MMX)       { return NearestPackedColumns(TAVO_FRAME, kYuy2Layout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_Portable) { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Rounding::Down, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_MMX)      { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Rounding::Down, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_SSE)      { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Rounding::Up, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_Portable)  { return NearestPackedColumns(TAVO_FRAME, kUyvyLayout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_MMX)       { return NearestPackedColumns(TAVO_FRAME, kUyvyLayout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_Portable) { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Rounding::Down, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_MMX)      { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Rounding::Down, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_SSE)      { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Rounding::Up, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_Portable)  { return NearestPackedFixed(TAVO_FRAME, kFourToThree, kYuy2Layout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_MMX)       { return NearestPackedFixed(TAVO_FRAME, kFourToThree, kYuy2Layout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_Portable) { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Copied, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_MMX)      { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Dimmed, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_SSE)      { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Dimmed, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_Portable)  { return NearestPackedFixed(TAVO_FRAME, kFourToThree, kUyvyLayout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_MMX)       { return NearestPackedFixed(TAVO_FRAME, kFourToThree, kUyvyLayout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_Portable) { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Copied, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_MMX)      { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Dimmed, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_SSE)      { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Dimmed, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_Portable)  { return NearestPackedFixed(TAVO_FRAME, kThreeToTwo, kYuy2Layout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_MMX)       { return NearestPackedFixed(TAVO_FRAME, kThreeToTwo, kYuy2Layout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_Portable) { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_MMX)      { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_SSE)      { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_Portable)  { return NearestPackedFixed(TAVO_FRAME, kThreeToTwo, kUyvyLayout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_MMX)       { return NearestPackedFixed(TAVO_FRAME, kThreeToTwo, kUyvyLayout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_Portable) { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_MMX)      { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_SSE)      { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, KernelVariant::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
