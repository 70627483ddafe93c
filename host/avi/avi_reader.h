// Reads AVI files with uncompressed video of the eleven formats, OpenDML or not. Frames are found
// by walking the chunks, so that files with a bad index, or cut off before it, can be read too.

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
    BadSize,      // a width or height that no frame can have
    NoFrames,
    OtherFrameLayout,  // frames of another length than the format's
    ReadFailed,
};

// Opening needs memory of 8 bytes per frame, and of one frame, and may throw std::bad_alloc.
class AviReader {
  public:
    // `store` outlives the reader. Damage behind the header ends the list of frames there.
    AviResult Open(ByteStore& store);

    const VideoFormat& Video() const { return video_; }
    FrameRate Rate() const { return rate_; }
    uint32_t FrameBytes() const { return frameSize_; }
    uint32_t FrameCount() const { return static_cast<uint32_t>(frames_.size()); }

    // True when the file ends, or makes no sense any more, before it should.
    bool IsCutOff() const { return cutOff_; }

    // `index` is below FrameCount, `target` as long as FrameBytes. Planar frames are laid out
    // tightly, whatever the file has.
    IoResult ReadFrame(uint32_t index, std::span<std::byte> target);

  private:
    struct Chunk {
        uint32_t code = 0;
        uint32_t size = 0;  // as the file has it
        uint64_t data = 0;
        uint64_t end = 0;   // of the data; not beyond the parent
        uint64_t next = 0;  // where the next chunk begins
    };

    static bool IsCut(const Chunk& chunk) { return chunk.data + chunk.size > chunk.end; }
    bool Peek(uint64_t offset, std::span<std::byte> target);
    bool ReadChunk(uint64_t offset, uint64_t parentEnd, Chunk& chunk);
    uint32_t ReadCode(uint64_t offset);
    void WalkSegment(const Chunk& riff);
    void WalkHeader(const Chunk& list);
    void WalkStream(const Chunk& list);
    void WalkMovie(uint64_t begin, uint64_t end, int depth);
    void ReadStreamHeader(const Chunk& chunk);
    void ReadStreamFormat(const Chunk& chunk);
    void TakeFrame(const Chunk& chunk);
    bool TakeLayout(uint32_t length);

    ByteStore* store_ = nullptr;
    // What was read last while walking: small chunks stand close together.
    std::vector<std::byte> window_;
    uint64_t windowStart_ = 0;
    uint64_t fileEnd_ = 0;
    VideoFormat video_;
    FrameRate rate_;
    uint32_t frameSize_ = 0;
    uint32_t storedSize_ = 0;             // of a frame in the file
    std::optional<PlanarLayout> layout_;  // in the file; of planar formats once a frame was seen
    std::vector<std::byte> stored_;       // a frame before it is laid out anew
    std::vector<uint64_t> frames_;
    int streamCount_ = 0;
    int videoStream_ = -1;
    AviResult formatResult_ = AviResult::NoVideo;
    bool otherLayout_ = false;
    bool cutOff_ = false;
};

}  // namespace tavo
