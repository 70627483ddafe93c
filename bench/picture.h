// Memory for one picture: whole cache lines, filled with noise that is the same in every run.
// Source and destination can be turned: then each turn gives another piece of a ring, which is
// larger than the last-level cache.

#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace tavo::bench {

inline void FillWithNoise(uint8_t* data, size_t bytes) {
    uint32_t state = 1;
    for (size_t i = 0; i < bytes; ++i) {
        data[i] = static_cast<uint8_t>((state = state * 69069 + 1) >> 24);
    }
}

// The rings of this process, one for sources and one for destinations. All who take turns share
// them, so that a piece comes again only after all others.
class PictureRings {
  public:
    static PictureRings& Get() {
        static PictureRings rings;
        return rings;
    }

    bool IsTurning() const { return isTurning_; }
    void SetTurning(bool isTurning) { isTurning_ = isTurning; }
    void Turn() { ++turn_; }

    // The piece of this turn in ring 0 or 1.
    uint8_t* Piece(int ring, size_t bytes) {
        std::unique_ptr<uint8_t[]>& memory = memory_[ring];
        if (!memory) {
            memory.reset(new uint8_t[bytes_ + kLine]);
            FillWithNoise(memory.get(), bytes_ + kLine);
        }
        const size_t pitch = (bytes + 2 * kLine - 1) / kLine * kLine;
        const size_t pieces = std::max<size_t>(bytes_ / pitch, 1);
        const auto first = reinterpret_cast<uintptr_t>(memory.get());
        return reinterpret_cast<uint8_t*>((first + kLine - 1) / kLine * kLine) +
               turn_ % pieces * pitch;
    }

  private:
    static constexpr size_t kLine = 64;

    static size_t Bytes() {
        const long cache = sysconf(_SC_LEVEL3_CACHE_SIZE);
        constexpr long kLeast = 64 << 20;
        return static_cast<size_t>(std::max(cache, kLeast)) / 4 * 5;
    }

    size_t bytes_ = Bytes();
    std::unique_ptr<uint8_t[]> memory_[2];
    size_t turn_ = 0;
    bool isTurning_ = false;
};

class Picture {
  public:
    enum class Use { Source, Destination, Scratch };

    static constexpr size_t kLine = 64;
    // What block copies and vectors of the peers may touch past the end.
    static constexpr size_t kSlack = 64;

    Picture(int32_t stride, int32_t height, Use use)
        : stride_(stride),
          bytes_(static_cast<size_t>(stride) * static_cast<size_t>(height)),
          use_(use),
          data_(static_cast<uint8_t*>(::operator new (bytes_ + kSlack, std::align_val_t{kLine}))) {
        FillWithNoise(data_.get(), bytes_ + kSlack);
    }

    // With rows of whole cache lines.
    static Picture Aligned(int32_t rowBytes, int32_t height, Use use) {
        constexpr auto line = static_cast<int32_t>(kLine);
        return {(rowBytes + line - 1) / line * line, height, use};
    }

    // Of this turn.
    uint8_t* Data() const {
        PictureRings& rings = PictureRings::Get();
        if (use_ == Use::Scratch || !rings.IsTurning()) return data_.get();
        return rings.Piece(use_ == Use::Source ? 0 : 1, bytes_);
    }
    int32_t Stride() const { return stride_; }
    size_t Bytes() const { return bytes_; }

  private:
    struct Free {
        void operator()(uint8_t* data) const { ::operator delete (data, std::align_val_t{kLine}); }
    };

    int32_t stride_;
    size_t bytes_;
    Use use_;
    std::unique_ptr<uint8_t, Free> data_;
};

}  // namespace tavo::bench
