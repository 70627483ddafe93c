#include "filter/type_picture.h"

#include <dvdmedia.h>

#include <algorithm>

#include "picture/subtype.h"

using tavo::FormatGroup;
using tavo::Picture;
using tavo::PictureFormat;

namespace {

template <typename Header>
VideoHeader HeaderIn(const AM_MEDIA_TYPE& type) {
    if (type.cbFormat < sizeof(Header) || !type.pbFormat) return {};
    auto* const header = reinterpret_cast<Header*>(type.pbFormat);
    return {&header->bmiHeader, &header->rcSource, &header->rcTarget, &header->AvgTimePerFrame};
}

}  // namespace

GUID SubtypeOfSetting(int pixelFormat) {
    const PictureFormat* const format = tavo::FormatOfSetting(pixelFormat);
    return format ? tavo::SubtypeOf(*format) : GUID_NULL;
}

VideoHeader LocateVideoHeader(const AM_MEDIA_TYPE& type) {
    if (type.formattype == FORMAT_VideoInfo) return HeaderIn<VIDEOINFOHEADER>(type);
    if (type.formattype == FORMAT_VideoInfo2) return HeaderIn<VIDEOINFOHEADER2>(type);
    return {};
}

Picture ReadPicture(const AM_MEDIA_TYPE& type) {
    Picture picture;
    picture.format = tavo::FormatOfSubtype(type.subtype);
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
    const PictureFormat* const format = tavo::FormatOfSubtype(type.subtype);
    const VideoHeader header = LocateVideoHeader(type);
    return format && format->group == FormatGroup::Planar && header &&
           header.bitmap->biSizeImage == 0;
}
