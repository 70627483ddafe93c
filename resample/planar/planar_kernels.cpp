// The planar kernels. Each names its driver and its variant.

#include "resample/planar/planar_kernels.h"

#include "resample/fixed_ratio.h"
#include "resample/frame_drivers.h"
#include "resample/planar/planar_edges.h"

namespace tavo {
namespace {

constexpr PixelKind kPlane = &PixelOpsTable::plane;

int32_t BlendPlane(const Frame& frame, KernelVariant variant) {
    const Interior interior = FindInterior(frame);
    BlendInterior(frame, interior, kPlane, variant, BlendPlaneRight);
    BlendPlaneBottom(frame, interior);
    return frame.dstHeight;
}

}  // namespace

// clang-format off
#define TAVO_FRAME Frame(kPlaneRows, TAVO_SCALE_ARGUMENTS)

TAVO_SCALE_KERNEL(ScaleNearest_Planar_Portable)   { return NearestFrame(TAVO_FRAME, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearest_Planar_MMX)        { return NearestFrame(TAVO_FRAME, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_Portable)  { return BlendPlane(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinear_Planar_MMX)       { return BlendPlane(TAVO_FRAME, KernelVariant::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestV_Planar_Portable)  { return NearestFrameRows(TAVO_FRAME, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestV_Planar_MMX)       { return NearestFrameRows(TAVO_FRAME, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_Portable) { return BlendFrameRows(TAVO_FRAME, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_MMX)      { return BlendFrameRows(TAVO_FRAME, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearV_Planar_SSE)      { return BlendFrameRows(TAVO_FRAME, kPlane, KernelVariant::Sse); }

TAVO_SCALE_KERNEL(ScaleNearestH_Planar_Portable)  { return NearestFrameColumns(TAVO_FRAME, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH_Planar_MMX)       { return NearestFrameColumns(TAVO_FRAME, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_Portable) { return BlendFrameColumns(TAVO_FRAME, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH_Planar_MMX)      { return BlendFrameColumns(TAVO_FRAME, kPlane, KernelVariant::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_Portable)  { return NearestFrameFixed(TAVO_FRAME, kFourToThree, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH640To480_Planar_MMX)       { return NearestFrameFixed(TAVO_FRAME, kFourToThree, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_Portable) { return BlendFrameFixedCopyingLast(TAVO_FRAME, kFourToThree, Rounding::Down, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH640To480_Planar_MMX)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kFourToThree, Rounding::Down, kPlane, KernelVariant::Mmx); }

TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_Portable)  { return NearestFrameFixed(TAVO_FRAME, kThreeToTwo, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleNearestH720To480_Planar_MMX)       { return NearestFrameFixed(TAVO_FRAME, kThreeToTwo, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_Portable) { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Down, kPlane, KernelVariant::Portable); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_MMX)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Down, kPlane, KernelVariant::Mmx); }
TAVO_SCALE_KERNEL(ScaleBilinearH720To480_Planar_SSE)      { return BlendFrameFixedCopyingLast(TAVO_FRAME, kThreeToTwo, Rounding::Up, kPlane, KernelVariant::Sse); }

#undef TAVO_FRAME
// clang-format on

}  // namespace tavo
