// The two indexes of a RIFF segment, as bytes.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavo {

// One chunk of the movie list: a frame, or an empty one that repeats it.
struct IndexEntry {
    uint64_t offset;  // of the chunk, from the movi list
    bool repeat;
};

struct MovieChunks {
    uint32_t code = 0;       // that all chunks have
    uint32_t frameSize = 0;  // of a frame's data
    uint64_t movie = 0;      // of the movi list
    std::span<const IndexEntry> entries;
};

// Sizes of indexes with that many entries, in bytes.
uint64_t StreamIndexSize(uint64_t entries);
uint64_t OldIndexSize(uint64_t entries);

// Padded with junk to the size of `reserved` entries.
std::vector<std::byte> StreamIndex(const MovieChunks& chunks, uint64_t reserved);

// For readers without OpenDML.
std::vector<std::byte> OldIndex(const MovieChunks& chunks, uint64_t reserved);

}  // namespace tavo
