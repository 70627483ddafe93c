// The header of an AVI file with one uncompressed video stream, and one of sound, as bytes.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/avi/aspect_ratio.h"
#include "host/avi/frame_rate.h"
#include "host/avi/pixel_format.h"
#include "host/avi/sound_format.h"

namespace tavo {

// An entry of the super index in the header: where the index of a segment is.
struct SegmentEntry {
    uint64_t offset = 0;
    uint32_t size = 0;    // with its chunk header
    uint32_t length = 0;  // frames, or blocks of sound
};

struct AviHeader {
    VideoFormat video;
    FrameRate rate;
    uint32_t chunkCode = 0;
    uint32_t totalFrames = 0;
    std::span<const SegmentEntry> segments;
    uint32_t maxSegments = 0;   // entries of the super index
    AspectRatio displayAspect;  // unknown when pixels are square
    SoundFormat sound;          // unknown without sound
    uint64_t soundBlocks = 0;
    std::span<const SegmentEntry> soundSegments;
};

// Code of the frame chunks: 00db for RGB, 00dc for the others.
uint32_t FrameChunkCode(const VideoFormat& video);

// The whole hdrl list. Its length depends only on the video format, `maxSegments`, whether
// `displayAspect` is known and whether there is sound, so it can be overwritten when the file is
// finished.
std::vector<std::byte> HeaderList(const AviHeader& header);

}  // namespace tavo
