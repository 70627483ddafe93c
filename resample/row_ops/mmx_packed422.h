// Row operations on packed 4:2:2 in MMX registers (mmx_ops.h).

#pragma once

#include "resample/row_ops/mmx_registers.h"
#include "resample/row_ops/portable_packed422.h"

namespace tavo {
namespace {

template <MmxSet V>
struct MmxPacked422 {
    // Eight groups a step.
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

    // Averages of neighbouring bytes, in the low bytes of lanes.
    template <Rounding kRounding>
    static __m64 AveragePairs(__m64 pairs) {
        const __m64 left = _mm_and_si64(pairs, LowBytes());
        const __m64 right = _mm_srli_pi16(pairs, 8);
        return kRounding == Rounding::Down ? V::AverageDown8(left, right)
                                           : V::AverageUp8(left, right);
    }

    // Eight pixels.
    template <Rounding kRounding>
    static void StorePacked(uint8_t* dst, __m64 luma, __m64 first, __m64 second, bool lumaFirst) {
        const __m64 chroma = _mm_or_si64(AveragePairs<kRounding>(first),
                                         _mm_slli_pi16(AveragePairs<kRounding>(second), 8));
        const __m64 even = lumaFirst ? luma : chroma;
        const __m64 odd = lumaFirst ? chroma : luma;
        Store8(dst, _mm_unpacklo_pi8(even, odd));
        Store8(dst + 8, _mm_unpackhi_pi8(even, odd));
    }

    template <Rounding kRounding>
    static void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                     const PackedLayout& layout) {
        int32_t i = 0;
        for (; i + 8 <= pixels; i += 8) {
            StorePacked<kRounding>(dst + i * 2, Load8(src.luma + i), Load8(src.firstChroma + i),
                                   Load8(src.secondChroma + i), layout.luma == 0);
        }
        PackPlain<kRounding>(dst, src, pixels, layout, i);
    }

    // Four pixels a step. Whole groups are averaged, and the luma is then put in.
    static void NearestPackedColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                                     const PackedLayout& layout) {
        const ColumnRun& columns = plan.columns;
        const auto group = [&](int32_t i) { return Load4(row + columns.Pixel(i) / 2 * 4); };
        const auto luma = [&](int32_t i) -> uint32_t {
            return row[columns.Pixel(i) * 2 + layout.luma];
        };
        const bool lumaFirst = layout.luma == 0;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            const __m64 average = V::AverageDown8(FromHalves(group(i), group(i + 2)),
                                                  FromHalves(group(i + 1), group(i + 3)));
            const __m64 lumas = V::Words(luma(i), luma(i + 1), luma(i + 2), luma(i + 3));
            Store8(dst + i * 2, lumaFirst ? _mm_or_si64(lumas, _mm_andnot_si64(LowBytes(), average))
                                          : _mm_or_si64(_mm_slli_pi16(lumas, 8),
                                                        _mm_and_si64(LowBytes(), average)));
        }
        NearestPackedPlain(dst, row, columns, layout, i);
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

    static constexpr Packed422Ops kAll = {
        .Unpack = Unpack,
        .PackDown = Pack<Rounding::Down>,
        .PackUp = Pack<Rounding::Up>,
        .BlendPackDown = BlendThenPack<BlendByteRowsMmx, Pack<Rounding::Down>>,
        .BlendPackUp = BlendThenPack<BlendByteRowsMmx, Pack<Rounding::Up>>,
        .DimThirds = DimThirds,
        .PlanNearest = PlanPackedPlain,
        .NearestColumns = NearestPackedColumns,
    };
};

}  // namespace
}  // namespace tavo
