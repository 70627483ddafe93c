// The arguments of a frame kernel, and what follows from them.

#pragma once

#include <cstddef>
#include <cstdint>

#include "resample/scale_kernel.h"

namespace tavo {

// How the rows of a pixel format family lie in memory.
struct RowLayout {
    int32_t bytesPerPixel;
    int32_t alignment;  // rows are padded to a multiple of this

    constexpr int32_t RowBytes(int32_t width) const { return width * bytesPerPixel; }
    constexpr int32_t Stride(int32_t width) const {
        return (RowBytes(width) + alignment - 1) / alignment * alignment;
    }
};

// INT32_MIN maps to itself. Kernels of one axis ignore the source height, which may be anything.
constexpr int32_t Magnitude(int32_t height) {
    const auto bits = static_cast<uint32_t>(height);
    return static_cast<int32_t>(height < 0 ? 0u - bits : bits);
}

inline constexpr RowLayout kPlaneRows = {1, 1};
inline constexpr RowLayout kTwoByteRows = {2, 4};  // 16-bit RGB and packed 4:2:2
inline constexpr RowLayout kRgb24Rows = {3, 4};

struct Frame {
    uint8_t* dst;
    const uint8_t* src;
    int32_t dstWidth;   // pixels
    int32_t dstHeight;  // rows
    int32_t srcWidth;
    int32_t srcHeight;
    int32_t dstStride;  // bytes
    int32_t srcStride;
    int32_t bytesPerPixel;
    int32_t dstRowBytes;     // without padding
    int32_t dstPaddedBytes;  // with the padding that its format gives a row, but not of a pitch
    bool bottomUp;           // the destination only
    const AxisMap* xMap;
    const AxisMap* yMap;

    // The arguments of a kernel, in its order.
    Frame(const RowLayout& layout, uint8_t* dst, const uint8_t* src, int32_t dstWidth,
          int32_t dstHeight, int32_t srcWidth, int32_t srcHeight, const AxisMap* xMap,
          const AxisMap* yMap)
        : dst(dst),
          src(src),
          dstWidth(dstWidth),
          dstHeight(Magnitude(dstHeight)),
          srcWidth(srcWidth),
          srcHeight(Magnitude(srcHeight)),
          dstStride(xMap && xMap->dstPitch ? xMap->dstPitch : layout.Stride(dstWidth)),
          srcStride(xMap && xMap->srcPitch ? xMap->srcPitch : layout.Stride(srcWidth)),
          bytesPerPixel(layout.bytesPerPixel),
          dstRowBytes(layout.RowBytes(dstWidth)),
          dstPaddedBytes(xMap && xMap->dstPitch ? dstRowBytes : layout.Stride(dstWidth)),
          bottomUp(dstHeight < 0),
          xMap(xMap),
          yMap(yMap) {}

    ptrdiff_t Bytes(int32_t pixels) const { return static_cast<ptrdiff_t>(pixels) * bytesPerPixel; }

    const uint8_t* SrcRow(int32_t y) const { return src + static_cast<ptrdiff_t>(y) * srcStride; }

    uint8_t* DstRow(int32_t y) const {
        const int32_t stored = bottomUp ? dstHeight - 1 - y : y;
        return dst + static_cast<ptrdiff_t>(stored) * dstStride;
    }

    // The source row of a destination row, and the row that it is blended with: the next one, or at
    // the last row itself.
    int32_t UpperRow(int32_t y) const { return yMap->indices[y]; }
    int32_t LowerRow(int32_t y) const {
        const int32_t upper = yMap->indices[y];
        return upper == srcHeight - 1 ? upper : upper + 1;
    }
};

}  // namespace tavo
