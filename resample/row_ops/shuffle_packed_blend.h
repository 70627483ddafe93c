// Bilinear scaling of packed 4:2:2 for instruction sets with a byte shuffle. Columns are planned in
// tiles of eight pixels. A tile loads two windows of eight source pixels, one for each half of its
// columns, and splits them into luma and chroma; shuffles put these in place for the blend, which
// is that of shuffle_plan.h. If a shuffle reaches across the whole register, one tile fills it.
//
// A blended row has three registers for each step of the plan: luma, chroma of the even pixels and
// chroma of the odd ones, both kinds in turn. So the two that are averaged are in the same place,
// and go with the luma of that place into a word of the destination. Bytes stay biased.

#pragma once

#include "resample/row_ops/shuffle_plan.h"
#include "resample/row_ops/shuffle_registers.h"

namespace tavo {
namespace {

// For each part.
struct PartShuffle {
    constexpr explicit PartShuffle(const uint8_t (&part)[16]) {
        for (int32_t i = 0; i < 64; ++i) bytes[i] = part[i % 16];
    }
    uint8_t bytes[64] = {};
};
alignas(64) constexpr PartShuffle kSplit({0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15});
alignas(64) constexpr PartShuffle kEvenTwice({0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13});
alignas(64) constexpr PartShuffle
    kOddTwice({2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15});

// What dims the first of every three sums (DimSample): 1 in its upper byte.
struct Thirds {
    constexpr Thirds() {
        for (int32_t i = 0; i < 36; i += 3) bytes[2 * i + 1] = 1;
    }
    uint8_t bytes[2 * 36] = {};
};
constexpr Thirds kThirds;

template <ShuffleRegister V>
struct ShufflePackedBlend {
    using Base = ShuffleRegisters<V>;
    using Reg = typename V::Reg;

    static constexpr int32_t kBytes = Base::kBytes;
    static constexpr int32_t kStepPixels = kBytes;
    static constexpr int32_t kParts = V::kParts;
    // The parts of one tile, which share its windows.
    static constexpr int32_t kTileParts = V::kSharesWindow ? kParts : 1;
    static constexpr int32_t kTilePixels = 8 * kTileParts;
    static constexpr int32_t kWindowPixels = 8 * kTileParts;
    static constexpr int32_t kHalfPixels = kTilePixels / 2;

    // The tables of two registers of pixels, by part.
    struct Step {
        int32_t low[2 * kParts];   // offset of the window of a tile's first half
        int32_t high[2 * kParts];  // and of its second half
        uint8_t luma[2 * kBytes];
        uint8_t evenChroma[2 * kBytes];
        uint8_t oddChroma[2 * kBytes];
        uint8_t weights[2 * kBytes];
    };
    static_assert(sizeof(Step) * (kPackedPlanColumns / kStepPixels) == kPackedPlanBytes);

    // The columns of half a tile. Those behind the last one repeat it.
    struct HalfTile {
        const ColumnRun& luma;
        const ColumnRun& chroma;
        int32_t first;

        int32_t Column(int32_t i) const { return Min(first + i, luma.count - 1); }

        // The source pixels that it spans, in whole groups.
        SourceSpan Pixels() const {
            SourceSpan span = {INT32_MAX, 0};
            for (int32_t i = 0; i < kHalfPixels; ++i) {
                const int32_t column = Column(i);
                const int32_t group = chroma.indices[column];
                span.first = Min(span.first, Min(luma.indices[column] & ~1, group * 2));
                span.last = Max(span.last, luma.indices[column] + (luma.weights[column] != 0));
                span.last = Max(span.last, (group + (chroma.weights[column] != 0)) * 2 + 1);
            }
            return span;
        }
    };

    // Where a pixel of a window is in the split windows of its tile.
    static int32_t PlaceOf(int32_t pixel, int32_t half) {
        return pixel / 8 * 16 + half * 8 + pixel % 8;
    }

    // A sample and the one that it is blended with, in a shuffle.
    struct Pair {
        int32_t at;
        int32_t next;

