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
    reserved_.push_back(0);
    ++segments_.back().frames;
}

void AviLayout::DropFrame() {
    --segments_.back().frames;
    segments_.back().reservedRepeats -= reserved_.back();
    reserved_.pop_back();
}

void AviLayout::SetReserved(uint32_t repeats) {
    reserved_.back() = repeats;
    segments_.back().reservedRepeats += repeats;
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

uint64_t AviLayout::FramesEnd(const AviSegment& segment) const {
    return segment.movie + kListHeader + segment.frames * FrameChunkSize() +
           segment.reservedRepeats * kChunkHeader;
}

uint64_t AviLayout::ClosedEnd(const AviSegment& segment, uint64_t slots) const {
    const uint64_t end = FramesEnd(segment) + StreamIndexSize(slots);
    return segment.HasOldIndex() ? end + OldIndexSize(slots) : end;
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
        entries.push_back({offset, false});
        offset += FrameChunkSize();
        for (uint64_t n = 0; n < RepeatsOf(frame); ++n) {
            entries.push_back({offset + n * kChunkHeader, true});
        }
        offset += ReservedSize(frame);
    }
    return entries;
}

std::vector<std::byte> AviLayout::StreamIndexOf(const AviSegment& segment) const {
    const std::vector<IndexEntry> entries = EntriesOf(segment);
    return StreamIndex({chunkCode_, frameSize_, segment.movie, entries}, segment.indexEntries);
}

std::vector<std::byte> AviLayout::OldIndexOf(const AviSegment& segment) const {
    const std::vector<IndexEntry> entries = EntriesOf(segment);
    return OldIndex({chunkCode_, frameSize_, segment.movie, entries}, segment.indexEntries);
}

std::vector<SegmentEntry> AviLayout::SuperIndex() const {
    std::vector<SegmentEntry> entries;
    for (const AviSegment& segment : segments_) {
        const uint32_t slots = SlotsOf(segment);
        entries.push_back({segment.index, static_cast<uint32_t>(StreamIndexSize(slots)), slots});
    }
    return entries;
}

}  // namespace tavo
