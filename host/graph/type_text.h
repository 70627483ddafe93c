// Media types as text.

#pragma once

#include <string>

#include "host/avi/sound_format.h"
#include "streams.h"

namespace tavo {

// One line: "video YUY2, 320 x 240, 16 bits, 25 fps (VideoInfo)".
std::wstring DescribeType(const AM_MEDIA_TYPE& type);

// "PCM, 2 channels, 48000 Hz, 16 bits"
std::wstring SoundText(const SoundFormat& sound);

// "YUY2"; of an unknown one the GUID.
std::wstring SubtypeText(const GUID& subtype);

}  // namespace tavo
