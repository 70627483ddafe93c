// Row operations in MMX registers, for MMX and for SSE: V is what the two do differently.
// docs/kernels.md has the formulas.

#pragma once

#include <concepts>

#include "resample/row_ops/mmx_packed422.h"
#include "resample/row_ops/mmx_registers.h"

namespace tavo {
namespace {

template <MmxSet V>
struct MmxOps {
    // Planes: eight columns a step.

    template <Rounding kRounding>
    static __m64 BlendFour(const uint8_t* row, const ColumnRun& columns, int32_t i) {
        // Each lane holds a sample in its low byte and the right neighbour in its high byte.
        const __m64 pairs =
            V::Words(Load2(row + columns.Pixel(i)), Load2(row + columns.Pixel(i + 1)),
                     Load2(row + columns.Pixel(i + 2)), Load2(row + columns.Pixel(i + 3)));
        return BlendLanes<kRounding>(_mm_and_si64(pairs, LowBytes()), _mm_srli_pi16(pairs, 8),
                                     Weights16(columns.weights + i));
    }

    template <Rounding kRounding>
    static void BlendPlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 8 <= columns.count; i += 8) {
            Store8(dst + i, _mm_packs_pu16(BlendFour<kRounding>(row, columns, i),
                                           BlendFour<kRounding>(row, columns, i + 4)));
        }
        BlendColumnsPlain<PlanePixel, kRounding>(dst, row, columns, i);
    }

    static void NearestPlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        const auto word = [&](int32_t i) {
            return static_cast<uint32_t>(row[columns.Pixel(i)] | row[columns.Pixel(i + 1)] << 8);
        };
        int32_t i = 0;
        for (; i + 8 <= columns.count; i += 8) {
            Store8(dst + i, V::Words(word(i), word(i + 2), word(i + 4), word(i + 6)));
        }
        NearestColumnsPlain<PlanePixel>(dst, row, columns, i);
    }

    // RGB24: a pixel and its neighbour are six bytes, and no others are read. Each pixel is stored
    // as four bytes, of which the next pixel overwrites the last; the last pixel is done plainly.

    template <Rounding kRounding>
    static void BlendRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 1 < columns.count; ++i) {
            const uint8_t* pixel = row + columns.Pixel(i) * 3;
            const __m64 left = Widen(FromLow(Load4(pixel)));
            const __m64 right = Widen(FromLow(Load4(pixel + 2) >> 8));
            const __m64 blended = BlendLanes<kRounding>(left, right, Weight16(columns.weights[i]));
            Store4(dst + i * 3, _mm_packs_pu16(blended, blended));
        }
        BlendColumnsPlain<Rgb24Pixel, kRounding>(dst, row, columns, i);
    }

    // Eight pixels make three registers; the third and the sixth lie across two.
    static void NearestRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
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
        NearestColumnsPlain<Rgb24Pixel>(dst, row, columns, i);
    }

    // RGB555 and RGB565: four pixels a step.

    template <typename Pixel>
    static void BlendFieldRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                               int32_t bytes) {
        const __m64 weight16 = Weight16(weight);
        int32_t i = 0;
        for (; i + 8 <= bytes; i += 8) {
            Store8(dst + i,
                   BlendFields<Pixel, Rounding::Down>(Load8(a + i), Load8(b + i), weight16));
        }
        BlendRowsPlain<Pixel>(dst + i, a + i, b + i, weight, bytes - i);
    }

    // Four columns; with row + 2, their right neighbours.
    static __m64 GatherFourWords(const uint8_t* row, const ColumnRun& columns, int32_t i) {
        return V::Words(Load2(row + columns.Pixel(i) * 2), Load2(row + columns.Pixel(i + 1) * 2),
                        Load2(row + columns.Pixel(i + 2) * 2),
                        Load2(row + columns.Pixel(i + 3) * 2));
    }

    template <typename Pixel, Rounding kRounding>
    static void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            Store8(dst + i * 2, BlendFields<Pixel, kRounding>(GatherFourWords(row, columns, i),
                                                              GatherFourWords(row + 2, columns, i),
                                                              Weights16(columns.weights + i)));
        }
        BlendColumnsPlain<Pixel, kRounding>(dst, row, columns, i);
    }

    static void NearestWordColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ColumnRun& columns = plan.columns;
        int32_t i = 0;
        for (; i + 4 <= columns.count; i += 4) {
            Store8(dst + i * 2, GatherFourWords(row, columns, i));
        }
        NearestColumnsPlain<Rgb555Pixel>(dst, row, columns, i);
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

    static void CopyRow(uint8_t* dst, const uint8_t* src, int32_t bytes) {
        CopyBlocks(dst, src, bytes / 8);
        const int32_t whole = bytes & ~7;
        std::memcpy(dst + whole, src + whole, static_cast<size_t>(bytes - whole));
    }

    static void Finish() { _mm_empty(); }

    // A kind of pixel that has no code here is blended plainly across.
    template <typename Pixel>
    static constexpr PixelOps Of() {
        PixelOps ops = PlainOps::Of<Pixel>();
        ops.BlendRows = BlendByteRowsMmx;
        return ops;
    }
    template <std::same_as<PlanePixel> Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = BlendByteRowsMmx,
            .PlanBlend = PlanPlain,
            .PlanNearest = PlanPlain,
            .BlendColumns = BlendPlaneColumns<Rounding::Down>,
            .BlendColumnsUp = BlendPlaneColumns<Rounding::Up>,
            .NearestColumns = NearestPlaneColumns,
        };
    }
    template <std::same_as<Rgb24Pixel> Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = BlendByteRowsMmx,
            .PlanBlend = PlanPlain,
            .PlanNearest = PlanPlain,
            .BlendColumns = BlendRgb24Columns<Rounding::Down>,
            .BlendColumnsUp = BlendRgb24Columns<Rounding::Up>,
            .NearestColumns = NearestRgb24Columns,
        };
    }
    template <HasFields Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = BlendFieldRows<Pixel>,
            .PlanBlend = PlanPlain,
            .PlanNearest = PlanPlain,
            .BlendColumns = BlendFieldColumns<Pixel, Rounding::Down>,
            .BlendColumnsUp = BlendFieldColumns<Pixel, Rounding::Up>,
            .NearestColumns = NearestWordColumns,
        };
    }
};

// The whole set.
template <MmxSet V>
constexpr RowOps kMmxSetRowOps = {
    .pixels = OpsOfAllPixels<MmxOps<V>>(),
    .packed422 = MmxPacked422<V>::kAll,
    .packedBlend = nullptr,
    .CopyRow = MmxOps<V>::CopyRow,
    .CopyBlocks = MmxOps<V>::CopyBlocks,
    .Finish = MmxOps<V>::Finish,
};

}  // namespace
}  // namespace tavo
