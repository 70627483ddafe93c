// Puts sound where it belongs in time: the sound of a file begins with its first frame, has no gaps
// and no time twice.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/sound_format.h"

namespace tavo {

// The sound has a format. Times are in units of 100 ns. Members may throw std::bad_alloc, and
// change nothing then. Not thread-safe.
class SoundTrack {
  public:
    // Sound that is off by no more than this follows the sound before: sources round their times.
    static constexpr int64_t kTolerance = 400'000;
    // Longer gaps are errors of the source, and are not filled.
    static constexpr int64_t kMaxGap = 600'000'000;

    explicit SoundTrack(const SoundFormat& sound) : sound_(sound) {}

    // The time of the first frame. Sound before it is left out.
    void Begin(int64_t origin);

    // Whole blocks; a rest is left out. Sound without a time follows the sound before. Until Begin
    // it is kept aside.
    void Add(std::span<const std::byte> bytes, std::optional<int64_t> start);

    // What waits to be written, in whole blocks, at most that many bytes.
    std::vector<std::byte> Take(size_t most);
    size_t Waiting() const { return waiting_.size(); }
    // The same, with what is kept aside.
    size_t Held() const { return waiting_.size() + earlyBytes_; }

    uint64_t SilentBlocks() const { return silentBlocks_; }
    uint64_t DroppedBlocks() const { return droppedBlocks_; }

  private:
    struct Piece {
        std::vector<std::byte> bytes;
        std::optional<int64_t> start;
    };

    // How far the track is behind that time, in blocks.
    int64_t BlocksUntil(int64_t start) const;
    int64_t Blocks(int64_t units) const;
    void Place(std::span<const std::byte> bytes, std::optional<int64_t> start);
    std::byte Silence() const { return std::byte(sound_.bits == 8 ? 0x80 : 0); }

    const SoundFormat sound_;
    std::optional<int64_t> origin_;
    std::vector<Piece> early_;  // before Begin
    size_t earlyBytes_ = 0;
    uint64_t blocks_ = 0;  // in the track so far
    uint64_t silentBlocks_ = 0;
    uint64_t droppedBlocks_ = 0;
    std::vector<std::byte> waiting_;
};

}  // namespace tavo
