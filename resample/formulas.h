// The arithmetic of every kernel. docs/kernels.md says in which order each family applies it.

#pragma once

#include <cstdint>

namespace tavo {

// Where a result goes that lies between two integers.
enum class Rounding { Down, Up };

namespace {

// From a, weight / 256 of the way to b. Lies between a and b. Down is toward minus infinity.
template <Rounding kRounding>
constexpr int32_t BlendSamples(int32_t a, int32_t b, int32_t weight) {
    if constexpr (kRounding == Rounding::Down) {
        return a + (((b - a) * weight) >> 8);
    } else {
        return a - (((a - b) * weight) >> 8);
    }
}
static_assert(BlendSamples<Rounding::Down>(10, 11, 128) == 10);
static_assert(BlendSamples<Rounding::Down>(11, 10, 128) == 10);
static_assert(BlendSamples<Rounding::Up>(10, 11, 128) == 11);
static_assert(BlendSamples<Rounding::Up>(11, 10, 128) == 11);
static_assert(BlendSamples<Rounding::Down>(0, 255, 255) == 254);

// Half of the sum.
template <Rounding kRounding>
constexpr int32_t AverageSamples(int32_t a, int32_t b) {
    return (a + b + (kRounding == Rounding::Up ? 1 : 0)) >> 1;
}
static_assert(AverageSamples<Rounding::Down>(10, 11) == 10);
static_assert(AverageSamples<Rounding::Up>(10, 11) == 11);

// Deliberate: what a weight of 255/256 leaves of a sample. 0 stays 0, all others lose 1.
constexpr int32_t DimSample(int32_t sample) { return sample * 255 >> 8; }
static_assert(DimSample(0) == 0 && DimSample(1) == 0 && DimSample(255) == 254);

}  // namespace
}  // namespace tavo
