// The arithmetic of planes in AVI files.

#include "host/avi/planar_layout.h"

#include <algorithm>

namespace tavo {
namespace {

struct Plane {
    uint64_t offset;
    uint64_t pitch;
    uint64_t rows;

    uint64_t End() const { return offset + pitch * rows; }
};

constexpr int kPlaneCount = 3;
struct Planes {
    Plane planes[kPlaneCount];
    uint64_t bytes;
};

constexpr uint64_t kRowAlignment = 4;

uint64_t RoundUp(uint64_t value, uint64_t step) { return (value + step - 1) / step * step; }

Planes AfterEachOther(Plane luma, Plane chroma) {
    const uint64_t size = chroma.pitch * chroma.rows;
    Plane last = chroma;
    chroma.offset = luma.End();
    last.offset = chroma.offset + size;
    return {{luma, chroma, last}, last.offset + size};
}

Planes TightPlanes(uint64_t width, uint64_t rows, unsigned shift, uint64_t frameBytes) {
    const uint64_t luma = width * rows;
    const Plane chroma = {luma, width >> shift, rows >> shift};
    Plane last = chroma;
    last.offset += luma >> (2 * shift);
    return {{{0, width, rows}, chroma, last}, frameBytes};
}

Planes PlanesOf(const VideoFormat& video, PlanarLayout layout) {
    const unsigned shift = InfoOf(video.format).chromaShift;
    const uint64_t step = uint64_t{1} << shift;
    const uint64_t width = static_cast<uint32_t>(video.width);
    const uint64_t rows = RowCount(video.height);
    const uint64_t chromaWidth = RoundUp(width, step) / step;
    const uint64_t chromaRows = RoundUp(rows, step) / step;
    if (layout == PlanarLayout::Tight) {
        return TightPlanes(width, rows, shift, FrameSize(video).value_or(0));
    }
    if (layout == PlanarLayout::Rounded) {
        return AfterEachOther({0, width, rows}, {0, chromaWidth, chromaRows});
    }
    // Luma rows come in pairs in 4:2:0; YVU9 does not round them.
    const uint64_t lumaRows = shift == 1 ? RoundUp(rows, 2) : rows;
    return AfterEachOther({0, RoundUp(width, kRowAlignment), lumaRows},
                          {0, RoundUp(chromaWidth, kRowAlignment), chromaRows});
}

}  // namespace

uint64_t PlanarBytes(const VideoFormat& video, PlanarLayout layout) {
    return PlanesOf(video, layout).bytes;
}

std::optional<PlanarLayout> LayoutOfLength(const VideoFormat& video, uint32_t length) {
    using enum PlanarLayout;
    for (const PlanarLayout layout : {Tight, Rounded, Padded}) {
        if (length == PlanarBytes(video, layout)) return layout;
    }
    const bool isLonger = length > PlanarBytes(video, Tight);
    return isLonger && !HasPartialChroma(video) ? std::optional(Tight) : std::nullopt;
}

bool LayoutsDiffer(const VideoFormat& video) {
    const uint64_t tight = PlanarBytes(video, PlanarLayout::Tight);
    return tight != PlanarBytes(video, PlanarLayout::Rounded) ||
           tight != PlanarBytes(video, PlanarLayout::Padded);
}

void MakeTight(const VideoFormat& video, PlanarLayout layout, std::span<const std::byte> from,
               std::span<std::byte> to) {
    const Planes sources = PlanesOf(video, layout);
    const Planes targets = PlanesOf(video, PlanarLayout::Tight);
    for (int i = 0; i < kPlaneCount; ++i) {
        const Plane& source = sources.planes[i];
        const Plane& target = targets.planes[i];
        for (uint64_t row = 0; row < target.rows; ++row) {
            const auto line = from.subspan(static_cast<size_t>(source.offset + row * source.pitch),
                                           static_cast<size_t>(target.pitch));
            std::ranges::copy(
                line, to.begin() + static_cast<ptrdiff_t>(target.offset + row * target.pitch));
        }
    }
}

}  // namespace tavo
