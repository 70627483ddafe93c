#include "filter/type_picture.h"

#include <dvdmedia.h>

#include <algorithm>
#include <cstdlib>

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

bool IsEmpty(const RECT& rect) { return rect.right <= rect.left || rect.bottom <= rect.top; }

int64_t Magnitude(int32_t height) { return std::abs(int64_t{height}); }

bool IsWhole(const RECT& rect, const Picture& picture) {
    return rect.left == 0 && rect.top == 0 && rect.right == picture.width &&
           rect.bottom == Magnitude(picture.height);
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

Picture ReadSurfacePicture(const AM_MEDIA_TYPE& type, const Picture& negotiated) {
    Picture picture = ReadPicture(type);
    const VideoHeader header = LocateVideoHeader(type);
    if (!header || !picture.format || picture.width <= negotiated.width ||
        Magnitude(picture.height) != Magnitude(negotiated.height)) {
        return picture;
    }
    const RECT& shown = IsEmpty(*header.target) ? *header.source : *header.target;
    if (IsWhole(shown, negotiated)) {
        picture.pitch = picture.width;
        picture.width = negotiated.width;
    }
    return picture;
}

bool LeavesLayoutOpen(const AM_MEDIA_TYPE& type) {
    const PictureFormat* const format = tavo::FormatOfSubtype(type.subtype);
    const VideoHeader header = LocateVideoHeader(type);
    return format && format->group == FormatGroup::Planar && header &&
           header.bitmap->biSizeImage == 0;
}
