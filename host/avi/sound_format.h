// A format of uncompressed sound.

#pragma once

#include <cstdint>

namespace tavo {

struct SoundFormat {
    uint32_t channels = 0;  // 0: no sound
    uint32_t rate = 0;      // samples per second and channel
    uint32_t bits = 0;      // per sample, a multiple of 8
    bool isFloat = false;

    bool IsKnown() const { return channels > 0; }
    // One sample of each channel.
    uint32_t BlockBytes() const { return channels * (bits / 8); }
    uint32_t BytesPerSecond() const { return rate * BlockBytes(); }
    bool operator==(const SoundFormat&) const = default;
};

}  // namespace tavo
