// How planar frames lie in AVI files: programs disagree, and only the length of a frame tells.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "host/avi/pixel_format.h"

namespace tavo {

enum class FilePlanes {
    Tight,    // no gaps, chroma sizes rounded down: what the filter takes and gives
    Rounded,  // no gaps, chroma sizes rounded up: what most programs write
    Padded,   // rows of all planes padded to 4 bytes, chroma sizes rounded up
};

// Bytes of one frame of a planar format whose FrameSize is known.
uint64_t PlanarBytes(const VideoFormat& video, FilePlanes layout);

// The layout of a frame of this length; nothing when there is none of that length. Frames without
// partial chroma samples may be longer than they need.
std::optional<FilePlanes> LayoutOfLength(const VideoFormat& video, uint32_t length);

// Whether the layouts of this size and format are not all the same.
bool LayoutsDiffer(const VideoFormat& video);

// Lays a frame out tightly. `from` holds PlanarBytes of its layout, `to` those of Tight.
void MakeTight(const VideoFormat& video, FilePlanes layout, std::span<const std::byte> from,
               std::span<std::byte> to);

}  // namespace tavo
