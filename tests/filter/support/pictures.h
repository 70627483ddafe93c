// The pixel formats as media types.
//
//   MediaType type = TypeOf(Format("YV12"), 352, 288);
#pragma once

#include "tests/picture/support/pixel_formats.h"
#include "tests/support/media_types.h"

namespace tavo_test {

GUID SubtypeOf(const PixelFormat& format);

// A sound type, and its fields for tests that change one of them first.
VideoSpec SpecOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);
MediaType TypeOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);

}  // namespace tavo_test
