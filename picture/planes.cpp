// The layouts of planar frames.
//
// Tight: rows follow each other without a gap. Chroma sizes are shifted down. The chroma planes lie
// behind the luma bytes L, at L and at L + (L >> 2 * shift): for odd sizes the latter is not where
// the plane before ends.
//
// Padded: rows of all planes are padded to 4 bytes, chroma sizes are rounded up, and 4:2:0 has an
// even count of luma rows.
//
// At a pitch: as a tight frame of the pitch's width, whose chroma pitch is shifted down like the
// chroma width.

#include "picture/planes.h"

#include <cstdlib>

namespace tavo {
namespace {

constexpr int64_t kRowAlignment = 4;

int64_t RoundUp(int64_t value, int64_t step) { return (value + step - 1) / step * step; }

// What one plane takes in the padded layout.
struct PaddedPlane {
    int64_t pitch;
    int64_t rows;

    int64_t Bytes() const { return pitch * rows; }
};

PaddedPlane PaddedLuma(const Picture& picture) {
    const int64_t rows = std::abs(int64_t{picture.height});
    const bool hasRowPairs = picture.format->chromaShift == 1;
    return {RoundUp(picture.width, kRowAlignment), hasRowPairs ? RoundUp(rows, 2) : rows};
}

PaddedPlane PaddedChroma(const Picture& picture) {
    const int64_t step = int64_t{1} << picture.format->chromaShift;
    const int64_t width = RoundUp(picture.width, step) / step;
    return {RoundUp(width, kRowAlignment), RoundUp(std::abs(int64_t{picture.height}), step) / step};
}

Planes PaddedPlanes(const Planes& tight, const Picture& picture) {
    const PaddedPlane luma = PaddedLuma(picture);
    const PaddedPlane chroma = PaddedChroma(picture);
    Planes padded = tight;
    for (int i = 0; i < kPlaneCount; ++i) {
        padded.planes[i].offset = i == 0 ? 0 : luma.Bytes() + (i - 1) * chroma.Bytes();
        padded.planes[i].pitch = static_cast<int32_t>(i == 0 ? luma.pitch : chroma.pitch);
    }
    padded.bytes = luma.Bytes() + 2 * chroma.Bytes();
    return padded;
}

}  // namespace

Planes PlanesOf(const Picture& picture) {
    const int32_t shift = picture.format->chromaShift;
    const int32_t rows = std::abs(picture.height);
    const int32_t pitch = IsPitched(picture) ? picture.pitch : picture.width;
    const int64_t luma = int64_t{pitch} * rows;
    const int32_t width = picture.width >> shift;
    const int32_t height = picture.height < 0 ? -(rows >> shift) : rows >> shift;
    const int64_t last = luma + (luma >> (2 * shift));
    Planes planes = {{{0, picture.width, picture.height, pitch},
                      {luma, width, height, pitch >> shift},
                      {last, width, height, pitch >> shift}},
                     last + int64_t{width} * (rows >> shift)};
    if (IsPitched(picture)) {
        planes.bytes = planes.planes[planes.planes[2].IsEmpty() ? 0 : 2].End();
    }
    return picture.layout == PlaneLayout::Padded ? PaddedPlanes(planes, picture) : planes;
}

int64_t PaddedFrameBytes(const Picture& picture) {
    return PaddedLuma(picture).Bytes() + 2 * PaddedChroma(picture).Bytes();
}

}  // namespace tavo
