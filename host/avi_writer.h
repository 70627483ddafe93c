// Writes one stream of uncompressed video as an AVI file of any size: the first gigabyte is a
// plain AVI with its index, all further ones follow the OpenDML extension (AVI 2.0).

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/byte_store.h"
#include "host/frame_rate.h"
#include "host/pixel_format.h"

namespace tavo {

struct AviLimits {
    // A RIFF segment ends before it would be longer, unless one frame alone is. Below 2 GiB.
    uint64_t segmentBytes = uint64_t{1000} << 20;
    // How many segments the header has room for.
    uint32_t segments = 1024;
};

// Not for several threads at once. Nothing is written by constructor or destructor: a file is whole
// after Finish. Members that append frames may throw std::bad_alloc; the file stays valid then.
class AviWriter {
  public:
    // `store` is empty and outlives the writer; `video` has a frame size.
    AviWriter(ByteStore& store, const VideoFormat& video, FrameRate rate, AviLimits limits = {});

    // Writes the header. Before any frame.
    IoResult Begin();

    // `frame` is one frame of the format, in size too. After a failure the file ends with the frame
    // before; nothing more can be appended, but Finish still makes the file whole. TooLarge when
    // all segments are used.
    IoResult WriteFrame(std::span<const std::byte> frame);

    // Any time before Finish: the header is settled there.
    void SetRate(FrameRate rate) { rate_ = rate; }

    // Writes the indexes and the final header. On a full disk, frames are given up from the end
    // until the index fits. A second call does nothing.
    IoResult Finish();

    uint64_t FrameCount() const { return frameCount_; }
    uint64_t BytesWritten() const { return position_; }

  private:
    // All frames have one size, so an index follows from where the movie list begins.
    struct Segment {
        uint64_t start = 0;  // of the RIFF chunk
        uint64_t movie = 0;  // of its movi list
        uint64_t index = 0;  // of the index chunk at the list's end; 0 while the segment is open
        uint32_t frames = 0;
    };

    uint64_t FrameChunkSize() const;
    uint64_t FramesEnd(const Segment& segment) const;
    bool IsFull(const Segment& segment) const;

    IoResult Append(std::span<const std::byte> bytes);
    IoResult AppendFrame(std::span<const std::byte> frame);
    IoResult OpenSegment();
    IoResult CloseSegment(Segment& segment);
    IoResult EnsureOpenSegment();
    IoResult PatchSize(uint64_t chunk, uint64_t end);
    IoResult TryFinish();
    bool DropLastFrame();

    std::vector<std::byte> SegmentIndex(const Segment& segment) const;
    std::vector<std::byte> OldIndex(const Segment& segment) const;
    std::vector<std::byte> Header() const;

    ByteStore& store_;
    const VideoFormat video_;
    const uint32_t frameSize_;
    const uint32_t chunkCode_;
    const AviLimits limits_;
    FrameRate rate_;
    uint64_t position_ = 0;
    uint32_t frameCount_ = 0;
    std::vector<Segment> segments_;
    bool failed_ = false;
    bool finished_ = false;
};

}  // namespace tavo
