// The pixel formats as a client knows them, and the rules of their frame sizes; written apart from
// the product's own table.
//
//   const PixelFormat& yv12 = Format("YV12");
//   std::vector<uint8_t> frame = RandomBytes(RuleFrameBytes(yv12, 352, 288), 1);
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavo_test {

enum class Layout { kPlanar, kPacked, kRgb };

constexpr uint32_t kCompressionRgb = 0;
constexpr uint32_t kCompressionBitFields = 3;

struct PixelFormat {
    const char* name;
    Layout layout;
    int bits;
    int chromaShift;
    int setting;           // the code that asks for it; -1 if none does
    uint32_t compression;  // of a type that is offered: its FourCC, or what RGB has instead
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

std::vector<uint8_t> RandomBytes(int64_t count, uint32_t seed);
// Random bytes of the size of a frame.
std::vector<uint8_t> RandomFrame(const PixelFormat& format, int width, int height,
                                 uint32_t seed = 1);

}  // namespace tavo_test
