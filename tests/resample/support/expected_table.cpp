// The rows by number.

#include "tests/resample/support/expected_table.h"

#include "resample/copy_kernels.h"
#include "resample/packed422/packed422_kernels.h"
#include "resample/planar/planar_kernels.h"
#include "resample/rgb16/rgb16_kernels.h"
#include "resample/rgb24/rgb24_kernels.h"
#include "tests/resample/support/forced_level.h"

namespace tavo::test {

const ExpectedCopyRow kExpectedCopyRows[3] = {
    {0, CopyPlane_Portable, CopyPlane_MMX},
    {1, CopyPacked_Portable, CopyPacked_MMX},
    {2, CopyPacked_Portable, CopyPacked_MMX},
};

// clang-format off
const ExpectedScaleRow kExpectedScaleRows[30] = {
    { 3, ScaleNearestV_YUY2_Portable, ScaleNearestV_YUY2_MMX,
         ScaleBilinearV_UYVY_Portable, ScaleBilinearV_YUY2_MMX, ScaleBilinearV_YUY2_SSE},
    { 4, ScaleNearestV_YUY2_Portable, ScaleNearestV_YUY2_MMX,
         ScaleBilinearV_YUY2_Portable, ScaleBilinearV_YUY2_MMX, ScaleBilinearV_YUY2_SSE},
    { 5, ScaleNearestV_RGB16_Portable, ScaleNearestV_RGB16_MMX,
         ScaleBilinearV_RGB565_Portable, ScaleBilinearV_RGB565_MMX, ScaleBilinearV_RGB565_SSE},
    { 6, ScaleNearestV_RGB16_Portable, ScaleNearestV_RGB16_MMX,
         ScaleBilinearV_RGB555_Portable, ScaleBilinearV_RGB555_MMX, ScaleBilinearV_RGB555_SSE},
    { 7, ScaleNearestV_RGB24_Portable, ScaleNearestV_RGB24_MMX,
         ScaleBilinearV_RGB24_Portable, ScaleBilinearV_RGB24_MMX, ScaleBilinearV_RGB24_SSE},
    { 8, ScaleNearestV_Planar_Portable, ScaleNearestV_Planar_MMX,
         ScaleBilinearV_Planar_Portable, ScaleBilinearV_Planar_MMX, ScaleBilinearV_Planar_SSE},
    { 9, ScaleNearestH720To480_UYVY_Portable, ScaleNearestH720To480_UYVY_MMX,
         ScaleBilinearH720To480_UYVY_Portable, ScaleBilinearH720To480_UYVY_MMX, ScaleBilinearH720To480_UYVY_SSE},
    {10, ScaleNearestH640To480_UYVY_Portable, ScaleNearestH640To480_UYVY_MMX,
         ScaleBilinearH640To480_UYVY_Portable, ScaleBilinearH640To480_UYVY_MMX, ScaleBilinearH640To480_UYVY_SSE},
    {11, ScaleNearestH_UYVY_Portable, ScaleNearestH_UYVY_MMX,
         ScaleBilinearH_UYVY_Portable, ScaleBilinearH_UYVY_MMX, ScaleBilinearH_UYVY_SSE},
    {12, ScaleNearestH720To480_YUY2_Portable, ScaleNearestH720To480_YUY2_MMX,
         ScaleBilinearH720To480_YUY2_Portable, ScaleBilinearH720To480_YUY2_MMX, ScaleBilinearH720To480_YUY2_SSE},
    {13, ScaleNearestH640To480_YUY2_Portable, ScaleNearestH640To480_YUY2_MMX,
         ScaleBilinearH640To480_YUY2_Portable, ScaleBilinearH640To480_YUY2_MMX, ScaleBilinearH640To480_YUY2_SSE},
    {14, ScaleNearestH_YUY2_Portable, ScaleNearestH_YUY2_MMX,
         ScaleBilinearH_YUY2_Portable, ScaleBilinearH_YUY2_MMX, ScaleBilinearH_YUY2_SSE},
    {15, ScaleNearestH720To480_RGB16_Portable, ScaleNearestH720To480_RGB16_MMX,
         ScaleBilinearH720To480_RGB565_Portable, ScaleBilinearH720To480_RGB565_MMX, ScaleBilinearH720To480_RGB565_SSE},
    {16, ScaleNearestH640To480_RGB16_Portable, ScaleNearestH640To480_RGB16_MMX,
         ScaleBilinearH640To480_RGB565_Portable, ScaleBilinearH640To480_RGB565_MMX, ScaleBilinearH640To480_RGB565_MMX},
    {17, ScaleNearestH_RGB16_Portable, ScaleNearestH_RGB16_MMX,
         ScaleBilinearH_RGB565_Portable, ScaleBilinearH_RGB565_MMX, ScaleBilinearH_RGB565_SSE},
    {18, ScaleNearestH720To480_RGB16_Portable, ScaleNearestH720To480_RGB16_MMX,
         ScaleBilinearH720To480_RGB555_Portable, ScaleBilinearH720To480_RGB555_MMX, ScaleBilinearH720To480_RGB555_SSE},
    {19, ScaleNearestH640To480_RGB16_Portable, ScaleNearestH640To480_RGB16_MMX,
         ScaleBilinearH640To480_RGB555_Portable, ScaleBilinearH640To480_RGB555_MMX, ScaleBilinearH640To480_RGB555_MMX},
    {20, ScaleNearestH_RGB16_Portable, ScaleNearestH_RGB16_MMX,
         ScaleBilinearH_RGB555_Portable, ScaleBilinearH_RGB555_MMX, ScaleBilinearH_RGB555_SSE},
    {21, ScaleNearestH720To480_RGB24_Portable, ScaleNearestH640To480_RGB24_MMX,
         ScaleBilinearH720To480_RGB24_Portable, ScaleBilinearH720To480_RGB24_MMX, ScaleBilinearH720To480_RGB24_SSE},
    {22, ScaleNearestH640To480_RGB24_Portable, ScaleNearestH640To480_RGB24_MMX,
         ScaleBilinearH640To480_RGB24_Portable, ScaleBilinearH640To480_RGB24_MMX, ScaleBilinearH640To480_RGB24_MMX},
    {23, ScaleNearestH_RGB24_Portable, ScaleNearestH_RGB24_MMX,
         ScaleBilinearH_RGB24_Portable, ScaleBilinearH_RGB24_MMX, ScaleBilinearH_RGB24_SSE},
    {24, ScaleNearestH720To480_Planar_Portable, ScaleNearestH720To480_Planar_MMX,
         ScaleBilinearH720To480_Planar_Portable, ScaleBilinearH720To480_Planar_MMX, ScaleBilinearH720To480_Planar_SSE},
    {25, ScaleNearestH640To480_Planar_Portable, ScaleNearestH640To480_Planar_MMX,
         ScaleBilinearH640To480_Planar_Portable, ScaleBilinearH640To480_Planar_MMX, ScaleBilinearH640To480_Planar_MMX},
    {26, ScaleNearestH_Planar_Portable, ScaleNearestH_Planar_MMX,
         ScaleBilinearH_Planar_Portable, ScaleBilinearH_Planar_MMX, ScaleBilinearH_Planar_MMX},
    {27, ScaleNearest_UYVY_Portable, ScaleNearest_UYVY_MMX,
         ScaleBilinear_UYVY_Portable, ScaleBilinear_UYVY_MMX, ScaleBilinear_UYVY_SSE},
    {28, ScaleNearest_YUY2_Portable, ScaleNearest_YUY2_MMX,
         ScaleBilinear_YUY2_Portable, ScaleBilinear_YUY2_MMX, ScaleBilinear_YUY2_SSE},
    {29, ScaleNearest_RGB16_Portable, ScaleNearest_RGB16_MMX,
         ScaleBilinear_RGB565_Portable, ScaleBilinear_RGB565_MMX, ScaleBilinear_RGB565_SSE},
    {30, ScaleNearest_RGB16_Portable, ScaleNearest_RGB16_MMX,
         ScaleBilinear_RGB555_Portable, ScaleBilinear_RGB555_MMX, ScaleBilinear_RGB555_SSE},
    {31, ScaleNearest_RGB24_Portable, ScaleNearest_RGB24_MMX,
         ScaleBilinear_RGB24_Portable, ScaleBilinear_RGB24_MMX, ScaleBilinear_RGB24_SSE},
    {32, ScaleNearest_Planar_Portable, ScaleNearest_Planar_MMX,
         ScaleBilinear_Planar_Portable, ScaleBilinear_Planar_MMX, ScaleBilinear_Planar_MMX},
};
// clang-format on

ScaleKernel ExpectedStatic(const ExpectedScaleRow& row, int slot) {
    const ScaleKernel bySlot[] = {nullptr,      nullptr,         nullptr,
                                  row.nearest,  row.nearestMmx,  row.nearestMmx,
                                  row.bilinear, row.bilinearMmx, row.bilinearSse};
    return bySlot[slot];
}

CopyKernel ExpectedStatic(const ExpectedCopyRow& row, int slot) {
    const bool portable = slot == 1 || slot == 3 || slot == 6;
    return portable ? row.portable : row.mmx;
}

int ExpectedSource(int row, int automaticSlot, int level, int speedClass) {
    struct Rule {
        int fast[3];
        int slow[3];
    };
    constexpr Rule kSse = {{8, 4, 8}, {4, 4, 8}};
    constexpr Rule kMmx = {{7, 4, 7}, {4, 4, 7}};
    constexpr Rule kPortable = {{6, 3, 6}, {3, 3, 6}};

    const bool alwaysPortable = row == 9 || row == 12;
    const Rule& rule = alwaysPortable       ? kPortable
                       : level == 2         ? kSse
                       : LevelHasMmx(level) ? kMmx
                                            : kPortable;
    return speedClass < 0 ? rule.slow[automaticSlot] : rule.fast[automaticSlot];
}

bool SlotIsBilinear(int slot, int speedClass) {
    if (slot == 0) return speedClass >= 0;
    return slot == 2 || slot >= 6;
}

}  // namespace tavo::test
