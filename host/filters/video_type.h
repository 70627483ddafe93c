// Between media types and the pixel formats of the AVI code.

#pragma once

#include <optional>

#include "host/avi/pixel_format.h"
#include "streams.h"

namespace tavo {

struct VideoType {
    VideoFormat video;
    REFERENCE_TIME frameDuration = 0;  // 0 when the type does not say
};

// The video that a type describes; nothing unless it is one of the eleven formats in a whole
// VIDEOINFOHEADER or VIDEOINFOHEADER2, with a size that a frame can have.
std::optional<VideoType> ReadVideoType(const AM_MEDIA_TYPE& type);

enum class FormatBlock { VideoInfo, VideoInfo2 };

// A whole media type for this video. E_OUTOFMEMORY.
HRESULT MakeVideoType(const VideoType& video, FormatBlock block, CMediaType& type);

// The bitmap header inside a format block; null for other blocks and for short ones.
const BITMAPINFOHEADER* BitmapHeaderOf(const AM_MEDIA_TYPE& type);

// The format that a subtype names, with its compression; its sizes are left open. Nothing unless it
// is one of the eleven.
std::optional<VideoFormat> FormatOfSubtype(const GUID& subtype);

// Whether the subtype is made of a character code, which is its Data1.
bool IsCodeSubtype(const GUID& subtype);

// Of a type with a bitmap header; 0 when it does not say.
REFERENCE_TIME FrameDurationOf(const AM_MEDIA_TYPE& type);

}  // namespace tavo
