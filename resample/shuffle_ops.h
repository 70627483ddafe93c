// Row operations for the instruction sets that have a byte shuffle, written once over a register
// type V. A register is made of parts of sixteen bytes that most instructions treat apart; a part
// holds one tile of a plan (shuffle_plan.h).

#pragma once

#include <cstring>

#include "resample/portable_packed422.h"
#include "resample/shuffle_plan.h"

namespace tavo {
namespace {

constexpr uint8_t kBias = 0x80;

// Rounding of a blend's 16-bit sums.
template <typename Rounding>
struct SumBias;
template <>
struct SumBias<RoundDown> {
    static constexpr int16_t kValue = 0;
};
template <>
struct SumBias<RoundUp> {
    static constexpr int16_t kValue = 255;
};

template <typename V>
struct ShuffleOps {
    using Reg = typename V::Reg;

    // Bytes a register holds, and the tiles that two registers of sums give.
    static constexpr int32_t kBytes = V::kParts * 16;
    static constexpr int32_t kStep = kTilesAStep<V>;

    // Calls operation(i) for every register of a row of at least one: the last one overlaps the one
    // before it.
    template <typename Operation>
    static void ForRegisters(int32_t bytes, Operation operation) {
        for (int32_t i = 0; i < bytes - kBytes; i += kBytes) operation(i);
        operation(bytes - kBytes);
    }

    // Stores bytesOf(slot) for the tiles of each step, so many bytes in all.
    template <typename BytesOf>
    static void StoreSteps(uint8_t* dst, const ColumnPlan& plan, int32_t bytes, BytesOf bytesOf) {
        const int32_t whole = bytes / kBytes * kStep;
        int32_t tile = 0;
        for (; tile < whole; tile += kStep) V::Store(dst + tile * kTileBytes, bytesOf(tile));
        if (tile == plan.tiles) return;
        uint8_t last[kBytes];
        V::Store(last, bytesOf(tile));
        std::memcpy(dst + tile * kTileBytes, last, static_cast<size_t>(bytes - tile * kTileBytes));
    }

    // a * (256 - w) + b * w of biased bytes, divided by 256.
    static Reg Sums(Reg pairs, Reg weights) {
        return V::ShiftRight8(V::MulAddBytes(weights, V::Xor(pairs, V::Set8(kBias))));
    }

    // Of a register of bytes; not for the weight 0.
    static Reg WeightPairs(int32_t weight) {
        return V::Set16(static_cast<int16_t>(weight << 8 | (256 - weight)));
    }
    static Reg BlendBytes(const uint8_t* a, const uint8_t* b, Reg weights) {
        const Reg a8 = V::Load(a);
        const Reg b8 = V::Load(b);
        const Reg sums = V::PackSigned(Sums(V::InterleaveLow8(a8, b8), weights),
                                       Sums(V::InterleaveHigh8(a8, b8), weights));
        return V::Xor(sums, V::Set8(kBias));
    }

    static void BlendByteRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                              int32_t bytes) {
        if (weight == 0) {
            std::memcpy(dst, a, static_cast<size_t>(bytes));
            return;
        }
        if (bytes < kBytes) return BlendRowsPlain<PlanePixel>(dst, a, b, weight, bytes);
        const Reg weights = WeightPairs(weight);
        ForRegisters(bytes,
                     [&](int32_t i) { V::Store(dst + i, BlendBytes(a + i, b + i, weights)); });
    }

    template <int32_t kWindow>
    static Reg LoadTiles(const uint8_t* row, const ShuffleTables& tables, int32_t tile) {
        const Reg control = V::Load(tables.shuffle[tile]);
        if constexpr (kWindow == OneWindow) {
            return V::ShuffleWindows(row, &tables.low[tile], control);
        } else {
            return V::ShuffleTwoWindows(row, &tables.low[tile], &tables.high[tile], control);
        }
    }

