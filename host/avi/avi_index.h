// The indexes of a RIFF segment, as bytes.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavo {

// One chunk of the movie list. A frame of size 0 repeats the one before.
struct IndexEntry {
    uint64_t offset;  // of the chunk, from the movi list
    uint32_t code;
    uint32_t size;  // of its data
};

// Sizes of indexes with that many entries, in bytes.
uint64_t StreamIndexSize(uint64_t entries);
uint64_t OldIndexSize(uint64_t entries);

// The index of the chunks with this code: video, or sound. `movie` is the offset of the movi list.
// Padded with junk to the size of `reserved` entries.
std::vector<std::byte> StreamIndex(std::span<const IndexEntry> entries, uint32_t code,
                                   uint64_t movie, uint64_t reserved);

// Of all chunks, for readers without OpenDML.
std::vector<std::byte> OldIndex(std::span<const IndexEntry> entries, uint64_t reserved);

}  // namespace tavo
