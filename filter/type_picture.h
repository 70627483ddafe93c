// What a media type says of its pictures: the bitmap header, the format and the size.

#pragma once

#include "streams.h"

#include "picture/picture.h"

// The subtype that a VantrelPixelFormat asks for; GUID_NULL for AUTO and for codes that are none.
GUID SubtypeOfSetting(int pixelFormat);

// The bitmap header inside a format block of FORMAT_VideoInfo or FORMAT_VideoInfo2, with the fields
// around it that a new size changes. All null for any other block, and for one that is absent or
// shorter than its header.
struct VideoHeader {
    BITMAPINFOHEADER* bitmap = nullptr;
    RECT* source = nullptr;
    RECT* target = nullptr;
    REFERENCE_TIME* averageTimePerFrame = nullptr;

    explicit operator bool() const { return bitmap != nullptr; }
};
VideoHeader LocateVideoHeader(const AM_MEDIA_TYPE& type);

// The picture that a type describes; no format, or no size, when the type describes none. If the
// type states fewer bits per pixel than its format has, the format's number is used. Frames are
// laid out tightly.
tavo::Picture ReadPicture(const AM_MEDIA_TYPE& type);

// The same for a source, whose planar frames may be laid out in padded rows.
tavo::Picture ReadSourcePicture(const AM_MEDIA_TYPE& type);

// The same for a type that a sink puts on a buffer while frames of `negotiated` flow. One whose
// target, or source where the target is empty, is that picture and whose bitmap is wider states how
// far apart the rows lie. Any other states a new size.
tavo::Picture ReadSurfacePicture(const AM_MEDIA_TYPE& type, const tavo::Picture& negotiated);

// Whether only the first frame tells the layout of the planes: a planar type whose biSizeImage is
// 0.
bool LeavesLayoutOpen(const AM_MEDIA_TYPE& type);