        void PutInto(uint8_t* shuffle) const {
            shuffle[0] = static_cast<uint8_t>(at);
            shuffle[1] = static_cast<uint8_t>(next);
        }
    };

    // A sample that is not blended is taken twice, which goes with any weight. So luma and chroma
    // can share a weight. False if they cannot, or if columns lie too far apart.
    static bool PlanHalf(Step& step, int32_t tile, int32_t half, const HalfTile& columns,
                         int32_t rowBytes) {
        const int32_t part = tile * kTileParts;
        int32_t firstPixel;
        if (!PlaceWindow(columns.Pixels(), kWindowPixels, rowBytes / 2, &firstPixel)) return false;
        (half == 0 ? step.low : step.high)[part] = firstPixel * 2;
        for (int32_t i = 0; i < kHalfPixels; ++i) {
            const int32_t column = columns.Column(i);
            const int32_t lumaWeight = columns.luma.weights[column];
            const int32_t chromaWeight = columns.chroma.weights[column];
            if (lumaWeight != 0 && chromaWeight != 0 && lumaWeight != chromaWeight) return false;
            const int32_t weight = Max(lumaWeight, chromaWeight);
            const int32_t byte = part * 16 + 2 * (half * kHalfPixels + i);
            step.weights[byte] = static_cast<uint8_t>(weight == 0 ? 128 : 256 - weight);
            step.weights[byte + 1] = static_cast<uint8_t>(weight == 0 ? 128 : weight);

            const int32_t pixel = columns.luma.indices[column] - firstPixel;
            Pair{PlaceOf(pixel, half), PlaceOf(pixel + (lumaWeight != 0), half)}.PutInto(step.luma +
                                                                                         byte);
            const int32_t even = columns.chroma.indices[column] * 2 - firstPixel;
            const Pair first = {PlaceOf(even, half),
                                PlaceOf(even + (chromaWeight != 0 ? 2 : 0), half)};
            uint8_t* const chroma = i % 2 == 0 ? step.evenChroma + byte : step.oddChroma + byte - 2;
            first.PutInto(chroma);
            Pair{first.at + 1, first.next + 1}.PutInto(chroma + 2);
        }
        return true;
    }

    static bool Plan(uint8_t* tables, const ColumnRun& luma, const ColumnRun& chroma,
                     int32_t rowBytes) {
        auto* step = reinterpret_cast<Step*>(tables);
        for (int32_t first = 0; first < luma.count; first += kStepPixels, ++step) {
            for (int32_t i = 0; i < kStepPixels; i += kHalfPixels) {
                if (!PlanHalf(*step, i / kTilePixels, i / kHalfPixels % 2,
                              {luma, chroma, first + i}, rowBytes)) {
                    return false;
                }
            }
        }
        return true;
    }

    // 16-bit sums of half a step. The samples are their upper bytes.
    struct Sums {
        Reg luma;
        Reg evenChroma;
        Reg oddChroma;
    };

    template <bool kLumaFirst>
    static Sums BlendTiles(const uint8_t* row, const Step& step, int32_t part) {
        const Reg split = V::Load(kSplit.bytes);
        const Reg a = V::ShuffleParts(V::LoadWindows(row, &step.low[part]), split);
        const Reg b = V::ShuffleParts(V::LoadWindows(row, &step.high[part]), split);
        const Reg even = V::Xor(V::InterleaveLow64(a, b), V::Set8(kBias));
        const Reg odd = V::Xor(V::InterleaveHigh64(a, b), V::Set8(kBias));
        const Reg luma = kLumaFirst ? even : odd;
        const Reg chroma = kLumaFirst ? odd : even;
        const Reg weights = V::Load(step.weights + part * 16);
        return {V::MulAddBytes(weights, V::Shuffle(luma, V::Load(step.luma + part * 16))),
                V::MulAddBytes(V::ShuffleParts(weights, V::Load(kEvenTwice.bytes)),
                               V::Shuffle(chroma, V::Load(step.evenChroma + part * 16))),
                V::MulAddBytes(V::ShuffleParts(weights, V::Load(kOddTwice.bytes)),
                               V::Shuffle(chroma, V::Load(step.oddChroma + part * 16)))};
    }

