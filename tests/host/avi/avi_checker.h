// A strict second parser of AVI files that shares no code with the first: every size must be exact,
// every index must point at its chunk.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/avi/byte_store.h"

namespace tavo_test {

struct CheckedAvi {
    std::string fault;  // empty when the file is valid
    std::string handler;
    std::string compression;  // four characters, or "#" and a number
    uint32_t bitCount = 0;
    int32_t width = 0;
    int32_t height = 0;
    uint32_t imageSize = 0;
    std::vector<uint32_t> masks;
    uint32_t rate = 0;
    uint32_t scale = 0;
    uint32_t mainFlags = 0;     // avih
    uint32_t mainFrames = 0;    // avih
    uint32_t streamFrames = 0;  // strh
    uint32_t totalFrames = 0;   // dmlh
    std::string frameCode;
    uint32_t displayAspect = 0;           // vprp; 0 without
    std::vector<uint64_t> frames;         // data offsets, from the movi lists
    std::vector<uint32_t> repeats;        // empty chunks behind each frame
    std::vector<uint64_t> chunks;         // data offsets of frames and empty chunks
    std::vector<uint64_t> oldIndex;       // the same by idx1
    std::vector<uint64_t> openDmlIndex;   // the same by indx and ix00
    std::vector<uint64_t> segmentStarts;  // RIFF chunks
    uint64_t longestSegment = 0;

    // Of the second stream; 0 and empty without sound.
    uint32_t soundTag = 0;
    uint32_t channels = 0;
    uint32_t soundRate = 0;
    uint32_t soundBits = 0;
    uint32_t soundBlocks = 0;  // strh
    std::vector<std::byte> sound;
    std::vector<uint64_t> soundChunks;    // data offsets
    std::vector<uint32_t> framesBefore;   // frames that lie before each of them
    std::vector<uint64_t> oldSoundIndex;  // data offsets by idx1
    std::vector<uint64_t> openDmlSoundIndex;
};

CheckedAvi CheckAvi(tavo::ByteStore& store);

}  // namespace tavo_test