    template <typename Pixel, typename Rounding, int32_t kWindow>
    static void BlendByteTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ShuffleTables& tables = TablesOf(plan);
        const Reg bias = V::Set16(SumBias<Rounding>::kValue);
        const auto sums = [&](int32_t slot) {
            const Reg pairs = V::Xor(LoadTiles<kWindow>(row, tables, slot), V::Set8(kBias));
            const Reg products = V::MulAddBytes(V::Load(tables.weights[slot]), pairs);
            return SumBias<Rounding>::kValue == 0 ? products : V::Add16(products, bias);
        };
        StoreSteps(dst, plan, plan.columns.count * Pixel::kSize, [&](int32_t slot) {
            return V::Xor(V::HighBytes(sums(slot), sums(slot + V::kParts)), V::Set8(kBias));
        });
    }

    template <typename Pixel, typename Rounding>
    static void BlendByteColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return BlendByteTiles<Pixel, Rounding, OneWindow>(dst, row, plan);
            case TwoWindows: return BlendByteTiles<Pixel, Rounding, TwoWindows>(dst, row, plan);
            default: return BlendColumnsPlain<Pixel, Rounding>(dst, row, plan.columns, 0);
        }
    }

    // 16-bit lanes; weight16 is the weight times 16, so that the high half of the product is the
    // blend (row_ops_mmx.cpp has the proof).
    template <typename Rounding>
    static Reg BlendLanes(Reg a, Reg b, Reg weight16) {
        if constexpr (SumBias<Rounding>::kValue == 0) {
            return V::Add16(a, V::MulHigh16(V::template ShiftLeft16<4>(V::Sub16(b, a)), weight16));
        } else {
            return V::Sub16(a, V::MulHigh16(V::template ShiftLeft16<4>(V::Sub16(a, b)), weight16));
        }
    }

    template <typename Rounding, int32_t kShift, int32_t kMask>
    static Reg BlendField(Reg a, Reg b, Reg weight16) {
        const Reg mask = V::Set16(kMask);
        const Reg from = V::And(V::template ShiftRight16<kShift>(a), mask);
        const Reg to = V::And(V::template ShiftRight16<kShift>(b), mask);
        return V::template ShiftLeft16<kShift>(BlendLanes<Rounding>(from, to, weight16));
    }

    template <typename Pixel, typename Rounding>
    static Reg BlendFields(Reg a, Reg b, Reg weight16) {
        return V::Or(
            BlendField<Rounding, 0, Pixel::kBlueMask>(a, b, weight16),
            V::Or(BlendField<Rounding, Pixel::kGreenShift, Pixel::kGreenMask>(a, b, weight16),
                  BlendField<Rounding, Pixel::kRedShift, Pixel::kRedMask>(a, b, weight16)));
    }

    template <typename Pixel>
    static void BlendFieldRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                               int32_t bytes) {
        if (bytes < kBytes) return BlendRowsPlain<Pixel>(dst, a, b, weight, bytes);
        const Reg weight16 = V::Set16(static_cast<int16_t>(weight * 16));
        ForRegisters(bytes, [&](int32_t i) {
            V::Store(dst + i,
                     BlendFields<Pixel, RoundDown>(V::Load(a + i), V::Load(b + i), weight16));
        });
    }

    template <typename Pixel, typename Rounding, int32_t kWindow>
    static void BlendFieldTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ShuffleTables& tables = TablesOf(plan);
        StoreSteps(dst, plan, plan.columns.count * Pixel::kSize, [&](int32_t slot) {
            const Reg first = LoadTiles<kWindow>(row, tables, slot);
            const Reg second = LoadTiles<kWindow>(row, tables, slot + V::kParts);
            const Reg weights = V::LowHalves(V::Load(tables.weights[slot]),
                                             V::Load(tables.weights[slot + V::kParts]));
            return BlendFields<Pixel, Rounding>(V::LowHalves(first, second),
                                                V::HighHalves(first, second), weights);
        });
    }

    template <typename Pixel, typename Rounding>
    static void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return BlendFieldTiles<Pixel, Rounding, OneWindow>(dst, row, plan);
            case TwoWindows: return BlendFieldTiles<Pixel, Rounding, TwoWindows>(dst, row, plan);
            default: return BlendColumnsPlain<Pixel, Rounding>(dst, row, plan.columns, 0);
        }
    }

    template <typename Pixel, int32_t kWindow>
    static void TakeTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ShuffleTables& tables = TablesOf(plan);
        StoreSteps(dst, plan, plan.columns.count * Pixel::kSize, [&](int32_t slot) {
            return V::LowHalves(LoadTiles<kWindow>(row, tables, slot),
                                LoadTiles<kWindow>(row, tables, slot + V::kParts));
        });
    }

    template <typename Pixel>
    static void TakeColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return TakeTiles<Pixel, OneWindow>(dst, row, plan);
            case TwoWindows: return TakeTiles<Pixel, TwoWindows>(dst, row, plan);
            default: return TakeColumnsPlain<Pixel>(dst, row, plan.columns, 0);
        }
    }

    template <int32_t kWindow>
    static void TakePackedTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const ShuffleTables& tables = TablesOf(plan);
        const int32_t groups = (plan.columns.count + 1) / 2;
        StoreSteps(dst, plan, groups * 4, [&](int32_t slot) {
            const Reg first = LoadTiles<kWindow>(row, tables, slot);
            const Reg second = LoadTiles<kWindow>(row, tables, slot + V::kParts);
            const Reg a = V::LowHalves(first, second);
            const Reg b = V::HighHalves(first, second);
            const Reg halves = V::And(V::Xor(a, b), V::Set8(1));
            return V::SubSaturated8(V::AverageUp8(a, b), halves);
        });
    }

    static void TakePackedColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                                  const PackedLayout& layout) {
        switch (plan.window) {
            case OneWindow: return TakePackedTiles<OneWindow>(dst, row, plan);
            case TwoWindows: return TakePackedTiles<TwoWindows>(dst, row, plan);
            default: return TakePackedPlain(dst, row, plan.columns, layout, 0);
        }
    }

    static Reg EvenBytes(Reg a, Reg b) {
        const Reg low = V::Set16(0x00ff);
        return V::PackUnsignedInOrder(V::And(a, low), V::And(b, low));
    }
    static Reg OddBytes(Reg a, Reg b) {
        return V::PackUnsignedInOrder(V::template ShiftRight16<8>(a),
                                      V::template ShiftRight16<8>(b));
    }

    static void Unpack(const PackedSamples& dst, const uint8_t* src, int32_t groups,
                       const PackedLayout& layout) {
        if (groups < kBytes) return UnpackPlain(dst, src, groups, layout, 0);
        const bool lumaFirst = layout.luma == 0;
        ForRegisters(groups, [&](int32_t i) {
            Reg chroma[2];
            for (int32_t half = 0; half < 2; ++half) {
                const uint8_t* from = src + i * 4 + half * 2 * kBytes;
                const Reg a = V::Load(from);
                const Reg b = V::Load(from + kBytes);
                const Reg even = EvenBytes(a, b);
                const Reg odd = OddBytes(a, b);
                V::Store(dst.luma + i * 2 + half * kBytes, lumaFirst ? even : odd);
                chroma[half] = lumaFirst ? odd : even;
            }
            V::Store(dst.firstChroma + i, EvenBytes(chroma[0], chroma[1]));
            V::Store(dst.secondChroma + i, OddBytes(chroma[0], chroma[1]));
        });
    }

    // The averages of pairs of bytes, in lanes.
    template <typename Average>
    static Reg AveragePairs(Reg bytes) {
        const Reg sum = V::MulAddBytes(bytes, V::Set8(1));
        return V::template ShiftRight16<1>(V::Add16(sum, V::Set16(Average::kBias)));
    }

    template <typename Average>
    static void StorePacked(uint8_t* dst, Reg luma, Reg first, Reg second, bool lumaFirst) {
        const Reg chroma = V::Or(AveragePairs<Average>(first),
                                 V::template ShiftLeft16<8>(AveragePairs<Average>(second)));
        V::StoreInterleaved8(dst, lumaFirst ? luma : chroma, lumaFirst ? chroma : luma);
    }

    template <typename Average>
    static void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                     const PackedLayout& layout) {
        if (pixels < kBytes) return PackPlain<Average>(dst, src, pixels, layout, 0);
        ForRegisters(pixels, [&](int32_t i) {
            StorePacked<Average>(dst + i * 2, V::Load(src.luma + i), V::Load(src.firstChroma + i),
                                 V::Load(src.secondChroma + i), layout.luma == 0);
        });
    }

    template <typename Average>
    static void BlendPack(uint8_t* dst, const PackedSamples& a, const PackedSamples& b,
                          int32_t weight, int32_t pixels, const PackedLayout& layout) {
        if (weight == 0) return Pack<Average>(dst, a, pixels, layout);
        if (pixels < kBytes) {
            return BlendThenPack<BlendByteRows, Pack<Average>>(dst, a, b, weight, pixels, layout);
        }
        const Reg weights = WeightPairs(weight);
        ForRegisters(pixels, [&](int32_t i) {
            StorePacked<Average>(dst + i * 2, BlendBytes(a.luma + i, b.luma + i, weights),
                                 BlendBytes(a.firstChroma + i, b.firstChroma + i, weights),
                                 BlendBytes(a.secondChroma + i, b.secondChroma + i, weights),
                                 layout.luma == 0);
        });
    }

    static void DimThirds(uint8_t* samples, int32_t count) {
        uint8_t ones[3 * kBytes];
        for (int32_t i = 0; i < 3 * kBytes; ++i) ones[i] = i % 3 == 0;
        int32_t i = 0;
        for (; i + 3 * kBytes <= count; i += 3 * kBytes) {
            for (int32_t part = 0; part < 3 * kBytes; part += kBytes) {
                uint8_t* at = samples + i + part;
                V::Store(at, V::SubSaturated8(V::Load(at), V::Load(ones + part)));
            }
        }
        DimThirdsPlain(samples, count, i);
    }

    static void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
        std::memcpy(dst, src, static_cast<size_t>(blocks) * 8);
    }

    static void Finish() {}

    template <typename Pixel>
    static constexpr PixelOps kByteOps = {BlendByteRows,
                                          PlanByteBlend<V, Pixel>,
                                          PlanTake<V, Pixel>,
                                          BlendByteColumns<Pixel, RoundDown>,
                                          BlendByteColumns<Pixel, RoundUp>,
                                          TakeColumns<Pixel>};
    template <typename Pixel>
    static constexpr PixelOps kFieldOps = {BlendFieldRows<Pixel>,
                                           PlanFieldBlend<V, Pixel>,
                                           PlanTake<V, Pixel>,
                                           BlendFieldColumns<Pixel, RoundDown>,
                                           BlendFieldColumns<Pixel, RoundUp>,
                                           TakeColumns<Pixel>};

    static constexpr RowOps kAll = {
        kByteOps<PlanePixel>,
        kByteOps<Rgb24Pixel>,
        kFieldOps<Rgb555Pixel>,
        kFieldOps<Rgb565Pixel>,
        {Unpack, Pack<AverageDown>, Pack<AverageUp>, BlendPack<AverageDown>, BlendPack<AverageUp>,
         DimThirds, PlanPackedTake<V>, TakePackedColumns},
        CopyBlocks,
        Finish,
    };
};

}  // namespace
}  // namespace tavo