    // Part by part, as Interleave8 undoes it.
    static Reg PackHighBytes(Reg a, Reg b) {
        return V::PackSigned(V::ShiftRight8(a), V::ShiftRight8(b));
    }

    template <bool kLumaFirst>
    static void BlendRow(uint8_t* dst, const uint8_t* row, const uint8_t* tables, int32_t pixels) {
        const auto* step = reinterpret_cast<const Step*>(tables);
        for (int32_t i = 0; i < pixels; i += kStepPixels, ++step, dst += 3 * kBytes) {
            const Sums a = BlendTiles<kLumaFirst>(row, *step, 0);
            const Sums b = BlendTiles<kLumaFirst>(row, *step, kParts);
            V::Store(dst, PackHighBytes(a.luma, b.luma));
            V::Store(dst + kBytes, PackHighBytes(a.evenChroma, b.evenChroma));
            V::Store(dst + 2 * kBytes, PackHighBytes(a.oddChroma, b.oddChroma));
        }
    }

    // Averages chroma, takes the bias away and makes words: half a step of packed pixels. The
    // average rounds up; of complements it is the complement of the one that is rounded down.
    template <Rounding kRounding, bool kLumaFirst>
    static Reg PackSums(const Sums& sums) {
        constexpr bool kUp = kRounding == Rounding::Up;
        constexpr uint8_t kComplement = kUp ? 0 : 0xff;
        const Reg bias = V::Set8(kBias ^ kComplement);
        const Reg chroma =
            V::AverageUp8(V::Xor(sums.evenChroma, bias), V::Xor(sums.oddChroma, bias));
        const Reg low = V::template ShiftRight16<8>(kLumaFirst ? sums.luma : chroma);
        const Reg high = V::And(kLumaFirst ? chroma : sums.luma, V::Set16(-0x100));
        constexpr int32_t kUnbias =
            kLumaFirst ? kComplement << 8 | kBias : kBias << 8 | kComplement;
        return V::Xor(V::Or(low, high), V::Set16(static_cast<int16_t>(kUnbias)));
    }

    // Stores step(i, store) for each step. store(first, second) stores its two halves.
    template <Rounding kRounding, bool kLumaFirst, typename Step>
    static void StoreSteps(uint8_t* dst, int32_t pixels, Step step) {
        int32_t i = 0;
        const auto storeTo = [](uint8_t* to) {
            return [to](const Sums& first, const Sums& second) {
                V::Store(to, PackSums<kRounding, kLumaFirst>(first));
                V::Store(to + kBytes, PackSums<kRounding, kLumaFirst>(second));
            };
        };
        for (; i + kStepPixels <= pixels; i += kStepPixels) step(i, storeTo(dst + i * 2));
        if (i == pixels) return;
        uint8_t last[2 * kBytes];
        step(i, storeTo(last));
        std::memcpy(dst + i * 2, last, static_cast<size_t>(pixels - i) * 2);
    }

    template <Rounding kRounding, bool kLumaFirst, bool kDims>
    static void ScaleRow(uint8_t* dst, const uint8_t* row, const uint8_t* tables, int32_t pixels) {
        const auto* steps = reinterpret_cast<const Step*>(tables);
        const auto sumsOf = [=](int32_t pixel, int32_t part) {
            Sums sums = BlendTiles<kLumaFirst>(row, steps[pixel / kStepPixels], part);
            if constexpr (kDims) {
                const uint8_t* const thirds = kThirds.bytes + (pixel + part * 8) % 3 * 2;
                sums.luma = V::SubSaturated16(sums.luma, V::Load(thirds));
            }
            return sums;
        };
        StoreSteps<kRounding, kLumaFirst>(
            dst, pixels, [=](int32_t i, auto store) { store(sumsOf(i, 0), sumsOf(i, kParts)); });
    }

