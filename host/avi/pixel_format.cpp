// The table of pixel formats and the arithmetic of frame sizes.

#include "host/avi/pixel_format.h"

#include <algorithm>

namespace tavo {
namespace {

using enum FormatGroup;

// clang-format off
constexpr PixelFormatInfo kFormats[] = {
    // format             name       group      compression                  bits shift
    {PixelFormat::YV12,   L"YV12",   Planar,    FourCc('Y', 'V', '1', '2'),  12,  1},
    {PixelFormat::IYUV,   L"IYUV",   Planar,    FourCc('I', 'Y', 'U', 'V'),  12,  1},
    {PixelFormat::YVU9,   L"YVU9",   Planar,    FourCc('Y', 'V', 'U', '9'),   9,  2},
    {PixelFormat::YUY2,   L"YUY2",   Packed422, FourCc('Y', 'U', 'Y', '2'),  16,  0},
    {PixelFormat::YUYV,   L"YUYV",   Packed422, FourCc('Y', 'U', 'Y', 'V'),  16,  0},
    {PixelFormat::YVYU,   L"YVYU",   Packed422, FourCc('Y', 'V', 'Y', 'U'),  16,  0},
    {PixelFormat::UYVY,   L"UYVY",   Packed422, FourCc('U', 'Y', 'V', 'Y'),  16,  0},
    {PixelFormat::RGB24,  L"RGB24",  Rgb,       kCompressionRgb,             24,  0},
    {PixelFormat::RGB555, L"RGB555", Rgb,       kCompressionRgb,             16,  0},
    {PixelFormat::RGB565, L"RGB565", Rgb,       kCompressionBitFields,       16,  0},
};
// clang-format on

constexpr uint32_t kMaxFrameSize = 0x7FFFFFFF;

}  // namespace

std::span<const PixelFormatInfo> AllPixelFormats() { return kFormats; }

const PixelFormatInfo& InfoOf(PixelFormat format) {
    return kFormats[static_cast<size_t>(format) - 1];
}

std::optional<PixelFormat> FormatOf(uint32_t compression, uint16_t bitCount,
                                    const ColorMasks& masks) {
    if (compression == kCompressionI420) return PixelFormat::IYUV;
    if (compression == kCompressionBitFields) {
        if (bitCount != 16) return std::nullopt;
        if (masks == kMasks555) return PixelFormat::RGB555;
        if (masks == kMasks565) return PixelFormat::RGB565;
        return std::nullopt;
    }
    for (const PixelFormatInfo& info : kFormats) {
        if (info.compression != compression) continue;
        // Writers are careless about the bit count beside a character code.
        if (info.group != Rgb || info.bitCount == bitCount) return info.format;
    }
    return std::nullopt;
}

uint32_t RowStride(PixelFormat format, uint32_t width) {
    const PixelFormatInfo& info = InfoOf(format);
    if (info.group == Planar) return width;
    return static_cast<uint32_t>((uint64_t{width} * info.bitCount / 8 + 3) & ~uint64_t{3});
}

std::optional<uint32_t> FrameSize(const VideoFormat& video) {
    if (video.format == PixelFormat::Auto || video.width <= 0 || video.height == 0) {
        return std::nullopt;
    }
    const PixelFormatInfo& info = InfoOf(video.format);
    const uint64_t width = static_cast<uint32_t>(video.width);
    const uint64_t rows = RowCount(video.height);
    // Below 2^31 each, so that no product here leaves 64 bits.
    if (width > kMaxFrameSize || rows > kMaxFrameSize || width * rows > 2ull * kMaxFrameSize) {
        return std::nullopt;
    }
    const uint64_t size = info.group == Planar
                              ? info.bitCount * width * rows / 8
                              : ((width * info.bitCount / 8 + 3) & ~uint64_t{3}) * rows;
    if (size == 0 || size > kMaxFrameSize) return std::nullopt;
    return static_cast<uint32_t>(size);
}

void FlipRows(std::span<std::byte> frame, uint32_t stride) {
    for (size_t top = 0, bottom = frame.size() / stride * stride; top + stride < bottom;
         top += stride) {
        bottom -= stride;
        std::ranges::swap_ranges(frame.subspan(top, stride), frame.subspan(bottom, stride));
    }
}

bool HasPartialChroma(const VideoFormat& video) {
    const PixelFormatInfo& info = InfoOf(video.format);
    const uint32_t mask = (1u << info.chromaShift) - 1;
    return ((static_cast<uint32_t>(video.width) | RowCount(video.height)) & mask) != 0;
}

}  // namespace tavo
