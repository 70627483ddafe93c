#include "filter/video_type.h"

#include <dvdmedia.h>

#include <algorithm>

#include "settings/vantrel_settings.h"

using tavo::FormatGroup;
using tavo::Picture;
using tavo::PictureFormat;

namespace {

// RGB subtypes have identifiers of their own; every other one is made of its FourCC.
GUID SubtypeOf(const PictureFormat& format) {
    switch (format.setting) {
        case VantrelFormatRgb24: return MEDIASUBTYPE_RGB24;
        case VantrelFormatRgb555: return MEDIASUBTYPE_RGB555;
        case VantrelFormatRgb565: return MEDIASUBTYPE_RGB565;
        default: return FOURCCMap(format.compression);
    }
}

template <typename Header>
VideoHeader HeaderIn(const AM_MEDIA_TYPE& type) {
    if (type.cbFormat < sizeof(Header) || !type.pbFormat) return {};
    auto* const header = reinterpret_cast<Header*>(type.pbFormat);
    return {&header->bmiHeader, &header->rcSource, &header->rcTarget, &header->AvgTimePerFrame};
}

}  // namespace

const PictureFormat* FindPictureFormat(const GUID& subtype) {
    for (const PictureFormat& format : tavo::AllPictureFormats()) {
        if (SubtypeOf(format) == subtype) return &format;
    }
    return nullptr;
}

GUID SubtypeOfSetting(int pixelFormat) {
    const PictureFormat* const format = tavo::FormatOfSetting(pixelFormat);
    return format ? SubtypeOf(*format) : GUID_NULL;
}

VideoHeader LocateVideoHeader(const AM_MEDIA_TYPE& type) {
    if (type.formattype == FORMAT_VideoInfo) return HeaderIn<VIDEOINFOHEADER>(type);
    if (type.formattype == FORMAT_VideoInfo2) return HeaderIn<VIDEOINFOHEADER2>(type);
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
            picture.bitsPerPixel = (std::max)(picture.bitsPerPixel, picture.format->bitsPerPixel);
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

bool LeavesLayoutOpen(const AM_MEDIA_TYPE& type) {
    const PictureFormat* const format = FindPictureFormat(type.subtype);
    const VideoHeader header = LocateVideoHeader(type);
    return format && format->group == FormatGroup::Planar && header &&
           header.bitmap->biSizeImage == 0;
}
