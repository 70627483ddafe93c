// Building blocks of the row operations in MMX registers.
//
// A blend is done in 16-bit lanes: ((b - a) * 16 * (weight * 16)) >> 16 equals ((b - a) * weight)
// >> 8, with the same rounding. No factor exceeds 255 * 16, so nothing overflows.

#pragma once

#include <mmintrin.h>

#include <cstring>

#include "resample/row_ops/portable_columns.h"

namespace tavo {
namespace {

// What an instruction set in MMX registers does in its own way.
template <typename V>
concept MmxSet = requires(__m64 a, __m64 b, uint32_t word) {
    a = V::Words(word, word, word, word);  // four words as lanes, the first one lowest
    a = V::AverageDown8(a, b);             // of bytes
    a = V::AverageUp8(a, b);
};

inline __m64 Load8(const uint8_t* p) {
    __m64 value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

inline void Store8(uint8_t* p, __m64 value) { std::memcpy(p, &value, sizeof(value)); }

inline uint32_t Load4(const uint8_t* p) {
    uint32_t value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

inline void Store4(uint8_t* p, __m64 value) {
    const int low = _mm_cvtsi64_si32(value);
    std::memcpy(p, &low, sizeof(low));
}

inline uint32_t Load2(const uint8_t* p) {
    uint16_t value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

inline __m64 FromLow(uint32_t low) { return _mm_cvtsi32_si64(static_cast<int>(low)); }

// Without unpack instructions: compilers give them a memory operand of four bytes, of which
// emulators have been seen to read eight.
inline __m64 FromHalves(uint32_t low, uint32_t high) {
    return _mm_or_si64(FromLow(low), _mm_slli_si64(FromLow(high), 32));
}

// Four bytes as four lanes.
inline __m64 Widen(__m64 bytes) { return _mm_unpacklo_pi8(bytes, _mm_setzero_si64()); }
inline __m64 WidenHigh(__m64 bytes) { return _mm_unpackhi_pi8(bytes, _mm_setzero_si64()); }

// A weight times 16 in every lane, and four weights times 16.
inline __m64 Weight16(int32_t weight) { return _mm_set1_pi16(static_cast<int16_t>(weight * 16)); }
inline __m64 Weights16(const uint8_t* weights) {
    return _mm_slli_pi16(Widen(FromLow(Load4(weights))), 4);
}

inline __m64 LowBytes() { return _mm_set1_pi16(0x00ff); }

inline __m64 EvenBytes(__m64 a, __m64 b) {
    return _mm_packs_pu16(_mm_and_si64(a, LowBytes()), _mm_and_si64(b, LowBytes()));
}
inline __m64 OddBytes(__m64 a, __m64 b) {
    return _mm_packs_pu16(_mm_srli_pi16(a, 8), _mm_srli_pi16(b, 8));
}

// Four lanes.
template <Rounding kRounding>
__m64 BlendLanes(__m64 a, __m64 b, __m64 weight16) {
    if constexpr (kRounding == Rounding::Down) {
        return _mm_add_pi16(a, _mm_mulhi_pi16(_mm_slli_pi16(_mm_sub_pi16(b, a), 4), weight16));
    } else {
        return _mm_sub_pi16(a, _mm_mulhi_pi16(_mm_slli_pi16(_mm_sub_pi16(a, b), 4), weight16));
    }
}

// Eight bytes.
inline __m64 BlendBytes(const uint8_t* a, const uint8_t* b, __m64 weight16) {
    const __m64 a8 = Load8(a);
    const __m64 b8 = Load8(b);
    return _mm_packs_pu16(BlendLanes<Rounding::Down>(Widen(a8), Widen(b8), weight16),
                          BlendLanes<Rounding::Down>(WidenHigh(a8), WidenHigh(b8), weight16));
}

// Four 16-bit pixels, field by field.
template <typename Pixel, Rounding kRounding>
__m64 BlendFields(__m64 a, __m64 b, __m64 weight16) {
    const auto field = [=](int shift, int mask) {
        const __m64 bits = _mm_set1_pi16(static_cast<int16_t>(mask));
        const __m64 from = _mm_and_si64(_mm_srli_pi16(a, shift), bits);
        const __m64 to = _mm_and_si64(_mm_srli_pi16(b, shift), bits);
        return _mm_slli_pi16(BlendLanes<kRounding>(from, to, weight16), shift);
    };
    return _mm_or_si64(field(0, Pixel::kBlueMask),
                       _mm_or_si64(field(Pixel::kGreenShift, Pixel::kGreenMask),
                                   field(Pixel::kRedShift, Pixel::kRedMask)));
}

[[maybe_unused]] void BlendByteRowsMmx(uint8_t* dst, const uint8_t* a, const uint8_t* b,
                                       int32_t weight, int32_t bytes) {
    const __m64 weight16 = Weight16(weight);
    int32_t i = 0;
    for (; i + 8 <= bytes; i += 8) Store8(dst + i, BlendBytes(a + i, b + i, weight16));
    BlendRowsPlain<PlanePixel>(dst + i, a + i, b + i, weight, bytes - i);
}

}  // namespace
}  // namespace tavo
