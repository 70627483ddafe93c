// The arithmetic of segments, frames and repeats.

#include "host/avi/avi_layout.h"

#include <algorithm>

#include "host/avi/riff.h"

namespace tavo {

AviLayout::AviLayout(const VideoFormat& video)
    : frameSize_(tavo::FrameSize(video).value_or(0)), chunkCode_(FrameChunkCode(video)) {}

void AviLayout::AddSegment(uint64_t start, uint64_t movie) {
    AviSegment segment;
    segment.start = start;
    segment.movie = movie;
    segment.firstFrame = FrameCount();
    segments_.push_back(segment);
}

void AviLayout::AddFrame() {
    // So that neither grows without the other.
    soundBytes_.reserve(soundBytes_.size() + 1);
    reserved_.push_back(0);
    soundBytes_.push_back(0);
    ++segments_.back().frames;
}

void AviLayout::DropFrame() {
    --segments_.back().frames;
    segments_.back().reservedRepeats -= reserved_.back();
    SetLastSound(0);
    reserved_.pop_back();
    soundBytes_.pop_back();
}

void AviLayout::SetReserved(uint32_t repeats) {
    reserved_.back() = repeats;
    segments_.back().reservedRepeats += repeats;
}

void AviLayout::SetLastSound(uint32_t bytes) {
    AviSegment& segment = segments_.back();
    const uint32_t last = FrameCount() - 1;
    segment.soundSpace -= SoundSpace(last);
    segment.soundChunks -= soundBytes_.back() > 0 ? 1 : 0;
    soundBytes_.back() = bytes;
    segment.soundSpace += SoundSpace(last);
    segment.soundChunks += bytes > 0 ? 1 : 0;
}

uint32_t AviLayout::RepeatsOf(uint32_t frame) const {
    return frame < repeats_.size() ? std::min(repeats_[frame], reserved_[frame]) : 0;
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

uint64_t AviLayout::ReservedSize(uint32_t frame) const {
    return uint64_t{reserved_[frame]} * kChunkHeader;
}

uint64_t AviLayout::SoundSpace(uint32_t frame) const {
    return soundBytes_[frame] > 0 ? kChunkHeader + Padded(soundBytes_[frame]) : 0;
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
        for (uint64_t n = 0; n < RepeatsOf(frame); ++n) {
            entries.push_back({offset + n * kChunkHeader, chunkCode_, 0});
        }
        offset += ReservedSize(frame);
        if (soundBytes_[frame] > 0) entries.push_back({offset, kSoundChunk, soundBytes_[frame]});
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
    for (uint32_t i = 0; i < segment.frames; ++i) bytes += soundBytes_[segment.firstFrame + i];
    return bytes / sound_.BlockBytes();
}

uint64_t AviLayout::SoundBlocks() const {
    uint64_t blocks = 0;
    if (!sound_.IsKnown()) return blocks;
    for (const AviSegment& segment : segments_) blocks += SoundBlocksOf(segment);
    return blocks;
}

}  // namespace tavo
