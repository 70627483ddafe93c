// The planar kernels: each names its driver and the member whose row operations it runs on.

#include "resample/planar/planar_kernels.h"

#include "resample/fixed_ratio.h"
#include "resample/frame_drivers.h"
#include "resample/planar/planar_edges.h"

namespace tavo {
namespace {

constexpr PixelKind kPlane = &RowOps::plane;

int32_t BlendPlane(const Frame& frame, Member member) {
    const Interior interior = FindInterior(frame);
    BlendInterior(frame, interior, kPlane, member, BlendPlaneRight);
    BlendPlaneBottom(frame, interior);
    return frame.dstHeight;
}

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kPlaneRows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_Planar_Portable)   { return TakeFrame(TAVO_FRAME, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_Planar_MMX)        { return TakeFrame(TAVO_FRAME, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_Portable)  { return BlendPlane(TAVO_FRAME, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_MMX)       { return BlendPlane(TAVO_FRAME, Member::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestV_Planar_Portable)  { return TakeFrameRows(TAVO_FRAME, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_Planar_MMX)       { return TakeFrameRows(TAVO_FRAME, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_Portable) { return BlendFrameRows(TAVO_FRAME, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_MMX)      { return BlendFrameRows(TAVO_FRAME, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_SSE)      { return BlendFrameRows(TAVO_FRAME, kPlane, Member::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_Planar_Portable)  { return TakeFrameColumns(TAVO_FRAME, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_Planar_MMX)       { return TakeFrameColumns(TAVO_FRAME, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_Portable) { return BlendFrameColumns(TAVO_FRAME, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_MMX)      { return BlendFrameColumns(TAVO_FRAME, kPlane, Member::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_Portable)  { return TakeFrameFixed(TAVO_FRAME, kFourToThree, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_MMX)       { return TakeFrameFixed(TAVO_FRAME, kFourToThree, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_Portable) { return BlendFrameFixedCopyingLast(TAVO_FRAME, kFourToThree, Halves::Down, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_MMX)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kFourToThree, Halves::Down, kPlane, Member::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_Portable)  { return TakeFrameFixed(TAVO_FRAME, kThreeToTwo, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_MMX)       { return TakeFrameFixed(TAVO_FRAME, kThreeToTwo, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_Portable) { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Halves::Down, kPlane, Member::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_MMX)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Halves::Down, kPlane, Member::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_SSE)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Halves::Up, kPlane, Member::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
