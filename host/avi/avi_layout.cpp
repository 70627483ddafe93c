// The arithmetic of segments, frames and repeats.

#include "host/avi/avi_layout.h"

#include <algorithm>

#include "host/avi/riff.h"

namespace tavo {

AviLayout::AviLayout(const VideoFormat& video)
    : frameSize_(tavo::FrameSize(video).value_or(0)), chunkCode_(FrameChunkCode(video)) {}

void AviLayout::SetSound(const SoundFormat& sound, uint32_t aheadBytes) {
    sound_ = sound;
    const uint32_t blocks = 2 * sound.BlockBytes();
    aheadChunk_ = blocks > 0 ? std::max(aheadBytes / blocks, 1u) * blocks : 0;
}

void AviLayout::AddSegment(uint64_t start, uint64_t movie) {
    AviSegment segment;
    segment.start = start;
    segment.movie = movie;
    segment.firstFrame = FrameCount();
    segments_.push_back(segment);
}

void AviLayout::AddFrame() {
    frames_.push_back({});
    ++segments_.back().frames;
}

void AviLayout::DropFrame() {
    SetLastSound(0);
    AviSegment& segment = segments_.back();
    --segment.frames;
    segment.reservedRepeats -= frames_.back().reserved;
    segment.soundChunks -= frames_.back().ahead;
    segment.soundSpace -= AheadSpace(FrameCount() - 1);
    frames_.pop_back();
}

void AviLayout::AddAhead() {
    AviSegment& segment = segments_.back();
    ++frames_.back().ahead;
    ++segment.soundChunks;
    segment.soundSpace += kChunkHeader + aheadChunk_;
}

void AviLayout::SetReserved(uint32_t repeats) {
    frames_.back().reserved = repeats;
    segments_.back().reservedRepeats += repeats;
}

void AviLayout::SetLastSound(uint32_t bytes) {
    AviSegment& segment = segments_.back();
    const uint32_t last = FrameCount() - 1;
    segment.soundSpace -= SoundSpace(last);
    segment.soundChunks -= LastSound() > 0 ? 1 : 0;
    frames_.back().sound = bytes;
    segment.soundSpace += SoundSpace(last);
    segment.soundChunks += bytes > 0 ? 1 : 0;
}

uint32_t AviLayout::RepeatsOf(uint32_t frame) const {
    return frame < repeats_.size() ? std::min(repeats_[frame], frames_[frame].reserved) : 0;
}

uint32_t AviLayout::SlotsOf(const AviSegment& segment) const {
    uint32_t slots = segment.frames;
    for (uint32_t i = 0; i < segment.frames; ++i) slots += RepeatsOf(segment.firstFrame + i);
    return slots;
}

uint64_t AviLayout::SlotCount() const {
    uint64_t slots = 0;
    for (const AviSegment& segment : segments_) slots += SlotsOf(segment);
    return slots;
}

uint64_t AviLayout::FrameChunkSize() const { return kChunkHeader + Padded(frameSize_); }

uint64_t AviLayout::AheadSpace(uint32_t frame) const {
    return uint64_t{frames_[frame].ahead} * (kChunkHeader + aheadChunk_);
}

uint64_t AviLayout::ReservedSize(uint32_t frame) const {
    return uint64_t{frames_[frame].reserved} * kChunkHeader;
}

uint64_t AviLayout::SoundSpace(uint32_t frame) const {
    const uint32_t bytes = frames_[frame].sound;
    return bytes > 0 ? kChunkHeader + Padded(bytes) : 0;
}

uint64_t AviLayout::FramesEnd(const AviSegment& segment) const {
    return segment.movie + kListHeader + segment.frames * FrameChunkSize() +
           segment.reservedRepeats * kChunkHeader + segment.soundSpace;
}

uint64_t AviLayout::ClosedEnd(const AviSegment& segment, uint64_t slots) const {
    uint64_t end = FramesEnd(segment) + StreamIndexSize(slots);
    if (sound_.IsKnown()) end += StreamIndexSize(segment.soundChunks);
    return segment.HasOldIndex() ? end + OldIndexSize(slots + segment.soundChunks) : end;
}

bool AviLayout::IsFull(const AviSegment& segment, uint64_t limit) const {
    if (segment.frames == 0) return false;
    AviSegment longer = segment;
    ++longer.frames;
    return ClosedEnd(longer, longer.frames + longer.reservedRepeats) - segment.start > limit;
}

std::vector<std::byte> AviLayout::RepeatChunks(uint32_t frame) const {
    RiffBlock block;
    for (uint32_t n = RepeatsOf(frame); n > 0; --n) block.Close(block.Open(chunkCode_));
    block.PadTo(ReservedSize(frame));
    return block.Take();
}

std::vector<IndexEntry> AviLayout::EntriesOf(const AviSegment& segment) const {
    std::vector<IndexEntry> entries;
    uint64_t offset = kListHeader;
    for (uint32_t i = 0; i < segment.frames; ++i) {
        const uint32_t frame = segment.firstFrame + i;
        entries.push_back({offset, chunkCode_, frameSize_});
        offset += FrameChunkSize();
        for (uint64_t n = 0; n < frames_[frame].ahead; ++n) {
            entries.push_back(
                {offset + n * (kChunkHeader + aheadChunk_), kSoundChunk, aheadChunk_});
        }
        offset += AheadSpace(frame);
        for (uint64_t n = 0; n < RepeatsOf(frame); ++n) {
            entries.push_back({offset + n * kChunkHeader, chunkCode_, 0});
        }
        offset += ReservedSize(frame);
        const uint32_t sound = frames_[frame].sound;
        if (sound > 0) entries.push_back({offset, kSoundChunk, sound});
        offset += SoundSpace(frame);
    }
    return entries;
}

std::vector<std::byte> AviLayout::StreamIndexOf(const AviSegment& segment) const {
    return StreamIndex(EntriesOf(segment), chunkCode_, segment.movie, segment.indexEntries);
}

std::vector<std::byte> AviLayout::SoundIndexOf(const AviSegment& segment) const {
    return StreamIndex(EntriesOf(segment), kSoundChunk, segment.movie, segment.soundChunks);
}

std::vector<std::byte> AviLayout::OldIndexOf(const AviSegment& segment) const {
    return OldIndex(EntriesOf(segment), segment.indexEntries + segment.soundChunks);
}

std::vector<SegmentEntry> AviLayout::SuperIndex() const {
    std::vector<SegmentEntry> entries;
    for (const AviSegment& segment : segments_) {
        const uint32_t slots = SlotsOf(segment);
        entries.push_back({segment.index, static_cast<uint32_t>(StreamIndexSize(slots)), slots});
    }
    return entries;
}

std::vector<SegmentEntry> AviLayout::SoundSuperIndex() const {
    std::vector<SegmentEntry> entries;
    if (!sound_.IsKnown()) return entries;
    for (const AviSegment& segment : segments_) {
        entries.push_back({segment.index + StreamIndexSize(segment.indexEntries),
                           static_cast<uint32_t>(StreamIndexSize(segment.soundChunks)),
                           static_cast<uint32_t>(SoundBlocksOf(segment))});
    }
    return entries;
}

uint64_t AviLayout::SoundBlocksOf(const AviSegment& segment) const {
    uint64_t bytes = 0;
    for (uint32_t i = 0; i < segment.frames; ++i) {
        const Behind& behind = frames_[segment.firstFrame + i];
        bytes += uint64_t{behind.ahead} * aheadChunk_ + behind.sound;
    }
    return bytes / sound_.BlockBytes();
}

uint64_t AviLayout::SoundBlocks() const {
    uint64_t blocks = 0;
    if (!sound_.IsKnown()) return blocks;
    for (const AviSegment& segment : segments_) blocks += SoundBlocksOf(segment);
    return blocks;
}

}  // namespace tavo
