// The AVI writer: segments, their indexes, and a header that is written again at the end.

#include "host/avi/avi_writer.h"

#include <algorithm>
#include <array>

#include "host/avi/avi_header.h"
#include "host/avi/riff.h"

namespace tavo {
namespace {

constexpr uint32_t kKeyFrame = 0x10;
constexpr uint32_t kNoKeyFrame = 0x80000000;  // in an OpenDML index, beside the size
constexpr uint32_t kIndexOfChunks = 1;
constexpr uint32_t kLongsPerEntry = 2;
constexpr uint64_t kIndexHeader = kChunkHeader + 24;
constexpr uint64_t kIndexEntry = 8;
constexpr uint64_t kOldIndexEntry = 16;

std::array<std::byte, kListHeader> ListStart(uint32_t code, uint32_t kind) {
    std::array<std::byte, kListHeader> bytes{};
    for (size_t i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::byte>(code >> 8 * i);
        bytes[8 + i] = static_cast<std::byte>(kind >> 8 * i);
    }
    return bytes;
}

std::array<std::byte, 4> Number(uint64_t value) {
    std::array<std::byte, 4> bytes{};
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<std::byte>(value >> 8 * i);
    return bytes;
}

// A chunk that nobody reads, of `size` bytes in all.
std::vector<std::byte> Junk(uint64_t size) {
    RiffBlock block;
    const size_t chunk = block.Open(kJunk);
    block.PutZeros(static_cast<size_t>(size - kChunkHeader));
    block.Close(chunk);
    return block.Take();
}

// Up to `size`; sizes are multiples of a chunk header.
void PadWithJunk(std::vector<std::byte>& bytes, uint64_t size) {
    if (bytes.size() >= size) return;
    const std::vector<std::byte> junk = Junk(size - bytes.size());
    bytes.insert(bytes.end(), junk.begin(), junk.end());
}

}  // namespace

AviWriter::AviWriter(ByteStore& store, const VideoFormat& video, FrameRate rate, AviLimits limits)
    : store_(store),
      video_(video),
      frameSize_(FrameSize(video).value_or(0)),
      chunkCode_(FrameChunkCode(video)),
      limits_(limits),
      rate_(rate) {}

uint64_t AviWriter::FrameChunkSize() const { return kChunkHeader + Padded(frameSize_); }

uint64_t AviWriter::FramesEnd(const Segment& segment) const {
    return segment.movie + kListHeader + segment.frames * FrameChunkSize() +
           segment.room * kChunkHeader;
}

bool AviWriter::IsFull(const Segment& segment) const {
    if (segment.frames == 0) return false;
    const uint64_t entries = segment.frames + segment.room + 1;
    uint64_t end = FramesEnd(segment) + FrameChunkSize() + kIndexHeader + entries * kIndexEntry;
    if (segment.start == 0) end += kChunkHeader + entries * kOldIndexEntry;
    return end - segment.start > limits_.segmentBytes;
}

IoResult AviWriter::Append(std::span<const std::byte> bytes) {
    const IoResult result = store_.WriteAt(position_, bytes);
    if (result == IoResult::Ok) position_ += bytes.size();
    return result;
}

// The size of the chunk that reaches from `chunk` to `end`.
IoResult AviWriter::PatchSize(uint64_t chunk, uint64_t end) {
    return store_.WriteAt(chunk + 4, Number(end - chunk - kChunkHeader));
}

IoResult AviWriter::Begin() {
    const IoResult result = OpenSegment();
    failed_ = result != IoResult::Ok;
    return result;
}

IoResult AviWriter::OpenSegment() {
    Segment segment;
    segment.start = position_;
    segment.firstFrame = frameCount_;
    const bool first = segments_.empty();
    segments_.reserve(segments_.size() + 1);
    IoResult result = Append(ListStart(kRiff, first ? kAvi : kAvix));
    if (result == IoResult::Ok && first) result = Append(Header());
    segment.movie = position_;
    if (result == IoResult::Ok) result = Append(ListStart(kList, kMovieList));
    if (result != IoResult::Ok) {
        position_ = segment.start;
        store_.Truncate(position_);
        return result;
    }
    segments_.push_back(segment);
    return result;
}

IoResult AviWriter::EnsureOpenSegment() {
    Segment& last = segments_.back();
    if (last.index == 0 && !IsFull(last)) return IoResult::Ok;
    if (segments_.size() >= limits_.segments) return IoResult::TooLarge;
    const IoResult result = last.index == 0 ? CloseSegment(last) : IoResult::Ok;
    return result == IoResult::Ok ? OpenSegment() : result;
}

IoResult AviWriter::AppendFrame(std::span<const std::byte> frame) {
    std::array<std::byte, kChunkHeader> head{};
    std::ranges::copy(Number(chunkCode_), head.begin());
    std::ranges::copy(Number(frameSize_), head.begin() + 4);
    IoResult result = Append(head);
    if (result == IoResult::Ok) result = Append(frame);
    if (result == IoResult::Ok && frameSize_ % 2 != 0) result = Append(std::array{std::byte{0}});
    return result;
}

IoResult AviWriter::WriteFrame(std::span<const std::byte> frame) {
    if (failed_ || finished_ || frame.size() != frameSize_) return IoResult::Failed;
    rooms_.push_back(0);
    IoResult result = frameCount_ < 0xFFFFFFFF ? EnsureOpenSegment() : IoResult::TooLarge;
    if (result == IoResult::Ok) {
        const uint64_t before = position_;
        result = AppendFrame(frame);
        if (result != IoResult::Ok) {
            position_ = before;
            store_.Truncate(position_);
        }
    }
    if (result != IoResult::Ok) {
        rooms_.pop_back();
        failed_ = true;
        return result;
    }
    ++segments_.back().frames;
    ++frameCount_;
    return IoResult::Ok;
}

IoResult AviWriter::LeaveRoom(uint32_t repeats) {
    if (failed_ || finished_ || rooms_.empty() || rooms_.back() != 0) return IoResult::Failed;
    if (repeats == 0) return IoResult::Ok;
    const uint64_t before = position_;
    const IoResult result = Append(Junk(uint64_t{repeats} * kChunkHeader));
    if (result != IoResult::Ok) {
        position_ = before;
        store_.Truncate(position_);
        failed_ = true;
        return result;
    }
    rooms_.back() = repeats;
    segments_.back().room += repeats;
    return result;
}

uint64_t AviWriter::SlotCount() const {
    uint64_t slots = 0;
    for (const Segment& segment : segments_) slots += SlotsOf(segment);
    return slots;
}

uint32_t AviWriter::RepeatsOf(uint32_t frame) const {
    return frame < repeats_.size() ? std::min(repeats_[frame], rooms_[frame]) : 0;
}

uint32_t AviWriter::SlotsOf(const Segment& segment) const {
    uint32_t slots = segment.frames;
    for (uint32_t i = 0; i < segment.frames; ++i) slots += RepeatsOf(segment.firstFrame + i);
    return slots;
}

std::vector<AviWriter::Entry> AviWriter::EntriesOf(const Segment& segment) const {
    std::vector<Entry> entries;
    uint64_t offset = kListHeader;
    for (uint32_t i = 0; i < segment.frames; ++i) {
        const uint32_t frame = segment.firstFrame + i;
        entries.push_back({offset, false});
        offset += FrameChunkSize();
        for (uint64_t n = 0; n < RepeatsOf(frame); ++n) {
            entries.push_back({offset + n * kChunkHeader, true});
        }
        offset += uint64_t{rooms_[frame]} * kChunkHeader;
    }
    return entries;
}

// Empty chunks behind each frame that is repeated, and what remains of its room.
IoResult AviWriter::WriteRepeats(const Segment& segment) {
    uint64_t position = segment.movie + kListHeader;
    for (uint32_t i = 0; i < segment.frames; ++i) {
        const uint32_t frame = segment.firstFrame + i;
        position += FrameChunkSize();
        if (const uint32_t repeats = RepeatsOf(frame)) {
            RiffBlock block;
            for (uint32_t n = 0; n < repeats; ++n) block.Close(block.Open(chunkCode_));
            std::vector<std::byte> bytes = block.Take();
            PadWithJunk(bytes, uint64_t{rooms_[frame]} * kChunkHeader);
            const IoResult result = store_.WriteAt(position, bytes);
            if (result != IoResult::Ok) return result;
        }
        position += uint64_t{rooms_[frame]} * kChunkHeader;
    }
    return IoResult::Ok;
}

std::vector<std::byte> AviWriter::SegmentIndex(const Segment& segment) const {
    const std::vector<Entry> entries = EntriesOf(segment);
    RiffBlock block;
    const size_t chunk = block.Open(kFirstStreamIndex);
    block.Put16(kLongsPerEntry);
    block.Put16(kIndexOfChunks << 8);  // sub type, type
    block.Put32(static_cast<uint32_t>(entries.size()));
    block.Put32(chunkCode_);
    block.Put64(segment.movie);
    block.Put32(0);
    for (const Entry& entry : entries) {
        block.Put32(static_cast<uint32_t>(entry.offset + kChunkHeader));
        block.Put32(entry.repeat ? kNoKeyFrame : frameSize_);
    }
    block.Close(chunk);
    std::vector<std::byte> bytes = block.Take();
    PadWithJunk(bytes, kIndexHeader + segment.indexEntries * kIndexEntry);
    return bytes;
}

// For readers without OpenDML: offsets count from the code of the movi list.
std::vector<std::byte> AviWriter::OldIndex(const Segment& segment) const {
    RiffBlock block;
    const size_t chunk = block.Open(kOldIndex);
    for (const Entry& entry : EntriesOf(segment)) {
        block.Put32(chunkCode_);
        block.Put32(entry.repeat ? 0 : kKeyFrame);
        block.Put32(static_cast<uint32_t>(entry.offset - kChunkHeader));
        block.Put32(entry.repeat ? 0 : frameSize_);
    }
    block.Close(chunk);
    std::vector<std::byte> bytes = block.Take();
    PadWithJunk(bytes, kChunkHeader + segment.indexEntries * kOldIndexEntry);
    return bytes;
}

IoResult AviWriter::CloseSegment(Segment& segment) {
    const uint64_t index = position_;
    segment.indexEntries = finished_ ? SlotsOf(segment) : segment.frames + segment.room;
    IoResult result = Append(SegmentIndex(segment));
    const uint64_t movieEnd = position_;
    if (result == IoResult::Ok && segment.start == 0) result = Append(OldIndex(segment));
    if (result == IoResult::Ok) result = PatchSize(segment.movie, movieEnd);
    if (result == IoResult::Ok) result = PatchSize(segment.start, position_);
    if (result != IoResult::Ok) {
        position_ = index;
        store_.Truncate(position_);
        return result;
    }
    segment.index = index;
    return result;
}

std::vector<std::byte> AviWriter::Header() const {
    std::vector<SegmentEntry> entries;
    uint32_t total = 0;
    for (const Segment& segment : segments_) {
        const uint32_t slots = SlotsOf(segment);
        const uint64_t size = kIndexHeader + slots * kIndexEntry;
        entries.push_back({segment.index, static_cast<uint32_t>(size), slots});
        total += slots;
    }
    return HeaderList({video_, rate_, chunkCode_, total, entries, limits_.segments, shown_});
}

// Of a segment that was closed before the repeats were known.
IoResult AviWriter::RewriteIndexes(const Segment& segment) {
    const std::vector<std::byte> index = SegmentIndex(segment);
    IoResult result = store_.WriteAt(segment.index, index);
    if (result == IoResult::Ok && segment.start == 0) {
        result = store_.WriteAt(segment.index + index.size(), OldIndex(segment));
    }
    return result;
}

IoResult AviWriter::TryFinish() {
    Segment& last = segments_.back();
    const IoResult result = last.index == 0 ? CloseSegment(last) : IoResult::Ok;
    return result == IoResult::Ok ? store_.WriteAt(kListHeader, Header()) : result;
}

// Where the file ends once the segment is closed, with so many slots in its indexes.
uint64_t AviWriter::ClosedEnd(const Segment& segment, uint64_t slots) const {
    const uint64_t end = FramesEnd(segment) + kIndexHeader + slots * kIndexEntry;
    return segment.start == 0 ? end + kChunkHeader + slots * kOldIndexEntry : end;
}

// How far the disk lets the file grow, to the byte. No frame is touched.
uint64_t AviWriter::ReachableEnd(uint64_t wanted) {
    const std::vector<std::byte> block(size_t{64} << 10);
    uint64_t end = position_;
    size_t size = block.size();
    while (size > 0 && end < wanted) {
        size = static_cast<size_t>(std::min<uint64_t>(size, wanted - end));
        if (store_.WriteAt(end, std::span(block).first(size)) == IoResult::Ok) {
            end += size;
        } else {
            store_.Truncate(end);
            size /= 2;
        }
    }
    store_.Truncate(position_);
    return end;
}

// Gives up frames of a segment that could not be closed until its indexes have room, or the empty
// segment itself.
bool AviWriter::DropFrames(uint32_t atLeast) {
    Segment& last = segments_.back();
    if (last.index != 0) return false;
    if (last.frames > 0) {
        uint64_t slots = SlotsOf(last);
        const uint64_t end = ReachableEnd(ClosedEnd(last, slots));
        for (uint32_t n = 0; last.frames > 0; ++n) {
            if (n >= atLeast && ClosedEnd(last, slots) <= end) break;
            --last.frames;
            --frameCount_;
            slots -= 1 + RepeatsOf(frameCount_);
            last.room -= rooms_.back();
            rooms_.pop_back();
        }
        position_ = FramesEnd(last);
    } else {
        if (segments_.size() == 1) return false;
        position_ = last.start;
        segments_.pop_back();
    }
    return store_.Truncate(position_) == IoResult::Ok;
}

IoResult AviWriter::Finish() {
    if (finished_) return IoResult::Ok;
    if (segments_.empty()) return IoResult::Failed;
    finished_ = true;
    IoResult result = IoResult::Ok;
    for (const Segment& segment : segments_) {
        if (result == IoResult::Ok) result = WriteRepeats(segment);
        if (result == IoResult::Ok && segment.index != 0 && segment.room > 0) {
            result = RewriteIndexes(segment);
        }
    }
    if (result == IoResult::Ok) result = TryFinish();
    // What the disk has left may change meanwhile. Each try gives up more than the one before, so
    // that there are few, but not much more than it has to.
    uint32_t atLeast = 1;
    while (result == IoResult::DiskFull && DropFrames(atLeast)) {
        result = TryFinish();
        atLeast = std::min(2 * atLeast, segments_.back().frames / 16 + 1);
    }
    return result;
}

}  // namespace tavo
