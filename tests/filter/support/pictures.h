// The pixel formats as media types.
//
//   MediaType type = TypeOf(Format("YV12"), 352, 288);
#pragma once

#include "tests/picture/support/expected_pixels.h"
#include "tests/picture/support/pixel_formats.h"
#include "tests/support/media_types.h"

namespace tavo_test {

GUID SubtypeOf(const PixelFormat& format);

// A sound type, and its fields for tests that change one of them first.
VideoSpec SpecOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);
MediaType TypeOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);

// Planar frames with padded rows: one plane, all of them, and a type that states their size.
struct PaddedPlane {
    int pitch;
    int rows;
};
PaddedPlane PaddedPlaneOf(const PixelFormat& format, int plane, Size size);
long PaddedBytes(const PixelFormat& format, Size size);
MediaType PaddedTypeOf(const PixelFormat& format, Size size, int heightSign = 1,
                       const GUID& block = FORMAT_VideoInfo);

// The samples of a tight frame in padded rows, with other bytes between them.
std::vector<BYTE> PadRows(const PixelFormat& format, Size size, const std::vector<BYTE>& tight);

}  // namespace tavo_test
