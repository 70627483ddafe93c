// Where the planes of a picture lie in its buffer.

#pragma once

#include <cstdint>
#include <cstdlib>

#include "picture/picture.h"

namespace tavo {

// One plane of samples. Only planar formats have planes.
struct Plane {
    int64_t offset;  // bytes from the start of the frame
    int32_t width;   // samples
    int32_t height;  // rows; negative where the picture's height is
    int32_t pitch;   // bytes from row to row

    // A picture of few pixels may have no chroma samples at all.
    bool IsEmpty() const { return width == 0 || height == 0; }

    // Behind its last sample.
    int64_t End() const { return offset + int64_t{pitch} * (std::abs(height) - 1) + width; }
};

constexpr int kPlaneCount = 3;

// The planes of a planar picture in memory order: luma, then the two of chroma.
struct Planes {
    Plane planes[kPlaneCount];
    int64_t bytes;  // of the whole frame, from the start to the end of the last plane
};

Planes PlanesOf(const Picture& picture);

// Bytes of a planar frame in padded rows, whatever layout the picture has now.
int64_t PaddedFrameBytes(const Picture& picture);

}  // namespace tavo
