// Conversions between frame rates and frame durations.

#include "host/avi/frame_rate.h"

#include <numeric>

namespace tavo {
namespace {

// Durations come rounded or truncated: within one unit of the true one.
bool Means(int64_t units, FrameRate rate) {
    const int64_t exact = kUnitsPerSecond * rate.scale;
    const int64_t off = units * rate.rate - exact;
    return -static_cast<int64_t>(rate.rate) < off && off < static_cast<int64_t>(rate.rate);
}

// Beyond this, two whole rates can share one duration.
constexpr int64_t kLargestWholeRate = 1000;

}  // namespace

FrameRate RateFromDuration(int64_t units) {
    const int64_t nearest = (kUnitsPerSecond + units / 2) / units;
    if (nearest >= 1 && nearest <= kLargestWholeRate) {
        const uint32_t whole = static_cast<uint32_t>(nearest);
        if (Means(units, {whole, 1})) return {whole, 1};
        // Television rates: a whole rate slowed down by 1000/1001.
        if (Means(units, {whole * 1000, 1001})) return {whole * 1000, 1001};
    }
    constexpr int64_t kLargestScale = 0x7FFFFFFF;
    if (units > kLargestScale) return {1, static_cast<uint32_t>(kLargestScale / kUnitsPerSecond)};
    const int64_t divisor = std::gcd(units, kUnitsPerSecond);
    return {static_cast<uint32_t>(kUnitsPerSecond / divisor),
            static_cast<uint32_t>(units / divisor)};
}

int64_t DurationOf(FrameRate rate) {
    const int64_t units = (kUnitsPerSecond * rate.scale + rate.rate / 2) / rate.rate;
    return units > 0 ? units : 1;
}

int64_t FrameStart(FrameRate rate, uint64_t frame) {
    // Frame counts fit 32 bits, so the product fits 64; what remains of a second is below `rate`.
    const uint64_t ticks = frame * rate.scale;
    const uint64_t units = ticks % rate.rate * uint64_t{kUnitsPerSecond} / rate.rate;
    return static_cast<int64_t>(ticks / rate.rate * kUnitsPerSecond + units);
}

}  // namespace tavo
