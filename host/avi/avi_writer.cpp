// Appends frames; writes indexes and the final header at the end.

#include "host/avi/avi_writer.h"

#include <algorithm>
#include <array>

#include "host/avi/avi_header.h"
#include "host/avi/disk_space.h"
#include "host/avi/riff.h"

namespace tavo {
namespace {

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
    : store_(store), video_(video), limits_(limits), layout_(video), rate_(rate) {}

IoResult AviWriter::Append(std::span<const std::byte> bytes) {
    const IoResult result = store_.WriteAt(position_, bytes);
    if (result == IoResult::Ok) position_ += bytes.size();
    return result;
}

void AviWriter::CutBack(uint64_t position) {
    position_ = position;
    store_.Truncate(position_);
}

// Writes the size of the chunk from `chunk` to `end`.
IoResult AviWriter::PatchSize(uint64_t chunk, uint64_t end) {
    return store_.WriteAt(chunk + 4, Number(end - chunk - kChunkHeader));
}

IoResult AviWriter::Begin() {
    const IoResult result = OpenSegment();
    failed_ = result != IoResult::Ok;
    return result;
}

IoResult AviWriter::OpenSegment() {
    const uint64_t start = position_;
    const bool first = layout_.Segments().empty();
    layout_.ReserveSegment();
    IoResult result = Append(ListStart(kRiff, first ? kAvi : kAvix));
    if (result == IoResult::Ok && first) result = Append(Header());
    const uint64_t movie = position_;
    if (result == IoResult::Ok) result = Append(ListStart(kList, kMovieList));
    if (result == IoResult::Ok) {
        layout_.AddSegment(start, movie);
    } else {
        CutBack(start);
    }
    return result;
}

IoResult AviWriter::EnsureOpenSegment() {
    AviSegment& last = layout_.LastSegment();
    if (last.IsOpen() && !layout_.IsFull(last, limits_.segmentBytes)) return IoResult::Ok;
    if (layout_.Segments().size() >= limits_.segments) return IoResult::TooLarge;
    const IoResult result = last.IsOpen() ? CloseSegment(last) : IoResult::Ok;
    return result == IoResult::Ok ? OpenSegment() : result;
}

IoResult AviWriter::AppendChunk(uint32_t code, std::span<const std::byte> data) {
    std::array<std::byte, kChunkHeader> head{};
    std::ranges::copy(Number(code), head.begin());
    std::ranges::copy(Number(data.size()), head.begin() + 4);
    IoResult result = Append(head);
    if (result == IoResult::Ok) result = Append(data);
    if (result == IoResult::Ok && data.size() % 2 != 0) result = Append(std::array{std::byte{0}});
    return result;
}

IoResult AviWriter::WriteFrame(std::span<const std::byte> frame) {
    if (failed_ || finished_ || frame.size() != layout_.FrameSize()) return IoResult::Failed;
    IoResult result = layout_.FrameCount() < 0xFFFFFFFF ? EnsureOpenSegment() : IoResult::TooLarge;
    if (result == IoResult::Ok) {
        const uint64_t before = position_;
        layout_.AddFrame();
        result = AppendChunk(layout_.ChunkCode(), frame);
        if (result != IoResult::Ok) {
            layout_.DropFrame();
            CutBack(before);
        }
    }
    failed_ = result != IoResult::Ok;
    return result;
}

bool AviWriter::CanWriteAhead() const {
    if (failed_ || finished_ || layout_.FrameCount() == 0 || !layout_.Sound().IsKnown())
        return false;
    if (layout_.LastReserved() != 0 || layout_.LastSound() != 0) return false;
    const uint64_t end = position_ + kChunkHeader + layout_.AheadChunkBytes();
    return end - layout_.Segments().back().start <= limits_.segmentBytes + limits_.aheadBytes;
}

IoResult AviWriter::WriteAhead(std::span<const std::byte> sound) {
    if (!CanWriteAhead() || sound.size() != layout_.AheadChunkBytes()) return IoResult::Failed;
    const uint64_t before = position_;
    const IoResult result = AppendChunk(kSoundChunk, sound);
    if (result == IoResult::Ok) {
        layout_.AddAhead();
    } else {
        CutBack(before);
        failed_ = true;
    }
    return result;
}

IoResult AviWriter::ReserveRepeats(uint32_t repeats) {
    if (failed_ || finished_ || layout_.FrameCount() == 0 || layout_.LastReserved() != 0 ||
        layout_.LastSound() != 0) {
        return IoResult::Failed;
    }
    if (repeats == 0) return IoResult::Ok;
    const uint64_t before = position_;
    RiffBlock junk;
    junk.PutJunk(uint64_t{repeats} * kChunkHeader);
    const IoResult result = Append(junk.Take());
    if (result == IoResult::Ok) {
        layout_.SetReserved(repeats);
    } else {
        CutBack(before);
        failed_ = true;
    }
    return result;
}

IoResult AviWriter::WriteSound(std::span<const std::byte> sound) {
    const uint32_t block = layout_.Sound().BlockBytes();
    if (failed_ || finished_ || block == 0 || sound.size() % block != 0 ||
        sound.size() > kMaxSoundBytes || layout_.FrameCount() == 0 || layout_.LastSound() != 0) {
        return IoResult::Failed;
    }
    if (sound.empty()) return IoResult::Ok;
    const uint64_t before = position_;
    const IoResult result = AppendChunk(kSoundChunk, sound);
    if (result == IoResult::Ok) {
        layout_.SetLastSound(static_cast<uint32_t>(sound.size()));
    } else {
        CutBack(before);
        failed_ = true;
    }
    return result;
}

IoResult AviWriter::CloseSegment(AviSegment& segment) {
    const uint64_t index = position_;
    segment.indexEntries =
        finished_ ? layout_.SlotsOf(segment) : segment.frames + segment.reservedRepeats;
    IoResult result = Append(layout_.StreamIndexOf(segment));
    if (result == IoResult::Ok && layout_.Sound().IsKnown()) {
        result = Append(layout_.SoundIndexOf(segment));
    }
    const uint64_t movieEnd = position_;
    if (result == IoResult::Ok && segment.HasOldIndex()) {
        result = Append(layout_.OldIndexOf(segment));
    }
    if (result == IoResult::Ok) result = PatchSize(segment.movie, movieEnd);
    if (result == IoResult::Ok) result = PatchSize(segment.start, position_);
    if (result == IoResult::Ok) {
        segment.index = index;
    } else {
        CutBack(index);
    }
    return result;
}

IoResult AviWriter::WriteRepeats(const AviSegment& segment) {
    uint64_t position = segment.movie + kListHeader;
    for (uint32_t i = 0; i < segment.frames; ++i) {
        const uint32_t frame = segment.firstFrame + i;
        position += layout_.FrameChunkSize() + layout_.AheadSpace(frame);
        if (layout_.RepeatsOf(frame) > 0) {
            const IoResult result = store_.WriteAt(position, layout_.RepeatChunks(frame));
            if (result != IoResult::Ok) return result;
        }
        position += layout_.ReservedSize(frame) + layout_.SoundSpace(frame);
    }
    return IoResult::Ok;
}

// Of a segment that was closed before the repeats were known. Its index of sound stays.
IoResult AviWriter::RewriteIndexes(const AviSegment& segment) {
    const std::vector<std::byte> index = layout_.StreamIndexOf(segment);
    const IoResult result = store_.WriteAt(segment.index, index);
    if (result != IoResult::Ok || !segment.HasOldIndex()) return result;
    uint64_t position = segment.index + index.size();
    if (layout_.Sound().IsKnown()) position += StreamIndexSize(segment.soundChunks);
    return store_.WriteAt(position, layout_.OldIndexOf(segment));
}

std::vector<std::byte> AviWriter::Header() const {
    const std::vector<SegmentEntry> segments = layout_.SuperIndex();
    const std::vector<SegmentEntry> soundSegments = layout_.SoundSuperIndex();
    AviHeader header;
    header.video = video_;
    header.rate = rate_;
    header.chunkCode = layout_.ChunkCode();
    header.totalFrames = static_cast<uint32_t>(layout_.SlotCount());
    header.segments = segments;
    header.maxSegments = limits_.segments;
    header.displayAspect = displayAspect_;
    header.sound = layout_.Sound();
    header.soundBlocks = layout_.SoundBlocks();
    header.soundSegments = soundSegments;
    return HeaderList(header);
}

IoResult AviWriter::TryFinish() {
    AviSegment& last = layout_.LastSegment();
    const IoResult result = last.IsOpen() ? CloseSegment(last) : IoResult::Ok;
    return result == IoResult::Ok ? store_.WriteAt(kListHeader, Header()) : result;
}

// Drops frames of a segment that could not be closed until its indexes fit, or the empty segment
// itself.
bool AviWriter::DropFrames(uint32_t atLeast) {
    const AviSegment& last = layout_.LastSegment();
    if (!last.IsOpen()) return false;
    if (last.frames > 0) {
        uint64_t slots = layout_.SlotsOf(last);
        const uint64_t end = ReachableEnd(store_, position_, layout_.ClosedEnd(last, slots));
        for (uint32_t n = 0; last.frames > 0; ++n) {
            if (n >= atLeast && layout_.ClosedEnd(last, slots) <= end) break;
            slots -= 1 + layout_.RepeatsOf(layout_.FrameCount() - 1);
            layout_.DropFrame();
        }
        position_ = layout_.FramesEnd(last);
    } else {
        if (layout_.Segments().size() == 1) return false;
        position_ = last.start;
        layout_.DropSegment();
    }
    return store_.Truncate(position_) == IoResult::Ok;
}

IoResult AviWriter::Finish() {
    if (finished_) return IoResult::Ok;
    if (layout_.Segments().empty()) return IoResult::Failed;
    finished_ = true;
    IoResult result = IoResult::Ok;
    for (const AviSegment& segment : layout_.Segments()) {
        if (result == IoResult::Ok) result = WriteRepeats(segment);
        if (result == IoResult::Ok && !segment.IsOpen() && segment.reservedRepeats > 0) {
            result = RewriteIndexes(segment);
        }
    }
    if (result == IoResult::Ok) result = TryFinish();
    // The free space may change meanwhile. Each try drops more frames than the one before, so there
    // are few tries and few frames too many.
    uint32_t atLeast = 1;
    while (result == IoResult::DiskFull && DropFrames(atLeast)) {
        result = TryFinish();
        atLeast = std::min(2 * atLeast, layout_.LastSegment().frames / 16 + 1);
    }
    return result;
}

}  // namespace tavo
