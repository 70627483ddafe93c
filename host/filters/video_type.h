// Between media types and the pixel formats of the AVI code.

#pragma once

#include <optional>
#include <string>

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

// One line for people: "video YUY2, 320 x 240, 16 bits, 25 fps (VideoInfo)".
std::wstring DescribeType(const AM_MEDIA_TYPE& type);

}  // namespace tavo
