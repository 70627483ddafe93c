// The eleven formats as data, and the arithmetic of their frame sizes.

#include "filter/picture_format.h"

#include <dvdmedia.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "filter/picture_planes.h"
#include "filter/vantrel_settings.h"
#include "resample/kernel_table.h"

namespace tavo {
namespace {

constexpr GUID FourCcSubtype(DWORD code) {
    return {code, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
}

constexpr DWORD kYuy2 = MAKEFOURCC('Y', 'U', 'Y', '2');
constexpr DWORD kYuyv = MAKEFOURCC('Y', 'U', 'Y', 'V');
constexpr DWORD kYvyu = MAKEFOURCC('Y', 'V', 'Y', 'U');
constexpr DWORD kUyvy = MAKEFOURCC('U', 'Y', 'V', 'Y');

constexpr GUID kSubtypeYv12 = FourCcSubtype(MAKEFOURCC('Y', 'V', '1', '2'));
constexpr GUID kSubtypeIyuv = FourCcSubtype(MAKEFOURCC('I', 'Y', 'U', 'V'));
constexpr GUID kSubtypeI420 = FourCcSubtype(MAKEFOURCC('I', '4', '2', '0'));
constexpr GUID kSubtypeYvu9 = FourCcSubtype(MAKEFOURCC('Y', 'V', 'U', '9'));
constexpr GUID kSubtypeYuy2 = FourCcSubtype(kYuy2);
constexpr GUID kSubtypeYuyv = FourCcSubtype(kYuyv);
constexpr GUID kSubtypeYvyu = FourCcSubtype(kYvyu);
constexpr GUID kSubtypeUyvy = FourCcSubtype(kUyvy);

// clang-format off
constexpr FormatRows kPlanarRows = {RowCopyPlanar,    RowVerticalPlanar, RowH720Planar, RowH640Planar, RowHorizontalPlanar, RowBothPlanar};
constexpr FormatRows kRgb24Rows  = {RowCopyRgb,       RowVerticalRgb24,  RowH720Rgb24,  RowH640Rgb24,  RowHorizontalRgb24,  RowBothRgb24};
constexpr FormatRows kRgb555Rows = {RowCopyRgb,       RowVerticalRgb555, RowH720Rgb555, RowH640Rgb555, RowHorizontalRgb555, RowBothRgb555};
constexpr FormatRows kRgb565Rows = {RowCopyRgb,       RowVerticalRgb565, RowH720Rgb565, RowH640Rgb565, RowHorizontalRgb565, RowBothRgb565};
constexpr FormatRows kYuy2Rows   = {RowCopyPacked422, RowVerticalYuy2,   RowH720Yuy2,   RowH640Yuy2,   RowHorizontalYuy2,   RowBothYuy2};
constexpr FormatRows kUyvyRows   = {RowCopyPacked422, RowVerticalUyvy,   RowH720Uyvy,   RowH640Uyvy,   RowHorizontalUyvy,   RowBothUyvy};

// Deliberate: I420 keeps the sign of an output height, like RGB and unlike the other planar formats.
const PictureFormat kFormats[] = {
//   subtype              group                   bits  shift  sign   compression   rows
    {kSubtypeYv12,        FormatGroup::Planar,    12,   1,     false, 0,            &kPlanarRows},
    {kSubtypeIyuv,        FormatGroup::Planar,    12,   1,     false, 0,            &kPlanarRows},
    {kSubtypeYvu9,        FormatGroup::Planar,     9,   2,     false, 0,            &kPlanarRows},
    {MEDIASUBTYPE_RGB24,  FormatGroup::Rgb,       24,   0,     true,  0,            &kRgb24Rows},
    {MEDIASUBTYPE_RGB555, FormatGroup::Rgb,       16,   0,     true,  0,            &kRgb555Rows},
    {MEDIASUBTYPE_RGB565, FormatGroup::Rgb,       16,   0,     true,  BI_BITFIELDS, &kRgb565Rows},
    {kSubtypeYuy2,        FormatGroup::Packed422, 16,   0,     false, kYuy2,        &kYuy2Rows},
    {kSubtypeUyvy,        FormatGroup::Packed422, 16,   0,     false, kUyvy,        &kUyvyRows},
    {kSubtypeYuyv,        FormatGroup::Packed422, 16,   0,     false, kYuyv,        &kYuy2Rows},
    {kSubtypeYvyu,        FormatGroup::Packed422, 16,   0,     false, kYvyu,        &kYuy2Rows},
    {kSubtypeI420,        FormatGroup::Planar,    12,   1,     true,  0,            &kPlanarRows},
};
// clang-format on

// Frames stay well below what a signed 32-bit size can hold: buffers get some slack on top.
constexpr int64_t kMaxFrameBytes = std::numeric_limits<int32_t>::max() - 4096;

int64_t Magnitude(int32_t value) { return std::abs(static_cast<int64_t>(value)); }

template <typename Header>
VideoHeader HeaderIn(const AM_MEDIA_TYPE& type) {
    if (type.cbFormat < sizeof(Header) || !type.pbFormat) return {};
    auto* const header = reinterpret_cast<Header*>(type.pbFormat);
    return {&header->bmiHeader, &header->rcSource, &header->rcTarget, &header->AvgTimePerFrame};
}

}  // namespace

const PictureFormat* FindPictureFormat(const GUID& subtype) {
    const auto found = std::find_if(
        std::begin(kFormats), std::end(kFormats),
        [&](const PictureFormat& format) { return IsEqualGUID(format.subtype, subtype) != FALSE; });
    return found == std::end(kFormats) ? nullptr : found;
}

const GUID* SubtypeOfSetting(int pixelFormatCode) {
    switch (pixelFormatCode) {
        case VantrelFormatYv12: return &kSubtypeYv12;
        case VantrelFormatIyuv: return &kSubtypeIyuv;
        case VantrelFormatYvu9: return &kSubtypeYvu9;
        case VantrelFormatYuy2: return &kSubtypeYuy2;
        case VantrelFormatYuyv: return &kSubtypeYuyv;
        case VantrelFormatYvyu: return &kSubtypeYvyu;
        case VantrelFormatUyvy: return &kSubtypeUyvy;
        case VantrelFormatRgb24: return &MEDIASUBTYPE_RGB24;
        case VantrelFormatRgb555: return &MEDIASUBTYPE_RGB555;
        case VantrelFormatRgb565: return &MEDIASUBTYPE_RGB565;
        default: return nullptr;
    }
}

VideoHeader LocateVideoHeader(const AM_MEDIA_TYPE& type) {
    if (IsEqualGUID(type.formattype, FORMAT_VideoInfo)) return HeaderIn<VIDEOINFOHEADER>(type);
    if (IsEqualGUID(type.formattype, FORMAT_VideoInfo2)) return HeaderIn<VIDEOINFOHEADER2>(type);
    return {};
}

Picture ReadPicture(const AM_MEDIA_TYPE& type) {
    Picture picture;
    picture.format = FindPictureFormat(type.subtype);
    if (const VideoHeader header = LocateVideoHeader(type)) {
        picture.width = header.bitmap->biWidth;
        picture.height = header.bitmap->biHeight;
        picture.bitsPerPixel = header.bitmap->biBitCount;
        if (picture.format) {
            picture.bitsPerPixel = std::max(picture.bitsPerPixel, picture.format->bitsPerPixel);
        }
    }
    return picture;
}

Picture ReadSourcePicture(const AM_MEDIA_TYPE& type) {
    Picture picture = ReadPicture(type);
    if (const VideoHeader header = LocateVideoHeader(type)) {
        picture.layout = LayoutOfFrameBytes(picture, header.bitmap->biSizeImage);
    }
    return picture;
}

PlaneLayout LayoutOfFrameBytes(const Picture& picture, int64_t bytes) {
    const bool isPlanar = picture.format && picture.format->group == FormatGroup::Planar;
    if (!isPlanar || !IsUsablePicture(picture)) return PlaneLayout::Tight;
    const bool isPadded = bytes <= kMaxFrameBytes && bytes == PaddedFrameBytes(picture) &&
                          bytes != FrameBytes(picture);
    return isPadded ? PlaneLayout::Padded : PlaneLayout::Tight;
}

bool LeavesLayoutOpen(const AM_MEDIA_TYPE& type) {
    const PictureFormat* const format = FindPictureFormat(type.subtype);
    const VideoHeader header = LocateVideoHeader(type);
    return format && format->group == FormatGroup::Planar && header &&
           header.bitmap->biSizeImage == 0;
}

int64_t RowStride(FormatGroup group, int64_t width, int32_t bitsPerPixel) {
    const int64_t bytes = width * bitsPerPixel / 8;
    return group == FormatGroup::Planar ? bytes : (bytes + 3) & ~int64_t{3};
}

int64_t FrameBytes(const Picture& picture) {
    const int64_t height = Magnitude(picture.height);
    if (picture.format->group == FormatGroup::Planar) {
        return picture.bitsPerPixel * int64_t{picture.width} * height / 8;
    }
    return RowStride(picture.format->group, picture.width, picture.bitsPerPixel) * height;
}

int64_t KernelBytes(const Picture& picture) {
    const PictureFormat& format = *picture.format;
    if (format.group == FormatGroup::Planar) return PlanesOf(picture).bytes;
    return RowStride(format.group, picture.width, format.bitsPerPixel) * Magnitude(picture.height);
}

bool IsUsablePicture(const Picture& picture) {
    if (!picture.format || picture.bitsPerPixel < picture.format->bitsPerPixel) return false;
    if (picture.width < 1 || picture.height == 0) return false;
    // The kernels count the bits of a row in 32-bit integers.
    constexpr int64_t kMaxRowBits = std::numeric_limits<int32_t>::max();
    if (int64_t{picture.width} * picture.format->bitsPerPixel > kMaxRowBits) return false;
    // Three factors below 2^31, 2^31 and 2^16 could overflow even 64 bits.
    if (int64_t{picture.width} * Magnitude(picture.height) > kMaxFrameBytes) return false;
    return FrameBytes(picture) <= kMaxFrameBytes && KernelBytes(picture) <= kMaxFrameBytes;
}

bool IsUsableOutput(const Picture& picture) {
    if (!IsUsablePicture(picture)) return false;
    return picture.format->group != FormatGroup::Packed422 || picture.width % 2 == 0;
}

}  // namespace tavo
