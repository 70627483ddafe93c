// The eleven pixel formats of the filter, as an AVI file and a format block describe them: names,
// compression codes, bits per pixel and the size of a frame. (IYUV has a second code, I420.)

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tavo {

// The codes are those of the filter's setting.
enum class PixelFormat : int {
    Auto = 0,
    YV12 = 1,
    IYUV = 2,
    YVU9 = 3,
    YUY2 = 4,
    YUYV = 5,
    YVYU = 6,
    UYVY = 7,
    RGB24 = 8,
    RGB555 = 9,
    RGB565 = 10,
};

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
constexpr uint32_t kCompressionI420 = FourCc('I', '4', '2', '0');

using ColorMasks = std::array<uint32_t, 3>;  // red, green, blue
constexpr ColorMasks kMasks555 = {0x7C00, 0x03E0, 0x001F};
constexpr ColorMasks kMasks565 = {0xF800, 0x07E0, 0x001F};

struct PixelFormatInfo {
    PixelFormat format;
    const wchar_t* name;
    FormatGroup group;
    uint32_t compression;
    uint16_t bitCount;
    // Chroma samples per luma sample are 1 / 2^shift on either axis; planar formats only.
    uint8_t chromaShift;
};

// Those with a code, in the order of the codes. I420 is IYUV here.
std::span<const PixelFormatInfo> AllPixelFormats();

// Not for Auto.
const PixelFormatInfo& InfoOf(PixelFormat format);

// How one frame lies in memory and in a file. Height is negative for top-down RGB only.
struct VideoFormat {
    PixelFormat format = PixelFormat::Auto;
    uint32_t compression = 0;  // as in biCompression: tells I420 from IYUV
    int32_t width = 0;
    int32_t height = 0;

    bool operator==(const VideoFormat&) const = default;
};

// Which of the formats a bitmap header means; nothing if it is none of them. RGB with 16 bits is
// RGB555 unless masks say otherwise; `masks` is looked at with kCompressionBitFields only.
std::optional<PixelFormat> FormatOf(uint32_t compression, uint16_t bitCount,
                                    const ColorMasks& masks);

// Bytes of one row: planar rows are not padded (and this is the luma row), all others are to 4.
uint32_t RowStride(PixelFormat format, uint32_t width);

// Bytes of one frame; nothing if a size is 0 or the frame is 2 GiB or larger.
std::optional<uint32_t> FrameSize(const VideoFormat& video);

// Turns an RGB frame upside down; whole rows only.
void FlipRows(std::span<std::byte> frame, uint32_t stride);

// True when chroma planes of this size are cut off in the middle of a sample.
bool HasPartialChroma(const VideoFormat& video);

// Magnitude of a height; also of the most negative one.
constexpr uint32_t RowCount(int32_t height) {
    return height < 0 ? 0u - static_cast<uint32_t>(height) : static_cast<uint32_t>(height);
}

}  // namespace tavo
