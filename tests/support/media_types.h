// Media types for tests: an owning AM_MEDIA_TYPE, and video types of every shape, sound or broken.
//
//   MediaType rgb = MakeVideoType({.subtype = MEDIASUBTYPE_RGB24, .width = 640, .height = -480});
//   MediaType cut = MakeVideoType({.subtype = MEDIASUBTYPE_YUY2, .formatBytes = 40});  // truncated
//   pin->ConnectionMediaType(type.Put());
#pragma once

#include <windows.h>

#include <strmif.h>
#include <uuids.h>

#include <amvideo.h>
#include <dvdmedia.h>

#include <optional>

namespace tavo_test {

// Owns the format block and a reference on pUnk; copies are deep.
class MediaType {
  public:
    MediaType() = default;
    MediaType(const AM_MEDIA_TYPE& type);
    MediaType(const MediaType& other) : MediaType(other.type_) {}
    MediaType(MediaType&& other) noexcept;
    ~MediaType() { Reset(); }
    MediaType& operator=(MediaType other) noexcept;

    void Reset();
    // For calls that fill a type in: what was held before is freed.
    AM_MEDIA_TYPE* Put();
    const AM_MEDIA_TYPE* Get() const { return &type_; }
    AM_MEDIA_TYPE* Get() { return &type_; }
    const AM_MEDIA_TYPE* operator->() const { return &type_; }
    AM_MEDIA_TYPE* operator->() { return &type_; }
    const AM_MEDIA_TYPE& operator*() const { return type_; }

    // The block seen as a video header, or null where it is of another kind or too short.
    VIDEOINFOHEADER* Video() const;
    VIDEOINFOHEADER2* Video2() const;
    BITMAPINFOHEADER* Bitmap() const;

    // All fields and all format bytes are equal.
    bool operator==(const MediaType& other) const;

  private:
    AM_MEDIA_TYPE type_ = {};
};

struct VideoSpec {
    GUID majortype = MEDIATYPE_Video;
    GUID subtype = MEDIASUBTYPE_RGB24;
    GUID formattype =
        FORMAT_VideoInfo;  // or FORMAT_VideoInfo2; others get a FORMAT_VideoInfo block
    LONG width = 320;
    LONG height = 240;
    // Unless given, these three follow the subtype: RGB has its depth and BI_RGB (565: BI_BITFIELDS
    // with the masks after the header), four-character codes have that code and their usual depth.
    std::optional<WORD> bitCount = {};
    std::optional<DWORD> compression = {};
    std::optional<DWORD> sizeImage = {};
    REFERENCE_TIME timePerFrame = 400000;
    std::optional<RECT> source = {};
    std::optional<RECT> target = {};
    DWORD aspectX = 0;  // FORMAT_VideoInfo2 only
    DWORD aspectY = 0;
    DWORD interlaceFlags = 0;
    ULONG paletteEntries = 0;
    // Length of the block: shorter than natural cuts it off, longer adds zero bytes.
    std::optional<ULONG> formatBytes = {};
    // pbFormat null; cbFormat is `formatBytes` if given (a lie), else 0.
    bool absentFormat = false;
};

MediaType MakeVideoType(const VideoSpec& spec);

// The subtype of a four-character code: FourCC("YUY2").
GUID FourCC(const char (&code)[5]);

// Bytes of one frame with rows padded to 4 bytes as in a bitmap; planar and packed codes included.
// 0 for a subtype that it does not know.
DWORD FrameBytes(const GUID& subtype, LONG width, LONG height);

// A null type, or one whose GUIDs alone are set.
MediaType MakePartialType(const GUID& majortype, const GUID& subtype = GUID_NULL,
                          const GUID& formattype = GUID_NULL);

// For EnumMediaTypes::Next and its kin.
void DeleteType(AM_MEDIA_TYPE* type);

}  // namespace tavo_test
