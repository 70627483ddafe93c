// The arithmetic of planes in AVI files.

#include "host/avi/planar_layout.h"

#include <algorithm>

#include "picture/planes.h"

namespace tavo {
namespace {

Picture PictureOf(const VideoFormat& video, PlaneLayout layout) {
    const PictureFormat& format = InfoOf(video.format);
    return {&format, video.width, video.height, format.bitsPerPixel, layout};
}

int32_t RoundedUp(int32_t length, int32_t shift) {
    return static_cast<int32_t>((int64_t{length} + (int32_t{1} << shift) - 1) >> shift);
}

// Planes one after the other without gaps; chroma sizes are rounded up.
Planes RoundedPlanes(const VideoFormat& video) {
    const int32_t shift = InfoOf(video.format).chromaShift;
    const int32_t width = RoundedUp(video.width, shift);
    const int32_t height = RoundedUp(video.height, shift);
    const int64_t luma = int64_t{video.width} * video.height;
    const int64_t chroma = int64_t{width} * height;
    return {{{0, video.width, video.height, video.width},
             {luma, width, height, width},
             {luma + chroma, width, height, width}},
            luma + 2 * chroma};
}

Planes PlanesIn(const VideoFormat& video, FilePlanes layout) {
    if (layout == FilePlanes::Rounded) return RoundedPlanes(video);
    const bool isPadded = layout == FilePlanes::Padded;
    return PlanesOf(PictureOf(video, isPadded ? PlaneLayout::Padded : PlaneLayout::Tight));
}

}  // namespace

// Of a tight frame some bytes may belong to no plane.
uint64_t PlanarBytes(const VideoFormat& video, FilePlanes layout) {
    if (layout == FilePlanes::Tight) return FrameSize(video).value_or(0);
    return static_cast<uint64_t>(PlanesIn(video, layout).bytes);
}

std::optional<FilePlanes> LayoutOfLength(const VideoFormat& video, uint32_t length) {
    using enum FilePlanes;
    for (const FilePlanes layout : {Tight, Rounded, Padded}) {
        if (length == PlanarBytes(video, layout)) return layout;
    }
    const bool isLonger = length > PlanarBytes(video, Tight);
    return isLonger && !HasPartialChroma(video) ? std::optional(Tight) : std::nullopt;
}

bool LayoutsDiffer(const VideoFormat& video) {
    const uint64_t tight = PlanarBytes(video, FilePlanes::Tight);
    return tight != PlanarBytes(video, FilePlanes::Rounded) ||
           tight != PlanarBytes(video, FilePlanes::Padded);
}

void MakeTight(const VideoFormat& video, FilePlanes layout, std::span<const std::byte> from,
               std::span<std::byte> to) {
    const Planes sources = PlanesIn(video, layout);
    const Planes targets = PlanesIn(video, FilePlanes::Tight);
    for (int i = 0; i < kPlaneCount; ++i) {
        const Plane& source = sources.planes[i];
        const Plane& target = targets.planes[i];
        for (int64_t row = 0; row < target.height; ++row) {
            const auto line = from.subspan(static_cast<size_t>(source.offset + row * source.pitch),
                                           static_cast<size_t>(target.width));
            std::ranges::copy(
                line, to.begin() + static_cast<ptrdiff_t>(target.offset + row * target.pitch));
        }
    }
}

}  // namespace tavo
