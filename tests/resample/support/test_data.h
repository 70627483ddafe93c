// Bytes to scale: random ones and the extremes at which arithmetic breaks first. The same seed
// gives the same bytes in every build.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavo::test {

// A small generator whose sequence is fixed, unlike that of the library's distributions.
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed * 2 + 1) {}

    uint32_t Next() {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        const auto mixed = static_cast<uint32_t>((state_ >> 33) ^ (state_ >> 47));
        return mixed * 2654435761u ^ mixed >> 15;
    }

    uint8_t NextByte() { return static_cast<uint8_t>(Next() >> 11); }

    // From low to high, both included.
    int32_t Between(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(Next() % (static_cast<uint32_t>(high - low) + 1));
    }

  private:
    uint64_t state_;
};

enum class Pattern {
    Random,
    Zeros,
    Full,              // every byte 255
    RandomExtremes,    // 0 or 255
    AlternateColumns,  // 0 and 255 from byte to byte
    AlternateRows,     // 0 and 255 from row to row
    Checkerboard,
    RampAcross,
    RampDown,
};
constexpr Pattern kPatterns[] = {
    Pattern::Random,
    Pattern::Zeros,
    Pattern::Full,
    Pattern::RandomExtremes,
    Pattern::AlternateColumns,
    Pattern::AlternateRows,
    Pattern::Checkerboard,
    Pattern::RampAcross,
    Pattern::RampDown,
};

const char* NameOf(Pattern pattern);

// rows rows of stride bytes each.
std::vector<uint8_t> MakeBytes(Pattern pattern, int32_t stride, int32_t rows, uint64_t seed);

}  // namespace tavo::test
