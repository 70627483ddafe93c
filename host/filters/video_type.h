// Converts between media types and video formats.

#pragma once

#include <optional>

#include "host/avi/pixel_format.h"
#include "streams.h"

namespace tavo {

struct VideoType {
    VideoFormat video;
    REFERENCE_TIME frameDuration = 0;  // 0 when the type does not say
};

// The video that a type describes. Nothing unless it is one of the eleven formats in a complete
// VIDEOINFOHEADER or VIDEOINFOHEADER2, with a valid frame size.
std::optional<VideoType> ReadVideoType(const AM_MEDIA_TYPE& type);

enum class FormatBlock { VideoInfo, VideoInfo2 };

// A complete media type for this video. E_OUTOFMEMORY.
HRESULT MakeVideoType(const VideoType& video, FormatBlock block, CMediaType& type);

// The bitmap header in a format block; null for other or short blocks.
const BITMAPINFOHEADER* BitmapHeaderOf(const AM_MEDIA_TYPE& type);

// The format and compression of a subtype, without sizes. Nothing unless it is one of the eleven.
std::optional<VideoFormat> VideoFormatOf(const GUID& subtype);

// Whether the subtype is a FOURCC, which is its Data1.
bool IsCodeSubtype(const GUID& subtype);

// Of a type with a bitmap header; 0 when it is unknown.
REFERENCE_TIME FrameDurationOf(const AM_MEDIA_TYPE& type);

}  // namespace tavo
