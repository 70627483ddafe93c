// Conversions between frame rates and frame durations.

#include "host/avi/frame_rate.h"

#include <numeric>

namespace tavo {
namespace {

// Durations are rounded or truncated: within one unit of the true one.
bool Means(int64_t units, FrameRate rate) {
    const int64_t exact = kUnitsPerSecond * rate.scale;
    const int64_t off = units * rate.rate - exact;
    return -static_cast<int64_t>(rate.rate) < off && off < static_cast<int64_t>(rate.rate);
}

// Above this, two whole rates can have the same duration.
constexpr int64_t kMaxWholeRate = 1000;

}  // namespace

FrameRate RateFromDuration(int64_t units) {
    const int64_t nearest = (kUnitsPerSecond + units / 2) / units;
    if (nearest >= 1 && nearest <= kMaxWholeRate) {
        const uint32_t whole = static_cast<uint32_t>(nearest);
        if (Means(units, {whole, 1})) return {whole, 1};
        // Television rates: a whole rate slowed down by 1000/1001.
        if (Means(units, {whole * 1000, 1001})) return {whole * 1000, 1001};
    }
    constexpr int64_t kMaxScale = 0x7FFFFFFF;
    if (units > kMaxScale) return {1, static_cast<uint32_t>(kMaxScale / kUnitsPerSecond)};
    const int64_t divisor = std::gcd(units, kUnitsPerSecond);
    return {static_cast<uint32_t>(kUnitsPerSecond / divisor),
            static_cast<uint32_t>(units / divisor)};
}

int64_t DurationOf(FrameRate rate) {
    const int64_t units = (kUnitsPerSecond * rate.scale + rate.rate / 2) / rate.rate;
    return units > 0 ? units : 1;
}

int64_t FrameStart(FrameRate rate, uint64_t frame) {
    // `frame` and `scale` have 32 bits, so the product fits 64. The remainder is below `rate`.
    const uint64_t ticks = frame * rate.scale;
    const uint64_t units = ticks % rate.rate * uint64_t{kUnitsPerSecond} / rate.rate;
    return static_cast<int64_t>(ticks / rate.rate * kUnitsPerSecond + units);
}

}  // namespace tavo
