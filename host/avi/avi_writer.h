// Writes one stream of uncompressed video as an AVI file of any size: the first gigabyte is a
// plain AVI with its index, all further ones follow the OpenDML extension (AVI 2.0).

#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "host/avi/aspect_ratio.h"
#include "host/avi/avi_layout.h"
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
    void SetRepeats(std::vector<uint32_t> repeats) { layout_.SetRepeats(std::move(repeats)); }

    // Writes the indexes and the final header. On a full disk, frames are given up from the end
    // until the index fits. A second call does nothing.
    IoResult Finish();

    uint64_t FrameCount() const { return layout_.FrameCount(); }
    // Frames and repeats; after Finish.
    uint64_t SlotCount() const { return layout_.SlotCount(); }
    uint64_t BytesWritten() const { return position_; }

  private:
    IoResult Append(std::span<const std::byte> bytes);
    // Takes back what was appended since.
    void CutBack(uint64_t position);
    IoResult AppendFrame(std::span<const std::byte> frame);
    IoResult OpenSegment();
    IoResult CloseSegment(AviSegment& segment);
    IoResult EnsureOpenSegment();
    IoResult PatchSize(uint64_t chunk, uint64_t end);
    IoResult WriteRepeats(const AviSegment& segment);
    IoResult RewriteIndexes(const AviSegment& segment);
    IoResult TryFinish();
    bool DropFrames(uint32_t atLeast);
    std::vector<std::byte> Header() const;

    ByteStore& store_;
    const VideoFormat video_;
    const AviLimits limits_;
    AviLayout layout_;
    FrameRate rate_;
    AspectRatio shown_;
    uint64_t position_ = 0;
    bool failed_ = false;
    bool finished_ = false;
};

}  // namespace tavo
