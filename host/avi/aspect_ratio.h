// Ratios of width to height, of pictures and of pixels.

#pragma once

#include <cstdint>
#include <numeric>

namespace tavo {

// 0:0 when it is unknown.
struct AspectRatio {
    uint32_t x = 0;
    uint32_t y = 0;

    bool IsKnown() const { return x > 0 && y > 0; }
    bool operator==(const AspectRatio&) const = default;
};

// In lowest terms. Halved, with rounding, until both sides fit 16 bits.
constexpr AspectRatio Reduced(uint64_t x, uint64_t y) {
    if (x == 0 || y == 0) return {};
    const uint64_t divisor = std::gcd(x, y);
    x /= divisor;
    y /= divisor;
    while (x > 0xFFFF || y > 0xFFFF) {
        x = (x + 1) / 2;
        y = (y + 1) / 2;
    }
    return {static_cast<uint32_t>(x), static_cast<uint32_t>(y)};
}

}  // namespace tavo
