// The header of an AVI file with one uncompressed video stream, as bytes.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/avi/aspect_ratio.h"
#include "host/avi/frame_rate.h"
#include "host/avi/pixel_format.h"

namespace tavo {

// Where one segment's index chunk stands, as the super index of the header lists it.
struct SegmentEntry {
    uint64_t offset = 0;
    uint32_t size = 0;  // with its chunk header
    uint32_t frames = 0;
};

struct AviHeader {
    VideoFormat video;
    FrameRate rate;
    uint32_t chunkCode = 0;
    uint32_t totalFrames = 0;
    std::span<const SegmentEntry> segments;
    uint32_t segmentRoom = 0;  // entries to leave room for
    AspectRatio shown;         // of the picture as it is to be shown; unknown: as it lies there
};

// Code of the frame chunks: dibs and other data have different ones.
uint32_t FrameChunkCode(const VideoFormat& video);

// The hdrl list, whole. Its length depends on the video format, `segmentRoom` and whether `shown`
// is known, so that it can be written over when the file is finished.
std::vector<std::byte> HeaderList(const AviHeader& header);

}  // namespace tavo
