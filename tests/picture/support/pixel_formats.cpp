// The formats as data, and the rules of their frame sizes.
#include "tests/picture/support/pixel_formats.h"

#include <cstdlib>
#include <random>

namespace tavo_test {

const std::vector<PixelFormat>& AllFormats() {
    const auto code = [](const char(&text)[5]) {
        uint32_t value = 0;
        for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(text[i]);
        return value;
    };
    // clang-format off
    static const std::vector<PixelFormat> formats = {
        {"YV12",   Layout::kPlanar, 12, 1,  1, code("YV12"), false},
        {"IYUV",   Layout::kPlanar, 12, 1,  2, code("IYUV"), false},
        {"I420",   Layout::kPlanar, 12, 1, -1, code("I420"), true},
        {"YVU9",   Layout::kPlanar,  9, 2,  3, code("YVU9"), false},
        {"YUY2",   Layout::kPacked, 16, 0,  4, code("YUY2"), false},
        {"YUYV",   Layout::kPacked, 16, 0,  5, code("YUYV"), false},
        {"YVYU",   Layout::kPacked, 16, 0,  6, code("YVYU"), false},
        {"UYVY",   Layout::kPacked, 16, 0,  7, code("UYVY"), false},
        {"RGB24",  Layout::kRgb,    24, 0,  8, kCompressionRgb,       true},
        {"RGB555", Layout::kRgb,    16, 0,  9, kCompressionRgb,       true},
        {"RGB565", Layout::kRgb,    16, 0, 10, kCompressionBitFields, true},
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

std::vector<uint8_t> RandomBytes(int64_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(static_cast<size_t>(count));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 11);
    return bytes;
}

std::vector<uint8_t> RandomFrame(const PixelFormat& format, int width, int height, uint32_t seed) {
    return RandomBytes(RuleFrameBytes(format, width, height), seed);
}

}  // namespace tavo_test
