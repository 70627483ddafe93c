// The AVI writer: segments, their indexes, and a header that is written again at the end.

#include "host/avi_writer.h"

#include <algorithm>
#include <array>

#include "host/avi_header.h"
#include "host/riff.h"

namespace tavo {
namespace {

constexpr uint32_t kKeyFrame = 0x10;
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
    return segment.movie + kListHeader + segment.frames * FrameChunkSize();
}

bool AviWriter::IsFull(const Segment& segment) const {
    if (segment.frames == 0) return false;
    const uint64_t frames = uint64_t{segment.frames} + 1;
    uint64_t end = FramesEnd(segment) + FrameChunkSize() + kIndexHeader + frames * kIndexEntry;
    if (segment.start == 0) end += kChunkHeader + frames * kOldIndexEntry;
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
        failed_ = true;
        return result;
    }
    ++segments_.back().frames;
    ++frameCount_;
    return IoResult::Ok;
}

std::vector<std::byte> AviWriter::SegmentIndex(const Segment& segment) const {
    RiffBlock block;
    const size_t chunk = block.Open(kFirstStreamIndex);
    block.Put16(kLongsPerEntry);
    block.Put16(kIndexOfChunks << 8);  // sub type, type
    block.Put32(segment.frames);
    block.Put32(chunkCode_);
    block.Put64(segment.movie);
    block.Put32(0);
    for (uint32_t i = 0; i < segment.frames; ++i) {
        block.Put32(
            static_cast<uint32_t>(kListHeader + i * FrameChunkSize() + uint64_t{kChunkHeader}));
        block.Put32(frameSize_);
    }
    block.Close(chunk);
    return block.Take();
}

// For readers without OpenDML: offsets count from the code of the movi list.
std::vector<std::byte> AviWriter::OldIndex(const Segment& segment) const {
    RiffBlock block;
    const size_t chunk = block.Open(kOldIndex);
    for (uint32_t i = 0; i < segment.frames; ++i) {
        block.Put32(chunkCode_);
        block.Put32(kKeyFrame);
        block.Put32(static_cast<uint32_t>(4 + i * FrameChunkSize()));
        block.Put32(frameSize_);
    }
    block.Close(chunk);
    return block.Take();
}

IoResult AviWriter::CloseSegment(Segment& segment) {
    const uint64_t index = position_;
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
    for (const Segment& segment : segments_) {
        const uint64_t size = kIndexHeader + segment.frames * kIndexEntry;
        entries.push_back({segment.index, static_cast<uint32_t>(size), segment.frames});
    }
    return HeaderList({video_, rate_, chunkCode_, frameCount_, entries, limits_.segments});
}

IoResult AviWriter::TryFinish() {
    Segment& last = segments_.back();
    const IoResult result = last.index == 0 ? CloseSegment(last) : IoResult::Ok;
    return result == IoResult::Ok ? store_.WriteAt(kListHeader, Header()) : result;
}

// Gives up the last frame of a segment that could not be closed, or the empty segment itself.
bool AviWriter::DropLastFrame() {
    Segment& last = segments_.back();
    if (last.index != 0) return false;
    if (last.frames > 0) {
        --last.frames;
        --frameCount_;
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
    IoResult result = TryFinish();
    while (result == IoResult::DiskFull && DropLastFrame()) result = TryFinish();
    return result;
}

}  // namespace tavo
