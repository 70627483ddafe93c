// The formats as data, and the rules of their frame sizes.
#include "tests/filter/support/pictures.h"

#include <cstdlib>
#include <random>

namespace tavo_test {

const std::vector<PixelFormat>& AllFormats() {
    const auto code = [](const char(&text)[5]) { return FourCC(text).Data1; };
    // clang-format off
    static const std::vector<PixelFormat> formats = {
        {"YV12",   FourCC("YV12"),      Layout::kPlanar, 12, 1,  1, code("YV12"), false},
        {"IYUV",   FourCC("IYUV"),      Layout::kPlanar, 12, 1,  2, code("IYUV"), false},
        {"I420",   FourCC("I420"),      Layout::kPlanar, 12, 1, -1, code("I420"), true},
        {"YVU9",   FourCC("YVU9"),      Layout::kPlanar,  9, 2,  3, code("YVU9"), false},
        {"YUY2",   FourCC("YUY2"),      Layout::kPacked, 16, 0,  4, code("YUY2"), false},
        {"YUYV",   FourCC("YUYV"),      Layout::kPacked, 16, 0,  5, code("YUYV"), false},
        {"YVYU",   FourCC("YVYU"),      Layout::kPacked, 16, 0,  6, code("YVYU"), false},
        {"UYVY",   FourCC("UYVY"),      Layout::kPacked, 16, 0,  7, code("UYVY"), false},
        {"RGB24",  MEDIASUBTYPE_RGB24,  Layout::kRgb,    24, 0,  8, BI_RGB,       true},
        {"RGB555", MEDIASUBTYPE_RGB555, Layout::kRgb,    16, 0,  9, BI_RGB,       true},
        {"RGB565", MEDIASUBTYPE_RGB565, Layout::kRgb,    16, 0, 10, BI_BITFIELDS, true},
    };
    // clang-format on
    return formats;
}

std::vector<PixelFormat> PlanarFormats() {
    std::vector<PixelFormat> planar;
    for (const PixelFormat& format : AllFormats())
        if (format.layout == Layout::kPlanar) planar.push_back(format);
    return planar;
}

const PixelFormat& Format(const std::string& name) {
    for (const PixelFormat& format : AllFormats())
        if (name == format.name) return format;
    std::abort();
}

int64_t RuleStride(const PixelFormat& format, int64_t width, int bits) {
    const int64_t bytes = width * (bits ? bits : format.bits) / 8;
    return format.layout == Layout::kPlanar ? bytes : (bytes + 3) / 4 * 4;
}

int64_t RuleFrameBytes(const PixelFormat& format, int64_t width, int64_t height, int bits) {
    const int64_t rows = std::abs(height);
    if (format.layout != Layout::kPlanar) return RuleStride(format, width, bits) * rows;
    return (bits ? bits : format.bits) * width * rows / 8;
}

Plane PlaneOf(const PixelFormat& format, int plane, int width, int height) {
    const int64_t luma = static_cast<int64_t>(width) * height;
    if (plane == 0) return {0, width, height};
    const int part = 1 << format.chromaShift;
    return {luma + (plane - 1) * (luma / (part * part)), width / part, height / part};
}

int64_t PictureBytes(const PixelFormat& format, int width, int height) {
    const int rows = std::abs(height);
    if (format.layout != Layout::kPlanar) return RuleStride(format, width) * rows;
    const Plane last = PlaneOf(format, 2, width, rows);
    return last.offset + static_cast<int64_t>(last.width) * last.height;
}

VideoSpec SpecOf(const PixelFormat& format, int width, int height, const GUID& block) {
    VideoSpec spec;
    spec.subtype = format.subtype;
    spec.formattype = block;
    spec.width = width;
    spec.height = height;
    spec.bitCount = static_cast<WORD>(format.bits);
    spec.sizeImage = static_cast<DWORD>(RuleFrameBytes(format, width, height));
    return spec;
}

MediaType TypeOf(const PixelFormat& format, int width, int height, const GUID& block) {
    return MakeVideoType(SpecOf(format, width, height, block));
}

std::vector<BYTE> RandomBytes(int64_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<BYTE> bytes(static_cast<size_t>(count));
    for (BYTE& byte : bytes) byte = static_cast<BYTE>(random() >> 11);
    return bytes;
}

std::vector<BYTE> RandomFrame(const PixelFormat& format, int width, int height, uint32_t seed) {
    return RandomBytes(RuleFrameBytes(format, width, height), seed);
}

}  // namespace tavo_test