    // The bytes of a half are the upper ones of words.
    template <Rounding kRounding, bool kLumaFirst>
    static void PackRow(uint8_t* dst, const uint8_t* row, int32_t pixels) {
        StoreSteps<kRounding, kLumaFirst>(dst, pixels, [=](int32_t i, auto store) {
            const uint8_t* const at = row + i * 3;
            const Reg none = V::Set8(0);
            const Reg luma = V::Load(at);
            const Reg even = V::Load(at + kBytes);
            const Reg odd = V::Load(at + 2 * kBytes);
            store({V::InterleaveLow8(none, luma), V::InterleaveLow8(none, even),
                   V::InterleaveLow8(none, odd)},
                  {V::InterleaveHigh8(none, luma), V::InterleaveHigh8(none, even),
                   V::InterleaveHigh8(none, odd)});
        });
    }

    template <Rounding kRounding, bool kLumaFirst>
    static void BlendPackRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                              int32_t pixels) {
        const Reg weights = Base::WeightPairs(weight);
        StoreSteps<kRounding, kLumaFirst>(dst, pixels, [=](int32_t i, auto store) {
            Reg low[3];
            Reg high[3];
            for (int32_t kind = 0; kind < 3; ++kind) {
                const Reg upper = V::Load(a + i * 3 + kind * kBytes);
                const Reg lower = V::Load(b + i * 3 + kind * kBytes);
                low[kind] = V::MulAddBytes(weights, V::InterleaveLow8(upper, lower));
                high[kind] = V::MulAddBytes(weights, V::InterleaveHigh8(upper, lower));
            }
            store({low[0], low[1], low[2]}, {high[0], high[1], high[2]});
        });
    }

    static void BlendColumns(uint8_t* dst, const uint8_t* row, const uint8_t* tables,
                             int32_t pixels, const PackedLayout& layout) {
        if (layout.luma == 0) return BlendRow<true>(dst, row, tables, pixels);
        BlendRow<false>(dst, row, tables, pixels);
    }

    template <Rounding kRounding>
    static void ScaleColumns(uint8_t* dst, const uint8_t* row, const uint8_t* tables,
                             int32_t pixels, const PackedLayout& layout) {
        if (layout.luma == 0) return ScaleRow<kRounding, true, false>(dst, row, tables, pixels);
        ScaleRow<kRounding, false, false>(dst, row, tables, pixels);
    }

    static void ScaleColumnsDimmed(uint8_t* dst, const uint8_t* row, const uint8_t* tables,
                                   int32_t pixels, const PackedLayout& layout) {
        if (layout.luma == 0) return ScaleRow<Rounding::Down, true, true>(dst, row, tables, pixels);
        ScaleRow<Rounding::Down, false, true>(dst, row, tables, pixels);
    }

    template <Rounding kRounding, bool kLumaFirst>
    static void BlendRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                          int32_t pixels) {
        if (weight == 0) return PackRow<kRounding, kLumaFirst>(dst, a, pixels);
        BlendPackRows<kRounding, kLumaFirst>(dst, a, b, weight, pixels);
    }

    template <Rounding kRounding>
    static void BlendPack(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                          int32_t pixels, const PackedLayout& layout) {
        if (layout.luma == 0) return BlendRows<kRounding, true>(dst, a, b, weight, pixels);
        BlendRows<kRounding, false>(dst, a, b, weight, pixels);
    }

    static constexpr PackedBlendOps kAll = {
        .Plan = Plan,
        .BlendColumns = BlendColumns,
        .BlendPackDown = BlendPack<Rounding::Down>,
        .BlendPackUp = BlendPack<Rounding::Up>,
        .ScaleColumnsDown = ScaleColumns<Rounding::Down>,
        .ScaleColumnsUp = ScaleColumns<Rounding::Up>,
        .ScaleColumnsDimmed = ScaleColumnsDimmed,
    };
};

}  // namespace
}  // namespace tavo
