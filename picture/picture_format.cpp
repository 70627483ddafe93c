#include "picture/picture_format.h"

#include "resample/kernel_table.h"
#include "settings/vantrel_settings.h"

namespace tavo {
namespace {

// clang-format off
constexpr FormatRows kPlanarTable = {RowCopyPlanar,    RowVerticalPlanar, RowH720Planar, RowH640Planar, RowHorizontalPlanar, RowBothPlanar};
constexpr FormatRows kRgb24Table  = {RowCopyRgb,       RowVerticalRgb24,  RowH720Rgb24,  RowH640Rgb24,  RowHorizontalRgb24,  RowBothRgb24};
constexpr FormatRows kRgb555Table = {RowCopyRgb,       RowVerticalRgb555, RowH720Rgb555, RowH640Rgb555, RowHorizontalRgb555, RowBothRgb555};
constexpr FormatRows kRgb565Table = {RowCopyRgb,       RowVerticalRgb565, RowH720Rgb565, RowH640Rgb565, RowHorizontalRgb565, RowBothRgb565};
constexpr FormatRows kYuy2Table   = {RowCopyPacked422, RowVerticalYuy2,   RowH720Yuy2,   RowH640Yuy2,   RowHorizontalYuy2,   RowBothYuy2};
constexpr FormatRows kUyvyTable   = {RowCopyPacked422, RowVerticalUyvy,   RowH720Uyvy,   RowH640Uyvy,   RowHorizontalUyvy,   RowBothUyvy};

// Deliberate: I420 keeps the sign of an output height, like RGB and unlike the other planar formats.
constexpr PictureFormat kFormats[] = {
//   setting              group                   subtype                     compression                 bits shift  sign   writes rows
    {VantrelFormatYv12,   FormatGroup::Planar,    FourCc('Y', 'V', '1', '2'), FourCc('Y', 'V', '1', '2'), 12,  1,     false, false, &kPlanarTable},
    {VantrelFormatIyuv,   FormatGroup::Planar,    FourCc('I', 'Y', 'U', 'V'), FourCc('I', 'Y', 'U', 'V'), 12,  1,     false, false, &kPlanarTable},
    {VantrelFormatYvu9,   FormatGroup::Planar,    FourCc('Y', 'V', 'U', '9'), FourCc('Y', 'V', 'U', '9'), 9,  2,     false, false, &kPlanarTable},
    {VantrelFormatYuy2,   FormatGroup::Packed422, FourCc('Y', 'U', 'Y', '2'), FourCc('Y', 'U', 'Y', '2'), 16,  0,     false, true,  &kYuy2Table},
    {VantrelFormatYuyv,   FormatGroup::Packed422, FourCc('Y', 'U', 'Y', 'V'), FourCc('Y', 'U', 'Y', 'V'), 16,  0,     false, true,  &kYuy2Table},
    {VantrelFormatYvyu,   FormatGroup::Packed422, FourCc('Y', 'V', 'Y', 'U'), FourCc('Y', 'V', 'Y', 'U'), 16,  0,     false, true,  &kYuy2Table},
    {VantrelFormatUyvy,   FormatGroup::Packed422, FourCc('U', 'Y', 'V', 'Y'), FourCc('U', 'Y', 'V', 'Y'), 16,  0,     false, true,  &kUyvyTable},
    {VantrelFormatRgb24,  FormatGroup::Rgb,       0xe436eb7d,                  kCompressionRgb,             24,  0,     true,  false, &kRgb24Table},
    {VantrelFormatRgb555, FormatGroup::Rgb,       0xe436eb7c,                  kCompressionRgb,             16,  0,     true,  false, &kRgb555Table},
    {VantrelFormatRgb565, FormatGroup::Rgb,       0xe436eb7b,                  kCompressionBitFields,       16,  0,     true,  true,  &kRgb565Table},
    {VantrelFormatIyuv,   FormatGroup::Planar,    FourCc('I', '4', '2', '0'), FourCc('I', '4', '2', '0'), 12,  1,     true,  false, &kPlanarTable},
};
// clang-format on

}  // namespace

std::span<const PictureFormat> AllPictureFormats() { return kFormats; }

const PictureFormat* FormatOfSetting(int32_t code) {
    for (const PictureFormat& format : kFormats) {
        if (format.setting == code) return &format;
    }
    return nullptr;
}

const PictureFormat* FormatOfFourCc(uint32_t fourCc) {
    for (const PictureFormat& format : kFormats) {
        if (format.group != FormatGroup::Rgb && format.compression == fourCc) return &format;
    }
    return nullptr;
}

}  // namespace tavo
