// Lookups in the table of pixel formats, and the arithmetic of frame sizes.

#include "host/avi/pixel_format.h"

#include <algorithm>
#include <iterator>

#include "picture/picture.h"
#include "settings/setting_names.h"

namespace tavo {
namespace {

using enum PixelFormat;

constexpr PixelFormat kFormats[] = {YV12, IYUV, YVU9,  YUY2,   YUYV,
                                    YVYU, UYVY, RGB24, RGB555, RGB565};

// Every code but Auto; and names are found by their codes.
static_assert(std::size(kFormats) + 1 == std::size(kPixelFormatNames));
static_assert(kPixelFormatNames[static_cast<int>(kFormats[std::size(kFormats) - 1])].code ==
              static_cast<int>(kFormats[std::size(kFormats) - 1]));

constexpr uint32_t kMaxFrameSize = 0x7FFFFFFF;

}  // namespace

std::span<const PixelFormat> AllPixelFormats() { return kFormats; }

const PictureFormat& InfoOf(PixelFormat format) {
    return *FormatOfSetting(static_cast<int32_t>(format));
}

const wchar_t* NameOf(PixelFormat format) {
    return kPixelFormatNames[static_cast<size_t>(format)].name;
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
    // Writers are careless about the bit count beside a FourCC.
    if (compression != kCompressionRgb) {
        const PictureFormat* const format = FormatOfFourCc(compression);
        return format ? std::optional(static_cast<PixelFormat>(format->setting)) : std::nullopt;
    }
    if (bitCount == 24) return RGB24;
    return bitCount == 16 ? std::optional(RGB555) : std::nullopt;
}

uint32_t RowStride(PixelFormat format, uint32_t width) {
    const PictureFormat& info = InfoOf(format);
    if (info.group == FormatGroup::Planar) return width;
    return static_cast<uint32_t>(RowStride(info.group, width, info.bitsPerPixel));
}

std::optional<uint32_t> FrameSize(const VideoFormat& video) {
    if (video.format == PixelFormat::Auto || video.width <= 0 || video.height == 0) {
        return std::nullopt;
    }
    const PictureFormat& info = InfoOf(video.format);
    const uint64_t width = static_cast<uint32_t>(video.width);
    const uint64_t rows = RowCount(video.height);
    // Below 2^31 each, so that no product here leaves 64 bits.
    if (width > kMaxFrameSize || rows > kMaxFrameSize || width * rows > 2ull * kMaxFrameSize) {
        return std::nullopt;
    }
    const Picture picture = {&info, video.width, video.height, info.bitsPerPixel};
    const auto size = static_cast<uint64_t>(FrameBytes(picture));
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
    const PictureFormat& info = InfoOf(video.format);
    const uint32_t mask = (1u << info.chromaShift) - 1;
    return ((static_cast<uint32_t>(video.width) | RowCount(video.height)) & mask) != 0;
}

}  // namespace tavo
