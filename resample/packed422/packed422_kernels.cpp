// The packed 4:2:2 kernels: each names its driver, its layout and the member whose row operations
// it runs on.

#include "resample/packed422/packed422_kernels.h"

#include "resample/frame_drivers.h"
#include "resample/packed422/packed422_drivers.h"

namespace tavo {
namespace {

// A change of height alone treats all bytes alike.
constexpr PixelKind kBytes = &RowOps::plane;

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kTwoByteRows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_YUY2_Portable)  { return TakePacked(TAVO_FRAME, kYuy2Layout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_YUY2_MMX)       { return TakePacked(TAVO_FRAME, kYuy2Layout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_Portable) { return BlendPacked(TAVO_FRAME, kYuy2Layout, Halves::Down, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_MMX)      { return BlendPacked(TAVO_FRAME, kYuy2Layout, Halves::Down, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_YUY2_SSE)      { return BlendPacked(TAVO_FRAME, kYuy2Layout, Halves::Up, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearest_UYVY_Portable)  { return TakePacked(TAVO_FRAME, kUyvyLayout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_UYVY_MMX)       { return TakePacked(TAVO_FRAME, kUyvyLayout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_Portable) { return BlendPacked(TAVO_FRAME, kUyvyLayout, Halves::Down, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_MMX)      { return BlendPacked(TAVO_FRAME, kUyvyLayout, Halves::Down, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_UYVY_SSE)      { return BlendPacked(TAVO_FRAME, kUyvyLayout, Halves::Up, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_Portable)  { return TakeFrameRows(TAVO_FRAME, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_YUY2_MMX)       { return TakeFrameRows(TAVO_FRAME, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_Portable) { return BlendFrameRows(TAVO_FRAME, kBytes, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_MMX)      { return BlendFrameRows(TAVO_FRAME, kBytes, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_YUY2_SSE)      { return BlendFrameRows(TAVO_FRAME, kBytes, Member::Sse); }
TAVO_SCALE_KERNEL(ScaleBilinearV_UYVY_Portable) { return BlendFrameRows(TAVO_FRAME, kBytes, Member::Portable); }

TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_Portable)  { return TakePackedColumns(TAVO_FRAME, kYuy2Layout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_YUY2_MMX)       { return TakePackedColumns(TAVO_FRAME, kYuy2Layout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_Portable) { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Halves::Down, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_MMX)      { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Halves::Down, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_YUY2_SSE)      { return BlendPackedColumns(TAVO_FRAME, kYuy2Layout, Halves::Up, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_Portable)  { return TakePackedColumns(TAVO_FRAME, kUyvyLayout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_UYVY_MMX)       { return TakePackedColumns(TAVO_FRAME, kUyvyLayout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_Portable) { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Halves::Down, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_MMX)      { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Halves::Down, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_UYVY_SSE)      { return BlendPackedColumns(TAVO_FRAME, kUyvyLayout, Halves::Up, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_Portable)  { return TakePackedFixed(TAVO_FRAME, kFourToThree, kYuy2Layout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_YUY2_MMX)       { return TakePackedFixed(TAVO_FRAME, kFourToThree, kYuy2Layout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_Portable) { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Copied, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_MMX)      { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Dimmed, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_YUY2_SSE)      { return BlendPackedFourToThree(TAVO_FRAME, kYuy2Layout, WholePositions::Dimmed, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_Portable)  { return TakePackedFixed(TAVO_FRAME, kFourToThree, kUyvyLayout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_UYVY_MMX)       { return TakePackedFixed(TAVO_FRAME, kFourToThree, kUyvyLayout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_Portable) { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Copied, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_MMX)      { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Dimmed, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_UYVY_SSE)      { return BlendPackedFourToThree(TAVO_FRAME, kUyvyLayout, WholePositions::Dimmed, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_Portable)  { return TakePackedFixed(TAVO_FRAME, kThreeToTwo, kYuy2Layout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_YUY2_MMX)       { return TakePackedFixed(TAVO_FRAME, kThreeToTwo, kYuy2Layout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_Portable) { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_MMX)      { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_YUY2_SSE)      { return BlendPackedThreeToTwo(TAVO_FRAME, kYuy2Layout, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_Portable)  { return TakePackedFixed(TAVO_FRAME, kThreeToTwo, kUyvyLayout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_UYVY_MMX)       { return TakePackedFixed(TAVO_FRAME, kThreeToTwo, kUyvyLayout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_Portable) { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_MMX)      { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_UYVY_SSE)      { return BlendPackedThreeToTwo(TAVO_FRAME, kUyvyLayout, Member::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
