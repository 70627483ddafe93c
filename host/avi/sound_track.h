// Puts sound where it belongs in time: the sound of a file begins with its first frame, has no gaps
// and no time twice.

#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "host/avi/frame_timing.h"
#include "host/avi/sound_format.h"

namespace tavo {

// The sound has a format. Times are in units of 100 ns. Members may throw std::bad_alloc, and
// change nothing then. Not thread-safe.
class SoundTrack {
  public:
    // Sound that is off by no more than this follows the sound before: sources round their times.
    static constexpr int64_t kTolerance = 400'000;
    // Longer gaps are errors of the source, and are not filled: neither are those of frames.
    static constexpr int64_t kMaxGap = MonotonicTimes::kMaxGap;
    // The sound goes as far back as the frames do.
    static constexpr int64_t kMaxOverlap = 2 * kUnitsPerSecond;

    // Where times go back by more than `maxOverlap`, the source counts anew, and its sound follows
    // the sound before. What overlaps less is left out.
    explicit SoundTrack(const SoundFormat& sound, int64_t maxOverlap = kMaxOverlap)
        : sound_(sound), maxOverlap_(maxOverlap) {}

    // The time of the first frame. Sound before it is left out.
    void Begin(int64_t origin);

    // Sound without a time follows the sound before. What is left of a block waits for the rest of
    // it. Until Begin all is kept aside.
    void Add(std::span<const std::byte> bytes, std::optional<int64_t> start);

    // What waits to be written, in whole blocks, at most that many bytes.
    std::vector<std::byte> Take(size_t most);
    uint64_t Waiting() const { return waitingBytes_; }
    // How much of it lies before that time.
    uint64_t WaitingBefore(int64_t time) const;
    // The memory in use. Silence takes none.
    size_t Held() const { return heldBytes_; }

    uint64_t SilentBlocks() const { return silentBlocks_; }
    uint64_t DroppedBlocks() const { return droppedBlocks_; }

  private:
    struct Early {
        std::vector<std::byte> bytes;
        std::optional<int64_t> start;
    };
    // Silence, then sound.
    struct Piece {
        uint64_t silence = 0;  // bytes
        std::vector<std::byte> bytes;
    };

    int64_t Blocks(int64_t units) const;
    int64_t Units(uint64_t blocks) const;
    int64_t PositionOf(int64_t start);
    void Place(std::span<const std::byte> bytes, std::optional<int64_t> start);
    void Append(uint64_t silence, std::span<const std::byte> bytes);
    std::byte Silence() const { return std::byte(sound_.bits == 8 ? 0x80 : 0); }

    const SoundFormat sound_;
    const int64_t maxOverlap_;
    std::optional<int64_t> origin_;
    std::deque<Early> early_;  // before Begin
    uint64_t blocks_ = 0;      // in the track so far
    int64_t next_ = 0;         // the block where sound without a time belongs
    uint64_t silentBlocks_ = 0;
    uint64_t droppedBlocks_ = 0;
    std::vector<std::byte> rest_;  // less than a block
    std::deque<Piece> waiting_;
    uint64_t waitingBytes_ = 0;
    size_t heldBytes_ = 0;
};

}  // namespace tavo
