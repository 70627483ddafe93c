// Writes a stream of uncompressed video, and one of sound, as an AVI file of any size. The first
// segment is a plain AVI with its index; the others follow the OpenDML extension (AVI 2.0).

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
    // No RIFF segment gets longer, unless by one frame alone and its sound. Below 2 GiB.
    uint64_t segmentBytes = uint64_t{1000} << 20;
    // How many segments the header can list.
    uint32_t segments = 1024;
    // How much longer a segment gets by sound far ahead, and in chunks of what size.
    uint64_t aheadBytes = uint64_t{512} << 20;
    uint32_t aheadChunkBytes = 4u << 20;
};

// Not thread-safe. The constructor and the destructor write nothing; the file is complete after
// Finish. Members that append may throw std::bad_alloc; the file stays valid then.
class AviWriter {
  public:
    // `store` is empty and outlives the writer; `video` has a frame size.
    AviWriter(ByteStore& store, const VideoFormat& video, FrameRate rate, AviLimits limits = {});

    // The display aspect ratio. Before Begin.
    void SetDisplayAspect(AspectRatio aspect) { displayAspect_ = aspect; }

    // The file has a stream of sound. Before Begin.
    void SetSound(const SoundFormat& sound) { layout_.SetSound(sound, limits_.aheadChunkBytes); }

    // Writes a preliminary header. Before any frame.
    IoResult Begin();

    // `frame` has the size of a frame. After a failure nothing more can be appended; the file ends
    // with the frame before, and Finish still completes it. TooLarge when all segments are used.
    IoResult WriteFrame(std::span<const std::byte> frame);

    // Sound behind the frame just written that must not wait for its repeats: AheadChunkBytes each,
    // any number while CanWriteAhead. Before ReserveRepeats.
    bool CanWriteAhead() const;
    uint32_t AheadChunkBytes() const { return layout_.AheadChunkBytes(); }
    IoResult WriteAhead(std::span<const std::byte> sound);

    // Reserves space for that many repeats of the frame just written. Once per frame.
    IoResult ReserveRepeats(uint32_t repeats);

    // Writes sound behind the frame just written and its repeats: whole blocks, at most
    // kMaxSoundBytes. Once per frame.
    static constexpr uint32_t kMaxSoundBytes = 256u << 20;
    IoResult WriteSound(std::span<const std::byte> sound);

    // Any time before Finish. One number per frame: how often it is repeated, up to what was
    // reserved. A repeat is an empty chunk.
    void SetRate(FrameRate rate) { rate_ = rate; }
    void SetRepeats(std::vector<uint32_t> repeats) { layout_.SetRepeats(std::move(repeats)); }

    // Writes the indexes and the final header. On a full disk it drops frames from the end until
    // the index fits. A second call does nothing.
    IoResult Finish();

    uint64_t FrameCount() const { return layout_.FrameCount(); }
    // Frames and repeats; after Finish.
    uint64_t SlotCount() const { return layout_.SlotCount(); }
    uint64_t SoundBlocks() const { return layout_.SoundBlocks(); }
    uint64_t BytesWritten() const { return position_; }

  private:
    IoResult Append(std::span<const std::byte> bytes);
    // Drops what was appended behind this position.
    void CutBack(uint64_t position);
    IoResult AppendChunk(uint32_t code, std::span<const std::byte> data);
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
    AspectRatio displayAspect_;
    uint64_t position_ = 0;
    bool failed_ = false;
    bool finished_ = false;
};

}  // namespace tavo
