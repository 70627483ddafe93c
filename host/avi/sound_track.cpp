// Compares where sound should be with where the track has come to.

#include "host/avi/sound_track.h"

#include <algorithm>
#include <cstdlib>

#include "host/avi/frame_rate.h"

namespace tavo {

// Times beyond what can be counted are as wrong as those at its end.
int64_t SoundTrack::Blocks(int64_t units) const {
    const int64_t rate = std::max<int64_t>(sound_.rate, 1);
    const int64_t limit = INT64_MAX / rate / 2;
    const int64_t doubled = 2 * rate * std::clamp(units, -limit, limit) / kUnitsPerSecond;
    return (doubled + (doubled < 0 ? -1 : 1)) / 2;
}

int64_t SoundTrack::BlocksUntil(int64_t start) const {
    const int64_t time = std::clamp(start, -kMaxTime, kMaxTime) - *origin_;
    return Blocks(time) - static_cast<int64_t>(blocks_);
}

void SoundTrack::Begin(int64_t origin) {
    origin_ = std::clamp(origin, -kMaxTime, kMaxTime);
    for (const Piece& piece : early_) Place(piece.bytes, piece.start);
    early_.clear();
    earlyBytes_ = 0;
}

void SoundTrack::Add(std::span<const std::byte> bytes, std::optional<int64_t> start) {
    if (origin_) return Place(bytes, start);
    early_.push_back({{bytes.begin(), bytes.end()}, start});
    earlyBytes_ += bytes.size();
}

void SoundTrack::Place(std::span<const std::byte> bytes, std::optional<int64_t> start) {
    const size_t block = sound_.BlockBytes();
    const uint64_t count = bytes.size() / block;
    uint64_t silence = 0;
    uint64_t dropped = 0;
    const int64_t off = start ? BlocksUntil(*start) : 0;
    const bool isOff = std::abs(off) > Blocks(kTolerance) && std::abs(off) <= Blocks(kMaxGap);
    // What lies before the first frame is always left out.
    const bool isEarly = blocks_ == 0 && off < 0;
    if (isEarly || (isOff && off < 0)) dropped = std::min(count, static_cast<uint64_t>(-off));
    if (isOff && off > 0) silence = static_cast<uint64_t>(off);
    const auto kept = bytes.subspan(dropped * block, (count - dropped) * block);
    const size_t size = waiting_.size() + silence * block + kept.size();
    if (size > waiting_.capacity()) waiting_.reserve(std::max(size, 2 * waiting_.capacity()));
    waiting_.insert(waiting_.end(), silence * block, Silence());
    waiting_.insert(waiting_.end(), kept.begin(), kept.end());
    blocks_ += silence + count - dropped;
    silentBlocks_ += silence;
    droppedBlocks_ += dropped;
}

std::vector<std::byte> SoundTrack::Take(size_t most) {
    const size_t block = sound_.BlockBytes();
    const size_t size = std::min(waiting_.size(), most / block * block);
    const auto end = waiting_.begin() + static_cast<ptrdiff_t>(size);
    std::vector<std::byte> taken(waiting_.begin(), end);
    waiting_.erase(waiting_.begin(), end);
    return taken;
}

}  // namespace tavo
