// Writes one stream of uncompressed video as an AVI file of any size: the first gigabyte is a
// plain AVI with its index, all further ones follow the OpenDML extension (AVI 2.0).

#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "host/avi/aspect_ratio.h"
#include "host/avi/byte_store.h"
#include "host/avi/frame_rate.h"
#include "host/avi/pixel_format.h"

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

    // How the picture is to be shown. Before Begin.
    void SetShownAspect(AspectRatio aspect) { shown_ = aspect; }

    // Writes the header. Before any frame.
    IoResult Begin();

    // `frame` is one frame of the format, in size too. After a failure the file ends with the frame
    // before; nothing more can be appended, but Finish still makes the file whole. TooLarge when
    // all segments are used.
    IoResult WriteFrame(std::span<const std::byte> frame);

    // Leaves room for showing the frame just written again, this often at most. Once for a frame.
    IoResult LeaveRoom(uint32_t repeats);

    // Any time before Finish: all that follows from these is settled there. A number for each
    // frame: how often it is shown once more, within the room that was left for it. A repeat is an
    // empty chunk.
    void SetRate(FrameRate rate) { rate_ = rate; }
    void SetRepeats(std::vector<uint32_t> repeats) { repeats_ = std::move(repeats); }

    // Writes the indexes and the final header. On a full disk, frames are given up from the end
    // until the index fits. A second call does nothing.
    IoResult Finish();

    uint64_t FrameCount() const { return frameCount_; }
    // Frames and repeats; after Finish.
    uint64_t SlotCount() const;
    uint64_t BytesWritten() const { return position_; }

  private:
    // All frames have one size, so an index follows from where the movie list begins and from the
    // rooms. Segments that are closed before the repeats are known have longer indexes for them.
    struct Segment {
        uint64_t start = 0;  // of the RIFF chunk
        uint64_t movie = 0;  // of its movi list
        uint64_t index = 0;  // of the index chunk at the list's end; 0 while the segment is open
        uint32_t firstFrame = 0;
        uint32_t frames = 0;
        uint64_t room = 0;          // for repeats
        uint64_t indexEntries = 0;  // that its index has, or has room for
    };

    // One chunk of the movie list: a frame, or an empty one that repeats it.
    struct Entry {
        uint64_t offset;  // from the movi list
        bool repeat;
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
    uint64_t ClosedEnd(const Segment& segment, uint64_t slots) const;
    uint64_t ReachableEnd(uint64_t wanted);
    bool DropFrames(uint32_t atLeast);
    IoResult WriteRepeats(const Segment& segment);
    IoResult RewriteIndexes(const Segment& segment);

    uint32_t RepeatsOf(uint32_t frame) const;
    uint32_t SlotsOf(const Segment& segment) const;
    std::vector<Entry> EntriesOf(const Segment& segment) const;
    std::vector<std::byte> SegmentIndex(const Segment& segment) const;
    std::vector<std::byte> OldIndex(const Segment& segment) const;
    std::vector<std::byte> Header() const;

    ByteStore& store_;
    const VideoFormat video_;
    const uint32_t frameSize_;
    const uint32_t chunkCode_;
    const AviLimits limits_;
    FrameRate rate_;
    AspectRatio shown_;
    uint64_t position_ = 0;
    uint32_t frameCount_ = 0;
    std::vector<Segment> segments_;
    std::vector<uint32_t> rooms_;  // of each frame
    std::vector<uint32_t> repeats_;
    bool failed_ = false;
    bool finished_ = false;
};

}  // namespace tavo
