// The eleven pixel formats as data: media types, AVI files and setting codes are looked up here.
// The codes and their names stand in settings/, the host's own enumeration in
// host/avi/pixel_format.h.

#pragma once

#include <cstdint>
#include <span>

namespace tavo {

enum class FormatGroup { Planar, Packed422, Rgb };

constexpr uint32_t FourCc(char a, char b, char c, char d) {
    return static_cast<uint32_t>(static_cast<unsigned char>(a)) |
           static_cast<uint32_t>(static_cast<unsigned char>(b)) << 8 |
           static_cast<uint32_t>(static_cast<unsigned char>(c)) << 16 |
           static_cast<uint32_t>(static_cast<unsigned char>(d)) << 24;
}

// Values of biCompression that are no character codes.
constexpr uint32_t kCompressionRgb = 0;
constexpr uint32_t kCompressionBitFields = 3;

// The rows of the kernel table that serve a format.
struct FormatRows {
    int32_t copy;
    int32_t vertical;
    int32_t horizontal720To480;
    int32_t horizontal640To480;
    int32_t horizontal;
    int32_t both;
};

struct PictureFormat {
    int32_t setting;  // its VantrelPixelFormat; I420 has that of IYUV
    FormatGroup group;
    uint32_t subtype;        // first field of the subtype: the FourCC, or for RGB a code of its own
    uint32_t compression;    // biCompression: the FourCC, or for RGB one of those above
    int32_t bitsPerPixel;    // what the kernels assume; a media type may state more
    int32_t chromaShift;     // planar: chroma planes are smaller by this power of two on both axes
    bool keepsHeightSign;    // a negative output height stays, and means bottom-up rows
    bool writesCompression;  // an offered type has `compression`, not what the input type had
    const FormatRows* rows;
};

// All eleven, in the order of their setting codes; I420, which has none of its own, comes last.
std::span<const PictureFormat> AllPictureFormats();

// The format of a setting code; null for AUTO and for codes that are none.
const PictureFormat* FormatOfSetting(int32_t code);

// The format with this FourCC; null if there is none. Not for RGB, which has no FourCC.
const PictureFormat* FormatOfFourCc(uint32_t fourCc);

}  // namespace tavo
