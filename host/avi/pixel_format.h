// The pixel formats as an AVI file and a format block describe them: which one a bitmap header
// means, and the size of a frame. What a format is stands in picture/picture_format.h.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "picture/picture_format.h"
#include "settings/vantrel_settings.h"

namespace tavo {

// The codes are those of the filter's setting. I420 is IYUV here.
enum class PixelFormat : int32_t {
    Auto = VantrelFormatAuto,
    YV12 = VantrelFormatYv12,
    IYUV = VantrelFormatIyuv,
    YVU9 = VantrelFormatYvu9,
    YUY2 = VantrelFormatYuy2,
    YUYV = VantrelFormatYuyv,
    YVYU = VantrelFormatYvyu,
    UYVY = VantrelFormatUyvy,
    RGB24 = VantrelFormatRgb24,
    RGB555 = VantrelFormatRgb555,
    RGB565 = VantrelFormatRgb565,
};

constexpr uint32_t kCompressionI420 = FourCc('I', '4', '2', '0');

using ColorMasks = std::array<uint32_t, 3>;  // red, green, blue
constexpr ColorMasks kMasks555 = {0x7C00, 0x03E0, 0x001F};
constexpr ColorMasks kMasks565 = {0xF800, 0x07E0, 0x001F};

// All but Auto, in the order of the codes.
std::span<const PixelFormat> AllPixelFormats();

// Not for Auto.
const PictureFormat& InfoOf(PixelFormat format);
const wchar_t* NameOf(PixelFormat format);

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
