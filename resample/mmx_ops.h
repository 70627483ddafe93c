// Row operations for the instruction sets that work in MMX registers, written once over what they
// do differently, V: gathering words and averaging bytes.
//
// A blend works in 16-bit lanes: ((b - a) * 16 * (weight * 16)) >> 16 is ((b - a) * weight) >> 8,
// rounded the same way, and neither factor exceeds 255 * 16 in magnitude.

#pragma once

#include <mmintrin.h>

#include "resample/portable_columns.h"
#include "resample/portable_packed422.h"

namespace tavo {
namespace {

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

// No unpack: compilers give it a half in memory, and emulators have been seen to read eight bytes
// for the four of it.
inline __m64 FromHalves(uint32_t low, uint32_t high) {
    return _mm_or_si64(FromLow(low), _mm_slli_si64(FromLow(high), 32));
}

// Four bytes as four lanes.
inline __m64 Widen(__m64 bytes) { return _mm_unpacklo_pi8(bytes, _mm_setzero_si64()); }
inline __m64 WidenHigh(__m64 bytes) { return _mm_unpackhi_pi8(bytes, _mm_setzero_si64()); }

// A weight times 16 in every lane; four weights times 16.
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
template <typename Rounding>
__m64 BlendLanes(__m64 a, __m64 b, __m64 weight16);

template <>
inline __m64 BlendLanes<RoundDown>(__m64 a, __m64 b, __m64 weight16) {
    const __m64 difference16 = _mm_slli_pi16(_mm_sub_pi16(b, a), 4);
    return _mm_add_pi16(a, _mm_mulhi_pi16(difference16, weight16));
}

template <>
inline __m64 BlendLanes<RoundUp>(__m64 a, __m64 b, __m64 weight16) {
    const __m64 difference16 = _mm_slli_pi16(_mm_sub_pi16(a, b), 4);
    return _mm_sub_pi16(a, _mm_mulhi_pi16(difference16, weight16));
}

// Eight bytes.
inline __m64 BlendBytes(const uint8_t* a, const uint8_t* b, __m64 weight16) {
    const __m64 a8 = Load8(a);
    const __m64 b8 = Load8(b);
    return _mm_packs_pu16(BlendLanes<RoundDown>(Widen(a8), Widen(b8), weight16),
                          BlendLanes<RoundDown>(WidenHigh(a8), WidenHigh(b8), weight16));
}

// Four 16-bit pixels, field by field.
template <typename Pixel, typename Rounding>
__m64 BlendFields(__m64 a, __m64 b, __m64 weight16) {
    const auto field = [=](int shift, int mask) {
        const __m64 bits = _mm_set1_pi16(static_cast<int16_t>(mask));
        const __m64 from = _mm_and_si64(_mm_srli_pi16(a, shift), bits);
        const __m64 to = _mm_and_si64(_mm_srli_pi16(b, shift), bits);
        return _mm_slli_pi16(BlendLanes<Rounding>(from, to, weight16), shift);
    };
    return _mm_or_si64(field(0, Pixel::kBlueMask),
                       _mm_or_si64(field(Pixel::kGreenShift, Pixel::kGreenMask),
                                   field(Pixel::kRedShift, Pixel::kRedMask)));
}

// V::Words(a, b, c, d): four words as lanes, the first one lowest.
// V::AverageDown(a, b), V::AverageUp(a, b): of bytes.
template <typename V>
struct MmxOps {
    // Planes: bytes, eight a step.

    static void BlendByteRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                              int32_t bytes) {
        const __m64 weight16 = Weight16(weight);
        int32_t i = 0;
        for (; i + 8 <= bytes; i += 8) Store8(dst + i, BlendBytes(a + i, b + i, weight16));
        BlendRowsPlain<PlanePixel>(dst + i, a + i, b + i, weight, bytes - i);
    }

    template <typename Rounding>
    static __m64 BlendFour(const uint8_t* row, const ColumnRun& columns, int32_t i) {
        // Each lane holds a sample (low byte) and its right neighbour.
        const __m64 pairs =
            V::Words(Load2(row + columns.Pixel(i)), Load2(row + columns.Pixel(i + 1)),
                     Load2(row + columns.Pixel(i + 2)), Load2(row + columns.Pixel(i + 3)));
        return BlendLanes<Rounding>(_mm_and_si64(pairs, LowBytes()), _mm_srli_pi16(pairs, 8),
                                    Weights16(columns.weights + i));
    }

