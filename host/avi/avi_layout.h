// The offsets of everything in an AVI file that is being written. No input or output here.

#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "host/avi/avi_header.h"
#include "host/avi/avi_index.h"
#include "host/avi/pixel_format.h"

namespace tavo {

// A RIFF segment: a movie list of frames, each followed by sound far ahead, by space reserved for
// repeats and by sound, then its indexes.
struct AviSegment {
    uint64_t start = 0;  // of the RIFF chunk
    uint64_t movie = 0;  // of its movi list
    uint64_t index = 0;  // of the first index at the list's end; 0 while the segment is open
    uint32_t firstFrame = 0;
    uint32_t frames = 0;
    uint64_t reservedRepeats = 0;  // empty chunks at most
    uint64_t indexEntries = 0;     // of video that its index has, or is padded to
    uint32_t soundChunks = 0;
    uint64_t soundSpace = 0;  // bytes of these chunks

    bool IsOpen() const { return index == 0; }
    // Only the first segment has an index for readers without OpenDML.
    bool HasOldIndex() const { return start == 0; }
};

// All frames have one size, so an index follows from the start of the movie list and the space
// reserved behind each frame and the sizes of its sound. A segment that is closed before the
// repeats are known has an index for as many as were reserved. Members that add something may throw
// std::bad_alloc, and change nothing then.
class AviLayout {
  public:
    // `video` has a frame size.
    explicit AviLayout(const VideoFormat& video);

    // Before the first segment. Files without sound have no index of it. Sound far ahead comes in
    // chunks of about `aheadBytes`.
    void SetSound(const SoundFormat& sound, uint32_t aheadBytes);
    const SoundFormat& Sound() const { return sound_; }
    // Whole blocks, and an even number; 0 without sound.
    uint32_t AheadChunkBytes() const { return aheadChunk_; }

    uint32_t FrameSize() const { return frameSize_; }
    uint32_t ChunkCode() const { return chunkCode_; }
    uint32_t FrameCount() const { return static_cast<uint32_t>(frames_.size()); }
    // Frames and repeats.
    uint64_t SlotCount() const;

    const std::vector<AviSegment>& Segments() const { return segments_; }
    AviSegment& LastSegment() { return segments_.back(); }
    // So that AddSegment cannot throw.
    void ReserveSegment() { segments_.reserve(segments_.size() + 1); }
    void AddSegment(uint64_t start, uint64_t movie);
    void DropSegment() { segments_.pop_back(); }

    // Of the last segment: adds a frame, drops the last one and its sound, adds a chunk of sound
    // far ahead behind it, reserves space, adds its sound.
    void AddFrame();
    void DropFrame();
    void AddAhead();
    void SetReserved(uint32_t repeats);
    uint32_t LastReserved() const { return frames_.back().reserved; }
    void SetLastSound(uint32_t bytes);
    uint32_t LastSound() const { return frames_.back().sound; }

    // How often each frame is repeated, up to what was reserved.
    void SetRepeats(std::vector<uint32_t> repeats) { repeats_ = std::move(repeats); }
    uint32_t RepeatsOf(uint32_t frame) const;
    uint32_t SlotsOf(const AviSegment& segment) const;

    // Bytes of a frame with its chunk header, of the sound far ahead and of the space reserved
    // behind it, and of its sound, with their headers.
    uint64_t FrameChunkSize() const;
    uint64_t AheadSpace(uint32_t frame) const;
    uint64_t ReservedSize(uint32_t frame) const;
    uint64_t SoundSpace(uint32_t frame) const;
    uint64_t FramesEnd(const AviSegment& segment) const;
    // Where the file ends when the segment is closed with that many entries in its indexes.
    uint64_t ClosedEnd(const AviSegment& segment, uint64_t slots) const;
    // Whether one more frame would make the segment longer than `limit`.
    bool IsFull(const AviSegment& segment, uint64_t limit) const;

    // The reserved space behind a frame: its repeats, then junk.
    std::vector<std::byte> RepeatChunks(uint32_t frame) const;
    // The indexes follow each other behind the segment's frames.
    std::vector<std::byte> StreamIndexOf(const AviSegment& segment) const;
    std::vector<std::byte> SoundIndexOf(const AviSegment& segment) const;
    std::vector<std::byte> OldIndexOf(const AviSegment& segment) const;
    // For the header.
    std::vector<SegmentEntry> SuperIndex() const;
    std::vector<SegmentEntry> SoundSuperIndex() const;
    uint64_t SoundBlocks() const;

  private:
    // What lies behind a frame.
    struct Behind {
        uint32_t ahead = 0;     // chunks
        uint32_t reserved = 0;  // repeats
        uint32_t sound = 0;     // bytes
    };

    std::vector<IndexEntry> EntriesOf(const AviSegment& segment) const;
    uint64_t SoundBlocksOf(const AviSegment& segment) const;

    const uint32_t frameSize_;
    const uint32_t chunkCode_;
    std::vector<AviSegment> segments_;
    SoundFormat sound_;
    uint32_t aheadChunk_ = 0;
    std::vector<Behind> frames_;
    std::vector<uint32_t> repeats_;
};

}  // namespace tavo
