// What is measured: every family of pixel formats, in the sizes that each axis mode is given.
// Shared by all programs here.

#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "resample/kernel_table.h"

namespace tavo::bench {

enum class AxisMode { Both, Width, Height, Copy };
enum class Method { Bilinear, Nearest, Copy };

struct Sizes {
    int32_t srcWidth, srcHeight;
    int32_t dstWidth, dstHeight;

    constexpr AxisMode Mode() const {
        const bool sameWidth = srcWidth == dstWidth;
        if (srcHeight == dstHeight) return sameWidth ? AxisMode::Copy : AxisMode::Width;
        return sameWidth ? AxisMode::Height : AxisMode::Both;
    }
};

inline constexpr Sizes kWorkloads[] = {
    {1920, 1080, 1280, 720},  {1280, 720, 1920, 1080}, {720, 576, 640, 480},
    {1920, 1080, 1280, 1080}, {640, 480, 480, 480},    {720, 576, 480, 576},
    {1920, 1080, 1920, 720},  {1920, 720, 1920, 1080}, {1920, 1080, 1920, 1080},
};

enum class Family { Planar, Yuy2, Uyvy, Rgb24, Rgb555, Rgb565 };
enum class FamilyGroup { Planar, Packed422, Rgb24, Rgb16 };

struct FamilyInfo {
    Family family;
    const char* name;
    FamilyGroup group;
    int32_t bitsPerPixel;
    int32_t rowAlignment;  // bytes
    // Rows of the dispatch table.
    int32_t copy, vertical, h720To480, h640To480, horizontal, both;

    constexpr int32_t RowBytes(int32_t width) const { return width * bitsPerPixel / 8; }
    constexpr int32_t Stride(int32_t width) const {
        return (RowBytes(width) + rowAlignment - 1) / rowAlignment * rowAlignment;
    }
    constexpr bool IsCopy(int32_t row) const { return row == copy; }

    // The row that the filter takes for a change of size.
    constexpr int32_t RowFor(const Sizes& sizes) const {
        switch (sizes.Mode()) {
            case AxisMode::Copy: return copy;
            case AxisMode::Height: return vertical;
            case AxisMode::Both: return both;
            case AxisMode::Width: break;
        }
        if (sizes.srcWidth == 720 && sizes.dstWidth == 480) return h720To480;
        if (sizes.srcWidth == 640 && sizes.dstWidth == 480) return h640To480;
        return horizontal;
    }
};

// clang-format off
inline constexpr FamilyInfo kFamilies[] = {
    {Family::Planar, "planar", FamilyGroup::Planar,    8,  1, RowCopyPlanar,    RowVerticalPlanar, RowH720Planar, RowH640Planar, RowHorizontalPlanar, RowBothPlanar},
    {Family::Yuy2,   "YUY2",   FamilyGroup::Packed422, 16, 4, RowCopyPacked422, RowVerticalYuy2,   RowH720Yuy2,   RowH640Yuy2,   RowHorizontalYuy2,   RowBothYuy2},
    {Family::Uyvy,   "UYVY",   FamilyGroup::Packed422, 16, 4, RowCopyPacked422, RowVerticalUyvy,   RowH720Uyvy,   RowH640Uyvy,   RowHorizontalUyvy,   RowBothUyvy},
    {Family::Rgb24,  "RGB24",  FamilyGroup::Rgb24,     24, 4, RowCopyRgb,       RowVerticalRgb24,  RowH720Rgb24,  RowH640Rgb24,  RowHorizontalRgb24,  RowBothRgb24},
    {Family::Rgb555, "RGB555", FamilyGroup::Rgb16,     16, 4, RowCopyRgb,       RowVerticalRgb555, RowH720Rgb555, RowH640Rgb555, RowHorizontalRgb555, RowBothRgb555},
    {Family::Rgb565, "RGB565", FamilyGroup::Rgb16,     16, 4, RowCopyRgb,       RowVerticalRgb565, RowH720Rgb565, RowH640Rgb565, RowHorizontalRgb565, RowBothRgb565},
};
// clang-format on

constexpr const FamilyInfo& InfoOf(Family family) {
    return *std::find_if(std::begin(kFamilies), std::end(kFamilies),
                         [family](const FamilyInfo& info) { return info.family == family; });
}

inline constexpr const char* kMethodNames[] = {"bilinear", "nearest", "copy"};
inline constexpr const char* kModeNames[] = {"both", "width", "height", "copy"};
constexpr const char* NameOf(Method method) { return kMethodNames[static_cast<int>(method)]; }
constexpr const char* NameOf(AxisMode mode) { return kModeNames[static_cast<int>(mode)]; }

// One thing to measure: what a picture is, how it is scaled and to which size.
struct Case {
    Family family;
    Method method;
    Sizes sizes;

    const FamilyInfo& Info() const { return InfoOf(family); }
    AxisMode Mode() const { return sizes.Mode(); }
};

}  // namespace tavo::bench
