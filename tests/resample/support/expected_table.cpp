// The rows by number.

#include "tests/resample/support/expected_table.h"

#include "resample/copy_kernels.h"
#include "resample/packed422/packed422_kernels.h"
#include "resample/planar/planar_kernels.h"
#include "resample/rgb16/rgb16_kernels.h"
#include "resample/rgb24/rgb24_kernels.h"
#include "tests/resample/support/forced_level.h"

namespace tavo::test {

#define KERNEL(name) #name, name

// Each kernel with the bytes that it has to give.
// clang-format off
const ScaleRow kScaleRows[30] = {
    {3, Format::Uyvy, Axis::Vertical,
     {KERNEL(ScaleNearestV_YUY2_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_YUY2_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_UYVY_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_YUY2_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_YUY2_SSE), BilinearVertical}},
    {4, Format::Yuy2, Axis::Vertical,
     {KERNEL(ScaleNearestV_YUY2_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_YUY2_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_YUY2_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_YUY2_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_YUY2_SSE), BilinearVertical}},
    {5, Format::Rgb565, Axis::Vertical,
     {KERNEL(ScaleNearestV_RGB16_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_RGB16_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_RGB565_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB565_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB565_SSE), BilinearVertical}},
    {6, Format::Rgb555, Axis::Vertical,
     {KERNEL(ScaleNearestV_RGB16_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_RGB16_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_RGB555_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB555_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB555_SSE), BilinearVertical}},
    {7, Format::Rgb24, Axis::Vertical,
     {KERNEL(ScaleNearestV_RGB24_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_RGB24_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_RGB24_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB24_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_RGB24_SSE), BilinearVertical}},
    {8, Format::Planar, Axis::Vertical,
     {KERNEL(ScaleNearestV_Planar_Portable), NearestVertical},
     {KERNEL(ScaleNearestV_Planar_MMX), NearestVertical},
     {KERNEL(ScaleBilinearV_Planar_Portable), BilinearVertical},
     {KERNEL(ScaleBilinearV_Planar_MMX), BilinearVertical},
     {KERNEL(ScaleBilinearV_Planar_SSE), BilinearVertical}},
    {9, Format::Uyvy, Axis::H720,
     {KERNEL(ScaleNearestH720To480_UYVY_Portable), Nearest720Packed},
     {KERNEL(ScaleNearestH720To480_UYVY_MMX), Nearest720Packed},
     {KERNEL(ScaleBilinearH720To480_UYVY_Portable), Bilinear720Packed},
     {KERNEL(ScaleBilinearH720To480_UYVY_MMX), Bilinear720Packed},
     {KERNEL(ScaleBilinearH720To480_UYVY_SSE), Bilinear720Packed}},
    {10, Format::Uyvy, Axis::H640,
     {KERNEL(ScaleNearestH640To480_UYVY_Portable), Nearest640Packed},
     {KERNEL(ScaleNearestH640To480_UYVY_MMX), Nearest640Packed},
     {KERNEL(ScaleBilinearH640To480_UYVY_Portable), Bilinear640Packed},
     {KERNEL(ScaleBilinearH640To480_UYVY_MMX), Bilinear640PackedDimmed},
     {KERNEL(ScaleBilinearH640To480_UYVY_SSE), Bilinear640PackedDimmed}},
    {11, Format::Uyvy, Axis::Horizontal,
     {KERNEL(ScaleNearestH_UYVY_Portable), NearestHPacked},
     {KERNEL(ScaleNearestH_UYVY_MMX), NearestHPacked},
     {KERNEL(ScaleBilinearH_UYVY_Portable), BilinearHPacked},
     {KERNEL(ScaleBilinearH_UYVY_MMX), BilinearHPacked},
     {KERNEL(ScaleBilinearH_UYVY_SSE), BilinearHPackedUp}},
    {12, Format::Yuy2, Axis::H720,
     {KERNEL(ScaleNearestH720To480_YUY2_Portable), Nearest720Packed},
     {KERNEL(ScaleNearestH720To480_YUY2_MMX), Nearest720Packed},
     {KERNEL(ScaleBilinearH720To480_YUY2_Portable), Bilinear720Packed},
     {KERNEL(ScaleBilinearH720To480_YUY2_MMX), Bilinear720Packed},
     {KERNEL(ScaleBilinearH720To480_YUY2_SSE), Bilinear720Packed}},
    {13, Format::Yuy2, Axis::H640,
     {KERNEL(ScaleNearestH640To480_YUY2_Portable), Nearest640Packed},
     {KERNEL(ScaleNearestH640To480_YUY2_MMX), Nearest640Packed},
     {KERNEL(ScaleBilinearH640To480_YUY2_Portable), Bilinear640Packed},
     {KERNEL(ScaleBilinearH640To480_YUY2_MMX), Bilinear640PackedDimmed},
     {KERNEL(ScaleBilinearH640To480_YUY2_SSE), Bilinear640PackedDimmed}},
    {14, Format::Yuy2, Axis::Horizontal,
     {KERNEL(ScaleNearestH_YUY2_Portable), NearestHPacked},
     {KERNEL(ScaleNearestH_YUY2_MMX), NearestHPacked},
     {KERNEL(ScaleBilinearH_YUY2_Portable), BilinearHPacked},
     {KERNEL(ScaleBilinearH_YUY2_MMX), BilinearHPacked},
     {KERNEL(ScaleBilinearH_YUY2_SSE), BilinearHPackedUp}},
    {15, Format::Rgb565, Axis::H720,
     {KERNEL(ScaleNearestH720To480_RGB16_Portable), Nearest720Rgb16},
     {KERNEL(ScaleNearestH720To480_RGB16_MMX), Nearest720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB565_Portable), Bilinear720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB565_MMX), Bilinear720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB565_SSE), Bilinear720Rgb16Up}},
    {16, Format::Rgb565, Axis::H640,
     {KERNEL(ScaleNearestH640To480_RGB16_Portable), Nearest640Rgb16},
     {KERNEL(ScaleNearestH640To480_RGB16_MMX), Nearest640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB565_Portable), Bilinear640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB565_MMX), Bilinear640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB565_MMX), Bilinear640Rgb16}},
    {17, Format::Rgb565, Axis::Horizontal,
     {KERNEL(ScaleNearestH_RGB16_Portable), NearestHRgb16},
     {KERNEL(ScaleNearestH_RGB16_MMX), NearestHRgb16},
     {KERNEL(ScaleBilinearH_RGB565_Portable), BilinearHRgb16},
     {KERNEL(ScaleBilinearH_RGB565_MMX), BilinearHRgb16},
     {KERNEL(ScaleBilinearH_RGB565_SSE), BilinearHRgb16}},
    {18, Format::Rgb555, Axis::H720,
     {KERNEL(ScaleNearestH720To480_RGB16_Portable), Nearest720Rgb16},
     {KERNEL(ScaleNearestH720To480_RGB16_MMX), Nearest720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB555_Portable), Bilinear720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB555_MMX), Bilinear720Rgb16},
     {KERNEL(ScaleBilinearH720To480_RGB555_SSE), Bilinear720Rgb16Up}},
    {19, Format::Rgb555, Axis::H640,
     {KERNEL(ScaleNearestH640To480_RGB16_Portable), Nearest640Rgb16},
     {KERNEL(ScaleNearestH640To480_RGB16_MMX), Nearest640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB555_Portable), Bilinear640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB555_MMX), Bilinear640Rgb16},
     {KERNEL(ScaleBilinearH640To480_RGB555_MMX), Bilinear640Rgb16}},
    {20, Format::Rgb555, Axis::Horizontal,
     {KERNEL(ScaleNearestH_RGB16_Portable), NearestHRgb16},
     {KERNEL(ScaleNearestH_RGB16_MMX), NearestHRgb16},
     {KERNEL(ScaleBilinearH_RGB555_Portable), BilinearHRgb16},
     {KERNEL(ScaleBilinearH_RGB555_MMX), BilinearHRgb16},
     {KERNEL(ScaleBilinearH_RGB555_SSE), BilinearHRgb16}},
    {21, Format::Rgb24, Axis::H720,
     {KERNEL(ScaleNearestH720To480_RGB24_Portable), Nearest720Rgb24},
     {KERNEL(ScaleNearestH640To480_RGB24_MMX), Nearest640Rgb24Mixed},
     {KERNEL(ScaleBilinearH720To480_RGB24_Portable), Bilinear720Rgb24},
     {KERNEL(ScaleBilinearH720To480_RGB24_MMX), Bilinear720Rgb24},
     {KERNEL(ScaleBilinearH720To480_RGB24_SSE), Bilinear720Rgb24Up}},
    {22, Format::Rgb24, Axis::H640,
     {KERNEL(ScaleNearestH640To480_RGB24_Portable), Nearest640Rgb24},
     {KERNEL(ScaleNearestH640To480_RGB24_MMX), Nearest640Rgb24Mixed},
     {KERNEL(ScaleBilinearH640To480_RGB24_Portable), Bilinear640Rgb24},
     {KERNEL(ScaleBilinearH640To480_RGB24_MMX), Bilinear640Rgb24Mmx},
     {KERNEL(ScaleBilinearH640To480_RGB24_MMX), Bilinear640Rgb24Mmx}},
    {23, Format::Rgb24, Axis::Horizontal,
     {KERNEL(ScaleNearestH_RGB24_Portable), NearestHRgb24},
     {KERNEL(ScaleNearestH_RGB24_MMX), NearestHRgb24Forced},
     {KERNEL(ScaleBilinearH_RGB24_Portable), BilinearHRgb24},
     {KERNEL(ScaleBilinearH_RGB24_MMX), BilinearHRgb24Forced},
     {KERNEL(ScaleBilinearH_RGB24_SSE), BilinearHRgb24Forced}},
    {24, Format::Planar, Axis::H720,
     {KERNEL(ScaleNearestH720To480_Planar_Portable), Nearest720Planar},
     {KERNEL(ScaleNearestH720To480_Planar_MMX), Nearest720Planar},
     {KERNEL(ScaleBilinearH720To480_Planar_Portable), Bilinear720Planar},
     {KERNEL(ScaleBilinearH720To480_Planar_MMX), Bilinear720Planar},
     {KERNEL(ScaleBilinearH720To480_Planar_SSE), Bilinear720PlanarUp}},
    {25, Format::Planar, Axis::H640,
     {KERNEL(ScaleNearestH640To480_Planar_Portable), Nearest640Planar},
     {KERNEL(ScaleNearestH640To480_Planar_MMX), Nearest640Planar},
     {KERNEL(ScaleBilinearH640To480_Planar_Portable), Bilinear640Planar},
     {KERNEL(ScaleBilinearH640To480_Planar_MMX), Bilinear640Planar},
     {KERNEL(ScaleBilinearH640To480_Planar_MMX), Bilinear640Planar}},
    {26, Format::Planar, Axis::Horizontal,
     {KERNEL(ScaleNearestH_Planar_Portable), NearestHPlanar},
     {KERNEL(ScaleNearestH_Planar_MMX), NearestHPlanar},
     {KERNEL(ScaleBilinearH_Planar_Portable), BilinearHPlanar},
     {KERNEL(ScaleBilinearH_Planar_MMX), BilinearHPlanar},
     {KERNEL(ScaleBilinearH_Planar_MMX), BilinearHPlanar}},
    {27, Format::Uyvy, Axis::Both,
     {KERNEL(ScaleNearest_UYVY_Portable), NearestPacked},
     {KERNEL(ScaleNearest_UYVY_MMX), NearestPacked},
     {KERNEL(ScaleBilinear_UYVY_Portable), BilinearPacked},
     {KERNEL(ScaleBilinear_UYVY_MMX), BilinearPacked},
     {KERNEL(ScaleBilinear_UYVY_SSE), BilinearPackedUp}},
    {28, Format::Yuy2, Axis::Both,
     {KERNEL(ScaleNearest_YUY2_Portable), NearestPacked},
     {KERNEL(ScaleNearest_YUY2_MMX), NearestPacked},
     {KERNEL(ScaleBilinear_YUY2_Portable), BilinearPacked},
     {KERNEL(ScaleBilinear_YUY2_MMX), BilinearPacked},
     {KERNEL(ScaleBilinear_YUY2_SSE), BilinearPackedUp}},
    {29, Format::Rgb565, Axis::Both,
     {KERNEL(ScaleNearest_RGB16_Portable), NearestRgb16},
     {KERNEL(ScaleNearest_RGB16_MMX), NearestRgb16},
     {KERNEL(ScaleBilinear_RGB565_Portable), BilinearRgb16},
     {KERNEL(ScaleBilinear_RGB565_MMX), BilinearRgb16},
     {KERNEL(ScaleBilinear_RGB565_SSE), BilinearRgb16}},
    {30, Format::Rgb555, Axis::Both,
     {KERNEL(ScaleNearest_RGB16_Portable), NearestRgb16},
     {KERNEL(ScaleNearest_RGB16_MMX), NearestRgb16},
     {KERNEL(ScaleBilinear_RGB555_Portable), BilinearRgb16},
     {KERNEL(ScaleBilinear_RGB555_MMX), BilinearRgb16},
     {KERNEL(ScaleBilinear_RGB555_SSE), BilinearRgb16}},
    {31, Format::Rgb24, Axis::Both,
     {KERNEL(ScaleNearest_RGB24_Portable), NearestRgb24},
     {KERNEL(ScaleNearest_RGB24_MMX), NearestRgb24},
     {KERNEL(ScaleBilinear_RGB24_Portable), BilinearRgb24},
     {KERNEL(ScaleBilinear_RGB24_MMX), BilinearRgb24},
     {KERNEL(ScaleBilinear_RGB24_SSE), BilinearRgb24}},
    {32, Format::Planar, Axis::Both,
     {KERNEL(ScaleNearest_Planar_Portable), NearestPlanar},
     {KERNEL(ScaleNearest_Planar_MMX), NearestPlanar},
     {KERNEL(ScaleBilinear_Planar_Portable), BilinearPlanar},
     {KERNEL(ScaleBilinear_Planar_MMX), BilinearPlanar},
     {KERNEL(ScaleBilinear_Planar_MMX), BilinearPlanar}},
};

