// Walks the chunks of an AVI file. Nothing in the file is trusted: chunks are clipped to their
// parent, lists nest to a fixed depth, and each step advances by at least a chunk header.

#include "host/avi/avi_reader.h"

#include <algorithm>
#include <array>

#include "host/avi/riff.h"

namespace tavo {
namespace {

// A larger cache would read the pixels of small frames instead of skipping them.
constexpr size_t kCacheSize = 4096;
constexpr size_t kStreamHeaderUsed = 28;  // bytes, up to the rate
constexpr int kMaxRecordDepth = 1;
constexpr size_t kMaxFrames = 0xFFFFFFFF;
// With these rates the times of 2^32 frames fit 64 bits.
constexpr double kMinFps = 0.01;
constexpr double kMaxFps = 100000.0;

bool IsPlausible(FrameRate rate) {
    return rate.rate != 0 && rate.scale != 0 && rate.Fps() >= kMinFps && rate.Fps() <= kMaxFps;
}

}  // namespace

bool AviReader::Peek(uint64_t offset, std::span<std::byte> target) {
    if (offset > fileEnd_ || fileEnd_ - offset < target.size()) return false;
    const bool inside =
        offset >= cacheStart_ && offset + target.size() <= cacheStart_ + cache_.size();
    if (!inside) {
        cache_.resize(static_cast<size_t>(std::min<uint64_t>(kCacheSize, fileEnd_ - offset)));
        cacheStart_ = offset;
        if (store_->ReadAt(offset, cache_) != IoResult::Ok) {
            cache_.clear();
            return false;
        }
    }
    std::copy_n(cache_.begin() + static_cast<ptrdiff_t>(offset - cacheStart_), target.size(),
                target.begin());
    return true;
}

bool AviReader::ReadChunk(uint64_t offset, uint64_t parentEnd, Chunk& chunk) {
    if (offset >= parentEnd || parentEnd - offset < kChunkHeader) return false;
    std::array<std::byte, kChunkHeader> head;
    if (!Peek(offset, head)) return false;
    chunk.code = Load32(head, 0);
    chunk.size = Load32(head, 4);
    chunk.data = offset + kChunkHeader;
    chunk.end = std::min(chunk.data + chunk.size, parentEnd);
    chunk.next = chunk.data + Padded(chunk.size);
    return true;
}

uint32_t AviReader::ReadCode(uint64_t offset) {
    std::array<std::byte, 4> code;
    return Peek(offset, code) ? Load32(code, 0) : 0;
}

AviResult AviReader::Open(ByteStore& store) {
    store_ = &store;
    fileEnd_ = store.Size();
    Chunk riff;
    if (!ReadChunk(0, fileEnd_, riff) || riff.code != kRiff || ReadCode(riff.data) != kAvi) {
        return AviResult::NotAvi;
    }
    // An interrupted writer leaves a size of 0.
    if (riff.end - riff.data < 4) {
        riff.end = fileEnd_;
        riff.next = fileEnd_;
        truncated_ = true;
    }
    if (IsTruncated(riff)) truncated_ = true;
    WalkSegment(riff);
    if (formatResult_ != AviResult::Ok) return formatResult_;
    while (ReadChunk(riff.next, fileEnd_, riff) && riff.code == kRiff &&
           ReadCode(riff.data) == kAvix) {
        if (IsTruncated(riff)) truncated_ = true;
        WalkSegment(riff);
    }
    if (mixedLayouts_) return AviResult::OtherFrameLayout;
    if (frames_.empty()) return AviResult::NoFrames;
    if (layout_ && layout_ != FilePlanes::Tight) stored_.resize(storedSize_);
    return AviResult::Ok;
}

void AviReader::WalkSegment(const Chunk& riff) {
    Chunk chunk;
    for (uint64_t at = riff.data + 4; ReadChunk(at, riff.end, chunk); at = chunk.next) {
        if (chunk.code != kList) continue;
        const uint32_t kind = ReadCode(chunk.data);
        if (kind == kHeaderList) {
            WalkHeader(chunk);
        } else if (kind == kMovieList) {
            // Frames need a format. An interrupted writer leaves a size of 0 here too.
            if (formatResult_ != AviResult::Ok) return;
            const bool open = chunk.end - chunk.data < 4;
            if (open) truncated_ = true;
            WalkMovie(chunk.data + 4, open ? riff.end : chunk.end, 0);
            if (open) return;
        }
    }
}

void AviReader::WalkHeader(const Chunk& list) {
    Chunk chunk;
    for (uint64_t at = list.data + 4; ReadChunk(at, list.end, chunk); at = chunk.next) {
        if (chunk.code == kList && ReadCode(chunk.data) == kStreamList) {
            WalkStream(chunk);
            ++streamCount_;
        }
    }
}

void AviReader::WalkStream(const Chunk& list) {
    Chunk chunk;
    for (uint64_t at = list.data + 4; ReadChunk(at, list.end, chunk); at = chunk.next) {
        if (chunk.code == kStreamHeader) ReadStreamHeader(chunk);
        if (chunk.code == kStreamFormat) ReadStreamFormat(chunk);
    }
}

// Only the first video stream counts.
void AviReader::ReadStreamHeader(const Chunk& chunk) {
    std::array<std::byte, kStreamHeaderUsed> head;
    if (videoStream_ >= 0 || chunk.end - chunk.data < head.size() || !Peek(chunk.data, head) ||
        Load32(head, 0) != kVideoStream) {
        return;
    }
    videoStream_ = streamCount_;
    const FrameRate rate = {Load32(head, 24), Load32(head, 20)};
    if (IsPlausible(rate)) rate_ = rate;
}

void AviReader::ReadStreamFormat(const Chunk& chunk) {
    if (videoStream_ != streamCount_ || formatResult_ != AviResult::NoVideo) return;
    std::array<std::byte, kBitmapHeader + kMaskBytes> head{};
    const uint64_t length = std::min<uint64_t>(chunk.end - chunk.data, head.size());
    if (length < kBitmapHeader ||
        !Peek(chunk.data, std::span(head).first(static_cast<size_t>(length)))) {
        return;
    }
    const ColorMasks masks = {Load32(head, 40), Load32(head, 44), Load32(head, 48)};
    const uint32_t compression = Load32(head, 16);
    const auto format = FormatOf(compression, static_cast<uint16_t>(Load16(head, 14)), masks);
    if (!format) {
        formatResult_ = AviResult::OtherFormat;
        return;
    }
    video_ = {*format, compression, static_cast<int32_t>(Load32(head, 4)),
              static_cast<int32_t>(Load32(head, 8))};
    // Only RGB can be top-down. INT32_MIN has no magnitude.
    if (InfoOf(*format).group != FormatGroup::Rgb && video_.height < 0) {
        video_.height = static_cast<int32_t>(RowCount(video_.height));
    }
    const auto size = video_.height == INT32_MIN ? std::nullopt : FrameSize(video_);
    frameSize_ = size.value_or(0);
    formatResult_ = size ? AviResult::Ok : AviResult::BadSize;
}

void AviReader::WalkMovie(uint64_t begin, uint64_t end, int depth) {
    Chunk chunk;
    for (uint64_t at = begin; ReadChunk(at, end, chunk); at = chunk.next) {
        if (chunk.code == kList) {
            if (depth < kMaxRecordDepth && ReadCode(chunk.data) == kRecordList) {
                WalkMovie(chunk.data + 4, chunk.end, depth + 1);
            }
            continue;
        }
        AddFrame(chunk);
    }
}

void AviReader::AddFrame(const Chunk& chunk) {
    const uint32_t stream = static_cast<uint32_t>(videoStream_);
    const uint32_t digits = ('0' + stream / 10) | ('0' + stream % 10) << 8;
    const uint32_t kind = chunk.code >> 16;
    constexpr uint32_t kDib = FourCc('d', 'b', 0, 0);
    constexpr uint32_t kCompressed = FourCc('d', 'c', 0, 0);
    if ((chunk.code & 0xFFFF) != digits || (kind != kDib && kind != kCompressed)) return;
    if (frames_.size() >= kMaxFrames) return;

    if (chunk.size == 0) {
        // An empty chunk repeats the frame before.
        if (!frames_.empty()) frames_.push_back(frames_.back());
        return;
    }
    if (!AcceptLayout(chunk.size)) {
        mixedLayouts_ = true;
        return;
    }
    if (chunk.end - chunk.data >= storedSize_) frames_.push_back(chunk.data);
}

// The first frame tells the layout of the planes. False for a frame with another one.
bool AviReader::AcceptLayout(uint32_t length) {
    if (InfoOf(video_.format).group != FormatGroup::Planar) {
        storedSize_ = frameSize_;
        return length >= frameSize_;
    }
    const std::optional<FilePlanes> layout = LayoutOfLength(video_, length);
    if (!layout || (layout_ && layout_ != layout)) return false;
    layout_ = layout;
    storedSize_ = static_cast<uint32_t>(PlanarBytes(video_, *layout));
    return true;
}

IoResult AviReader::ReadFrame(uint32_t index, std::span<std::byte> target) {
    if (!layout_ || layout_ == FilePlanes::Tight) return store_->ReadAt(frames_[index], target);
    const IoResult read = store_->ReadAt(frames_[index], stored_);
    if (read == IoResult::Ok) MakeTight(video_, *layout_, stored_, target);
    return read;
}

}  // namespace tavo
