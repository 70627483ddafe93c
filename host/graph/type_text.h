// Media types as text.

#pragma once

#include <string>

#include "streams.h"

namespace tavo {

// One line: "video YUY2, 320 x 240, 16 bits, 25 fps (VideoInfo)".
std::wstring DescribeType(const AM_MEDIA_TYPE& type);

// "YUY2"; of an unknown one the GUID.
std::wstring SubtypeText(const GUID& subtype);

}  // namespace tavo
