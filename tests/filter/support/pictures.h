// The pixel formats as a client knows them, and test pictures in them.
//
//   const PixelFormat& yv12 = Format("YV12");
//   MediaType type = TypeOf(yv12, 352, 288);
//   std::vector<BYTE> frame = RandomBytes(RuleFrameBytes(yv12, 352, 288), 1);
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/media_types.h"

namespace tavo_test {

enum class Layout { kPlanar, kPacked, kRgb };

struct PixelFormat {
    const char* name;
    GUID subtype;
    Layout layout;
    int bits;
    int chromaShift;
    int setting;           // the code that asks for it; -1 if none does
    DWORD compression;     // what the offered type has; its own code, or that of the input
    bool keepsHeightSign;  // of an output type: a bottom-up destination is possible
};

// The eleven that the filter handles.
const std::vector<PixelFormat>& AllFormats();
std::vector<PixelFormat> PlanarFormats();
const PixelFormat& Format(const std::string& name);

// Bytes of a frame and from row to row as the filter's rules state them, with the depth that the
// format has by nature unless another is given. The height counts by its magnitude.
int64_t RuleFrameBytes(const PixelFormat& format, int64_t width, int64_t height, int bits = 0);
int64_t RuleStride(const PixelFormat& format, int64_t width, int bits = 0);

// Where a plane of a planar picture begins, and how large it is.
struct Plane {
    int64_t offset;
    int width;
    int height;
};
Plane PlaneOf(const PixelFormat& format, int plane, int width, int height);

// Bytes up to the end of the last plane, or of the last row: at most RuleFrameBytes.
int64_t PictureBytes(const PixelFormat& format, int width, int height);

// A sound type, and its fields for tests that change one of them first.
VideoSpec SpecOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);
MediaType TypeOf(const PixelFormat& format, int width, int height,
                 const GUID& block = FORMAT_VideoInfo);

std::vector<BYTE> RandomBytes(int64_t count, uint32_t seed);
// Random bytes of the size of a frame.
std::vector<BYTE> RandomFrame(const PixelFormat& format, int width, int height, uint32_t seed = 1);

}  // namespace tavo_test
