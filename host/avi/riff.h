// Little-endian numbers and the chunk codes of RIFF and AVI files.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "host/avi/pixel_format.h"

namespace tavo {

constexpr uint32_t kRiff = FourCc('R', 'I', 'F', 'F');
constexpr uint32_t kList = FourCc('L', 'I', 'S', 'T');
constexpr uint32_t kJunk = FourCc('J', 'U', 'N', 'K');
constexpr uint32_t kAvi = FourCc('A', 'V', 'I', ' ');
constexpr uint32_t kAvix = FourCc('A', 'V', 'I', 'X');
constexpr uint32_t kHeaderList = FourCc('h', 'd', 'r', 'l');
constexpr uint32_t kMainHeader = FourCc('a', 'v', 'i', 'h');
constexpr uint32_t kStreamList = FourCc('s', 't', 'r', 'l');
constexpr uint32_t kStreamHeader = FourCc('s', 't', 'r', 'h');
constexpr uint32_t kStreamFormat = FourCc('s', 't', 'r', 'f');
constexpr uint32_t kVideoProperties = FourCc('v', 'p', 'r', 'p');
constexpr uint32_t kVideoStream = FourCc('v', 'i', 'd', 's');
constexpr uint32_t kSoundStream = FourCc('a', 'u', 'd', 's');
constexpr uint32_t kSuperIndex = FourCc('i', 'n', 'd', 'x');
constexpr uint32_t kExtendedList = FourCc('o', 'd', 'm', 'l');
constexpr uint32_t kExtendedHeader = FourCc('d', 'm', 'l', 'h');
constexpr uint32_t kMovieList = FourCc('m', 'o', 'v', 'i');
constexpr uint32_t kRecordList = FourCc('r', 'e', 'c', ' ');
constexpr uint32_t kOldIndex = FourCc('i', 'd', 'x', '1');
constexpr uint32_t kFirstStreamIndex = FourCc('i', 'x', '0', '0');
constexpr uint32_t kSecondStreamIndex = FourCc('i', 'x', '0', '1');
constexpr uint32_t kSoundChunk = FourCc('0', '1', 'w', 'b');

// A chunk is a code, a size and the data, padded to an even length.
constexpr uint32_t kChunkHeader = 8;
// The data of a list begins with a code of its own.
constexpr uint32_t kListHeader = 12;

constexpr uint32_t kBitmapHeader = 40;  // BITMAPINFOHEADER
constexpr uint32_t kMaskBytes = 12;

constexpr uint64_t Padded(uint64_t size) { return (size + 1) & ~uint64_t{1}; }

// Builds chunks from little-endian numbers.
class RiffBlock {
  public:
    void Put8(uint32_t value) { Put(value, 1); }
    void Put16(uint32_t value) { Put(value, 2); }
    void Put32(uint32_t value) { Put(value, 4); }
    void Put64(uint64_t value) { Put(value, 8); }
    void PutZeros(size_t count) { bytes_.resize(bytes_.size() + count); }

    // Opens a chunk. Close needs the value returned, and fills in the size.
    size_t Open(uint32_t code) {
        Put32(code);
        Put32(0);
        return bytes_.size();
    }
    size_t OpenList(uint32_t code, uint32_t kind) {
        const size_t start = Open(code);
        Put32(kind);
        return start;
    }
    void Close(size_t start) {
        Patch32(start - 4, static_cast<uint32_t>(bytes_.size() - start));
        if (bytes_.size() % 2 != 0) PutZeros(1);
    }

    void Patch32(size_t offset, uint32_t value) {
        for (size_t i = 0; i < 4; ++i) bytes_[offset + i] = static_cast<std::byte>(value >> 8 * i);
    }

    // A junk chunk of `size` bytes in all, a multiple of 8.
    void PutJunk(uint64_t size) {
        const size_t chunk = Open(kJunk);
        PutZeros(static_cast<size_t>(size - kChunkHeader));
        Close(chunk);
    }
    // Pads with junk to `size`; nothing when the block is that long.
    void PadTo(uint64_t size) {
        if (bytes_.size() < size) PutJunk(size - bytes_.size());
    }

    std::vector<std::byte> Take() { return std::move(bytes_); }

  private:
    void Put(uint64_t value, size_t count) {
        for (size_t i = 0; i < count; ++i) bytes_.push_back(static_cast<std::byte>(value >> 8 * i));
    }

    std::vector<std::byte> bytes_;
};

// `bytes` reaches far enough.
inline uint32_t Load16(std::span<const std::byte> bytes, size_t offset) {
    return std::to_integer<uint32_t>(bytes[offset]) | std::to_integer<uint32_t>(bytes[offset + 1])
                                                          << 8;
}
inline uint32_t Load32(std::span<const std::byte> bytes, size_t offset) {
    return Load16(bytes, offset) | Load16(bytes, offset + 2) << 16;
}

}  // namespace tavo
