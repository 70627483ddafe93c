// Reads AVI files with uncompressed video of the eleven formats, with or without OpenDML. It finds
// frames by walking the chunks, so it also reads files whose index is wrong or missing.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/avi/byte_store.h"
#include "host/avi/frame_rate.h"
#include "host/avi/pixel_format.h"
#include "host/avi/planar_layout.h"
#include "host/avi/riff.h"

namespace tavo {

enum class AviResult {
    Ok,
    NotAvi,
    NoVideo,      // no video stream, or no header for it
    OtherFormat,  // compressed, or none of the eleven formats
    BadSize,      // a width or height of 0, or a frame of 2 GiB
    NoFrames,
    OtherFrameLayout,  // frames whose length is not that of the format
    ReadFailed,
};

// Open allocates 8 bytes per frame, and one frame. It may throw std::bad_alloc.
class AviReader {
  public:
    // `store` outlives the reader. The list of frames ends where the chunks make no sense.
    AviResult Open(ByteStore& store);

    const VideoFormat& Video() const { return video_; }
    FrameRate Rate() const { return rate_; }
    uint32_t FrameBytes() const { return frameSize_; }
    uint32_t FrameCount() const { return static_cast<uint32_t>(frames_.size()); }

    // Whether the file ends, or stops making sense, before it should.
    bool IsTruncated() const { return truncated_; }

    // `index` is below FrameCount; `target` has FrameBytes. Planar frames come without padding,
    // whatever the file has.
    IoResult ReadFrame(uint32_t index, std::span<std::byte> target);

  private:
    struct Chunk {
        uint32_t code = 0;
        uint32_t size = 0;  // as in the file
        uint64_t data = 0;
        uint64_t end = 0;   // of the data, within the parent
        uint64_t next = 0;  // where the next chunk begins
    };

    static bool IsTruncated(const Chunk& chunk) { return chunk.data + chunk.size > chunk.end; }
    bool Peek(uint64_t offset, std::span<std::byte> target);
    bool ReadChunk(uint64_t offset, uint64_t parentEnd, Chunk& chunk);
    uint32_t ReadCode(uint64_t offset);
    void WalkSegment(const Chunk& riff);
    void WalkHeader(const Chunk& list);
    void WalkStream(const Chunk& list);
    void WalkMovie(uint64_t begin, uint64_t end, int depth);
    void ReadStreamHeader(const Chunk& chunk);
    void ReadStreamFormat(const Chunk& chunk);
    void AddFrame(const Chunk& chunk);
    bool AcceptLayout(uint32_t length);

    ByteStore* store_ = nullptr;
    // The last read: small chunks are close together.
    std::vector<std::byte> cache_;
    uint64_t cacheStart_ = 0;
    uint64_t fileEnd_ = 0;
    VideoFormat video_;
    FrameRate rate_;
    uint32_t frameSize_ = 0;
    uint32_t storedSize_ = 0;           // of a frame in the file
    std::optional<FilePlanes> layout_;  // of planar frames in the file, once one was seen
    std::vector<std::byte> stored_;     // a frame as it is in the file
    std::vector<uint64_t> frames_;
    int streamCount_ = 0;
    int videoStream_ = -1;
    AviResult formatResult_ = AviResult::NoVideo;
    bool mixedLayouts_ = false;
    bool truncated_ = false;
};

}  // namespace tavo