    template <typename Rounding>
    static void BlendPlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 8 <= columns.count; i += 8) {
            Store8(dst + i, _mm_packs_pu16(BlendFour<Rounding>(row, columns, i),
                                           BlendFour<Rounding>(row, columns, i + 4)));
        }
        BlendColumnsPlain<PlanePixel, Rounding>(dst, row, columns, i);
    }

    static void TakePlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        const auto word = [&](int32_t i) {
            return static_cast<uint32_t>(row[columns.Pixel(i)] | row[columns.Pixel(i + 1)] << 8);
        };
        int32_t i = 0;
        for (; i + 8 <= columns.count; i += 8) {
            Store8(dst + i, V::Words(word(i), word(i + 2), word(i + 4), word(i + 6)));
        }
        TakeColumnsPlain<PlanePixel>(dst, row, columns, i);
    }

    // RGB24: a pixel and its neighbour are six bytes, and no byte around them is read. Four bytes
    // are stored for three: the next pixel overwrites the fourth, and the last pixel is written
    // plainly.

    template <typename Rounding>
    static void BlendRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 1 < columns.count; ++i) {
            const uint8_t* pixel = row + columns.Pixel(i) * 3;
            const __m64 left = Widen(FromLow(Load4(pixel)));
            const __m64 right = Widen(FromLow(Load4(pixel + 2) >> 8));
            const __m64 blended = BlendLanes<Rounding>(left, right, Weight16(columns.weights[i]));
            Store4(dst + i * 3, _mm_packs_pu16(blended, blended));
        }
        BlendColumnsPlain<Rgb24Pixel, Rounding>(dst, row, columns, i);
    }

    // Eight pixels make three registers, and some of them lie across two.
    static void TakeRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 8 <= columns.count; i += 8) {
            const auto pixel = [&](int32_t k) {
                const uint8_t* from = row + columns.Pixel(i + k) * 3;
                return FromLow(Load2(from) | static_cast<uint32_t>(from[2]) << 16);
            };
            const auto join = [](__m64 a, __m64 b) { return _mm_or_si64(a, b); };
            const __m64 third = pixel(2);
            const __m64 sixth = pixel(5);
            uint8_t* to = dst + i * 3;
            Store8(to, join(join(pixel(0), _mm_slli_si64(pixel(1), 24)), _mm_slli_si64(third, 48)));
            Store8(to + 8, join(join(_mm_srli_si64(third, 16), _mm_slli_si64(pixel(3), 8)),
                                join(_mm_slli_si64(pixel(4), 32), _mm_slli_si64(sixth, 56))));
            Store8(to + 16, join(join(_mm_srli_si64(sixth, 8), _mm_slli_si64(pixel(6), 16)),
                                 _mm_slli_si64(pixel(7), 40)));
        }
        TakeColumnsPlain<Rgb24Pixel>(dst, row, columns, i);
    }

    // RGB555 and RGB565: four pixels a step.

    template <typename Pixel>
    static void BlendFieldRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                               int32_t bytes) {
        const __m64 weight16 = Weight16(weight);
        int32_t i = 0;
        for (; i + 8 <= bytes; i += 8) {
            Store8(dst + i, BlendFields<Pixel, RoundDown>(Load8(a + i), Load8(b + i), weight16));
        }
        BlendRowsPlain<Pixel>(dst + i, a + i, b + i, weight, bytes - i);
    }

    // Four columns, or the right neighbours of four.
    static __m64 TakeFourWords(const uint8_t* row, const ColumnRun& columns, int32_t i) {
        return V::Words(Load2(row + columns.Pixel(i) * 2), Load2(row + columns.Pixel(i + 1) * 2),
                        Load2(row + columns.Pixel(i + 2) * 2),
                        Load2(row + columns.Pixel(i + 3) * 2));
    }

    template <typename Pixel, typename Rounding>
    static void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            Store8(dst + i * 2, BlendFields<Pixel, Rounding>(TakeFourWords(row, columns, i),
                                                             TakeFourWords(row + 2, columns, i),
                                                             Weights16(columns.weights + i)));
        }
        BlendColumnsPlain<Pixel, Rounding>(dst, row, columns, i);
    }

    static void TakeWordColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            Store8(dst + i * 2, TakeFourWords(row, columns, i));
        }
        TakeColumnsPlain<Rgb555Pixel>(dst, row, columns, i);
    }

    // Packed 4:2:2: eight groups or pixels a step.

    static void Unpack(const PackedSamples& dst, const uint8_t* src, int32_t groups,
                       const PackedLayout& layout) {
        const bool lumaFirst = layout.luma == 0;
        int32_t i = 0;
        for (; i + 8 <= groups; i += 8) {
            __m64 chroma[2];
            for (int32_t half = 0; half < 2; ++half) {
                const uint8_t* from = src + i * 4 + half * 16;
                const __m64 even = EvenBytes(Load8(from), Load8(from + 8));
                const __m64 odd = OddBytes(Load8(from), Load8(from + 8));
                Store8(dst.luma + i * 2 + half * 8, lumaFirst ? even : odd);
                chroma[half] = lumaFirst ? odd : even;
            }
            Store8(dst.firstChroma + i, EvenBytes(chroma[0], chroma[1]));
            Store8(dst.secondChroma + i, OddBytes(chroma[0], chroma[1]));
        }
        UnpackPlain(dst, src, groups, layout, i);
    }

    // The averages of the pairs of eight bytes, in the low bytes of lanes.
    template <typename Average>
    static __m64 AveragePairs(__m64 pairs) {
        const __m64 left = _mm_and_si64(pairs, LowBytes());
        const __m64 right = _mm_srli_pi16(pairs, 8);
        return Average::kBias == 0 ? V::AverageDown(left, right) : V::AverageUp(left, right);
    }

    // Eight pixels.
    template <typename Average>
    static void StorePacked(uint8_t* dst, __m64 luma, __m64 first, __m64 second, bool lumaFirst) {
        const __m64 chroma = _mm_or_si64(AveragePairs<Average>(first),
                                         _mm_slli_pi16(AveragePairs<Average>(second), 8));
        const __m64 even = lumaFirst ? luma : chroma;
        const __m64 odd = lumaFirst ? chroma : luma;
        Store8(dst, _mm_unpacklo_pi8(even, odd));
        Store8(dst + 8, _mm_unpackhi_pi8(even, odd));
    }

    template <typename Average>
    static void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                     const PackedLayout& layout) {
        int32_t i = 0;
        for (; i + 8 <= pixels; i += 8) {
            StorePacked<Average>(dst + i * 2, Load8(src.luma + i), Load8(src.firstChroma + i),
                                 Load8(src.secondChroma + i), layout.luma == 0);
        }
        PackPlain<Average>(dst, src, pixels, layout, i);
    }

    // Four pixels a step. The chroma of two pixels is averaged with their whole groups.
    static void TakePackedColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                                  const PackedLayout& layout) {
        const ColumnRun& columns = plan.columns;
        const auto group = [&](int32_t i) { return Load4(row + columns.Pixel(i) / 2 * 4); };
        const auto luma = [&](int32_t i) -> uint32_t {
            return row[columns.Pixel(i) * 2 + layout.luma];
        };
        const bool lumaFirst = layout.luma == 0;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            const __m64 average = V::AverageDown(FromHalves(group(i), group(i + 2)),
                                                 FromHalves(group(i + 1), group(i + 3)));
            const __m64 lumas = V::Words(luma(i), luma(i + 1), luma(i + 2), luma(i + 3));
            Store8(dst + i * 2, lumaFirst ? _mm_or_si64(lumas, _mm_andnot_si64(LowBytes(), average))
                                          : _mm_or_si64(_mm_slli_pi16(lumas, 8),
                                                        _mm_and_si64(LowBytes(), average)));
        }
        TakePackedPlain(dst, row, columns, layout, i);
    }

    static void DimThirds(uint8_t* samples, int32_t count) {
        constexpr uint8_t kOnes[] = {1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0,
                                     1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0};
        int32_t i = 0;
        for (; i + 24 <= count; i += 24) {
            for (int32_t part = 0; part < 24; part += 8) {
                uint8_t* at = samples + i + part;
                Store8(at, _mm_subs_pu8(Load8(at), Load8(kOnes + part)));
            }
        }
        DimThirdsPlain(samples, count, i);
    }

    static void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
        for (; blocks >= 4; blocks -= 4, dst += 32, src += 32) {
            const __m64 a = Load8(src);
            const __m64 b = Load8(src + 8);
            const __m64 c = Load8(src + 16);
            const __m64 d = Load8(src + 24);
            Store8(dst, a);
            Store8(dst + 8, b);
            Store8(dst + 16, c);
            Store8(dst + 24, d);
        }
        for (; blocks > 0; --blocks, dst += 8, src += 8) Store8(dst, Load8(src));
    }

    static void Finish() { _mm_empty(); }

    template <typename Pixel>
    static constexpr PixelOps kFieldOps = {BlendFieldRows<Pixel>,
                                           PlanPlain,
                                           PlanPlain,
                                           BlendFieldColumns<Pixel, RoundDown>,
                                           BlendFieldColumns<Pixel, RoundUp>,
                                           TakeWordColumns};

    static constexpr RowOps kAll = {
        {BlendByteRows, PlanPlain, PlanPlain, BlendPlaneColumns<RoundDown>,
         BlendPlaneColumns<RoundUp>, TakePlaneColumns},
        {BlendByteRows, PlanPlain, PlanPlain, BlendRgb24Columns<RoundDown>,
         BlendRgb24Columns<RoundUp>, TakeRgb24Columns},
        kFieldOps<Rgb555Pixel>,
        kFieldOps<Rgb565Pixel>,
        {Unpack, Pack<AverageDown>, Pack<AverageUp>,
         BlendThenPack<BlendByteRows, Pack<AverageDown>>,
         BlendThenPack<BlendByteRows, Pack<AverageUp>>, DimThirds, PlanPackedPlain,
         TakePackedColumns},
        CopyBlocks,
        Finish,
    };
};

}  // namespace
}  // namespace tavo
