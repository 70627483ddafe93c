// Compares where sound should be with where the track has come to.

#include "host/avi/sound_track.h"

#include <algorithm>
#include <cstdlib>

#include "host/avi/frame_rate.h"

namespace tavo {
namespace {

// Small pieces are gathered.
constexpr size_t kPieceBytes = 64 << 10;

}  // namespace

// Times beyond what can be counted are as wrong as those at its end.
int64_t SoundTrack::Blocks(int64_t units) const {
    const int64_t rate = std::max<int64_t>(sound_.rate, 1);
    const int64_t limit = INT64_MAX / rate / 2;
    const int64_t doubled = 2 * rate * std::clamp(units, -limit, limit) / kUnitsPerSecond;
    return (doubled + (doubled < 0 ? -1 : 1)) / 2;
}

int64_t SoundTrack::Units(uint64_t blocks) const {
    const uint64_t rate = std::max<uint64_t>(sound_.rate, 1);
    const uint64_t units = blocks / rate * kUnitsPerSecond + blocks % rate * kUnitsPerSecond / rate;
    return static_cast<int64_t>(units);
}

void SoundTrack::Begin(int64_t origin) {
    origin_ = BoundedTime(origin);
    // There may be much of it: memory is given back on the way.
    for (; !early_.empty(); early_.pop_front()) {
        const Early& piece = early_.front();
        Place(piece.bytes, piece.start);
        heldBytes_ -= piece.bytes.size();
    }
}

void SoundTrack::Add(std::span<const std::byte> bytes, std::optional<int64_t> start) {
    if (origin_) return Place(bytes, start);
    early_.push_back({{bytes.begin(), bytes.end()}, start});
    heldBytes_ += bytes.size();
}

// The block where sound of this time belongs. What the source rounds is evened out, but where the
// track begins. There, all that is too early is left out.
int64_t SoundTrack::PositionOf(int64_t start) {
    const int64_t at = static_cast<int64_t>(blocks_);
    const int64_t time = BoundedTime(start) - *origin_;
    const int64_t off = Blocks(time) - at;
    const bool isFirst = blocks_ == 0;
    if (off > Blocks(kMaxGap) || (!isFirst && off < -Blocks(maxOverlap_))) {
        origin_ = BoundedTime(start) - Units(blocks_);
        rest_.clear();
        return at;
    }
    return !isFirst && std::abs(off) <= Blocks(kTolerance) ? at : at + off;
}

void SoundTrack::Place(std::span<const std::byte> bytes, std::optional<int64_t> start) {
    const size_t block = sound_.BlockBytes();
    const int64_t at = static_cast<int64_t>(blocks_);
    const int64_t position = start ? PositionOf(*start) : next_;
    const uint64_t silence = position > at ? static_cast<uint64_t>(position - at) : 0;
    std::vector<std::byte> joined;
    if (!rest_.empty() && silence == 0) {
        joined.reserve(rest_.size() + bytes.size());
        joined = rest_;
        joined.insert(joined.end(), bytes.begin(), bytes.end());
        bytes = joined;
    }
    const uint64_t count = bytes.size() / block;
    const uint64_t dropped =
        position < at ? std::min(count, static_cast<uint64_t>(at - position)) : 0;
    std::vector<std::byte> rest(bytes.begin() + static_cast<ptrdiff_t>(count * block), bytes.end());
    Append(silence * block, bytes.subspan(dropped * block, (count - dropped) * block));
    rest_ = std::move(rest);
    blocks_ += silence + count - dropped;
    const int64_t end = position + static_cast<int64_t>(count);
    next_ = dropped < count ? static_cast<int64_t>(blocks_) : end;
    silentBlocks_ += silence;
    droppedBlocks_ += dropped;
}

void SoundTrack::Append(uint64_t silence, std::span<const std::byte> bytes) {
    if (silence == 0 && bytes.empty()) return;
    if (silence == 0 && !waiting_.empty() && waiting_.back().bytes.size() < kPieceBytes) {
        auto& last = waiting_.back().bytes;
        last.insert(last.end(), bytes.begin(), bytes.end());
    } else {
        waiting_.push_back({silence, {bytes.begin(), bytes.end()}});
    }
    waitingBytes_ += silence + bytes.size();
    heldBytes_ += bytes.size();
}

uint64_t SoundTrack::WaitingBefore(int64_t time) const {
    if (!origin_) return 0;
    const uint64_t block = sound_.BlockBytes();
    const auto before = static_cast<uint64_t>(std::max<int64_t>(Blocks(time - *origin_), 0));
    const uint64_t taken = blocks_ - waitingBytes_ / block;
    return before > taken ? std::min((before - taken) * block, waitingBytes_) : 0;
}

std::vector<std::byte> SoundTrack::Take(size_t most) {
    const size_t block = sound_.BlockBytes();
    const auto size = static_cast<size_t>(std::min<uint64_t>(waitingBytes_, most / block * block));
    std::vector<std::byte> taken;
    taken.reserve(size);
    while (taken.size() < size) {
        Piece& piece = waiting_.front();
        const uint64_t silence = std::min<uint64_t>(piece.silence, size - taken.size());
        taken.insert(taken.end(), static_cast<size_t>(silence), Silence());
        piece.silence -= silence;
        const size_t count = std::min(piece.bytes.size(), size - taken.size());
        const auto end = piece.bytes.begin() + static_cast<ptrdiff_t>(count);
        taken.insert(taken.end(), piece.bytes.begin(), end);
        piece.bytes.erase(piece.bytes.begin(), end);
        heldBytes_ -= count;
        if (piece.silence == 0 && piece.bytes.empty()) waiting_.pop_front();
    }
    waitingBytes_ -= size;
    return taken;
}

}  // namespace tavo
