// How the rows of each pixel format family lie in memory.

#pragma once

#include <cstdint>

namespace tavo::test {

struct PictureLayout {
    const char* name;
    int32_t bytesPerPixel;
    int32_t rowAlignment;

    constexpr int32_t RowBytes(int32_t width) const { return width * bytesPerPixel; }
    constexpr int32_t Stride(int32_t width) const {
        return (RowBytes(width) + rowAlignment - 1) / rowAlignment * rowAlignment;
    }
};

constexpr PictureLayout kPlanarLayout = {"plane", 1, 1};
constexpr PictureLayout kRgb24Layout = {"RGB24", 3, 4};
constexpr PictureLayout kRgb16Layout = {"16 bit RGB", 2, 4};
constexpr PictureLayout kPacked422Layout = {"packed 4:2:2", 2, 4};

}  // namespace tavo::test