const CopyRow kCopyRows[3] = {
    {0, {Format::Planar, Format::Planar, Format::Planar},
     {KERNEL(CopyPlane_Portable), CopyWords},
     {KERNEL(CopyPlane_MMX), CopyBlocks}},
    {1, {Format::Yuy2, Format::Uyvy, Format::Yuy2},
     {KERNEL(CopyPacked_Portable), CopyWords},
     {KERNEL(CopyPacked_MMX), CopyBlocks}},
    {2, {Format::Rgb24, Format::Rgb555, Format::Rgb565},
     {KERNEL(CopyPacked_Portable), CopyWords},
     {KERNEL(CopyPacked_MMX), CopyBlocks}},
};
// clang-format on

#undef KERNEL

const ExpectedKernel& ScaleRow::InConstantSlot(int slot) const {
    switch (slot) {
        case 3: return nearest;
        case 4:
        case 5: return nearestMmx;
        case 6: return bilinear;
        case 7: return bilinearMmx;
        default: return bilinearSse;
    }
}

// The automatic slots 0, 1 and 2 hold the kernel of a constant one.
const ExpectedKernel& ScaleRow::InSlot(int slot, int level, int speedClass) const {
    if (slot > 2) return InConstantSlot(slot);
    const bool mmx = LevelHasMmx(level) && row != 9 && row != 12;
    const int nearestSlot = mmx ? 4 : 3;
    const int bilinearSlot = mmx ? (level == 2 ? 8 : 7) : 6;
    const bool isNearest = slot == 1 || (slot == 0 && speedClass < 0);
    return InConstantSlot(isNearest ? nearestSlot : bilinearSlot);
}

const ExpectedCopy& CopyRow::InConstantSlot(int slot) const {
    return slot == 1 || slot == 3 || slot == 6 ? portable : mmx;
}

const ExpectedCopy& CopyRow::InSlot(int slot, int level) const {
    if (slot > 0) return InConstantSlot(slot);
    return LevelHasMmx(level) ? mmx : portable;
}

const char* NameOf(Format format) {
    switch (format) {
        case Format::Planar: return "Planar";
        case Format::Rgb24: return "RGB24";
        case Format::Rgb565: return "RGB565";
        case Format::Rgb555: return "RGB555";
        case Format::Uyvy: return "UYVY";
        case Format::Yuy2: return "YUY2";
        case Format::Words8: return "Words8";
    }
    return "?";
}

const char* NameOf(Axis axis) {
    switch (axis) {
        case Axis::Copy: return "Copy";
        case Axis::Vertical: return "VerticalOnly";
        case Axis::H720: return "Horizontal720To480";
        case Axis::H640: return "Horizontal640To480";
        case Axis::Horizontal: return "HorizontalOnly";
        case Axis::Both: return "Both";
    }
    return "?";
}

}  // namespace tavo::test
