// Lays out the indexes of a RIFF segment.

#include "host/avi/avi_index.h"

#include <algorithm>

#include "host/avi/riff.h"

namespace tavo {
namespace {

constexpr uint32_t kKeyFrame = 0x10;
constexpr uint32_t kNoKeyFrame = 0x80000000;  // a flag in the size of an OpenDML entry
constexpr uint32_t kIndexOfChunks = 1;
constexpr uint32_t kLongsPerEntry = 2;
constexpr uint64_t kIndexHeader = kChunkHeader + 24;
constexpr uint64_t kIndexEntry = 8;
constexpr uint64_t kOldIndexEntry = 16;

}  // namespace

uint64_t StreamIndexSize(uint64_t entries) { return kIndexHeader + entries * kIndexEntry; }
uint64_t OldIndexSize(uint64_t entries) { return kChunkHeader + entries * kOldIndexEntry; }

std::vector<std::byte> StreamIndex(std::span<const IndexEntry> entries, uint32_t code,
                                   uint64_t movie, uint64_t reserved) {
    const auto isOfStream = [&](const IndexEntry& entry) { return entry.code == code; };
    RiffBlock block;
    const size_t index = block.Open(code == kSoundChunk ? kSecondStreamIndex : kFirstStreamIndex);
    block.Put16(kLongsPerEntry);
    block.Put16(kIndexOfChunks << 8);  // sub type, type
    block.Put32(static_cast<uint32_t>(std::ranges::count_if(entries, isOfStream)));
    block.Put32(code);
    block.Put64(movie);
    block.Put32(0);
    for (const IndexEntry& entry : entries) {
        if (!isOfStream(entry)) continue;
        block.Put32(static_cast<uint32_t>(entry.offset + kChunkHeader));
        block.Put32(entry.size > 0 ? entry.size : kNoKeyFrame);
    }
    block.Close(index);
    block.PadTo(StreamIndexSize(reserved));
    return block.Take();
}

// Offsets count from the code of the movi list.
std::vector<std::byte> OldIndex(std::span<const IndexEntry> entries, uint64_t reserved) {
    RiffBlock block;
    const size_t index = block.Open(kOldIndex);
    for (const IndexEntry& entry : entries) {
        block.Put32(entry.code);
        block.Put32(entry.size > 0 ? kKeyFrame : 0);
        block.Put32(static_cast<uint32_t>(entry.offset - kChunkHeader));
        block.Put32(entry.size);
    }
    block.Close(index);
    block.PadTo(OldIndexSize(reserved));
    return block.Take();
}

}  // namespace tavo
