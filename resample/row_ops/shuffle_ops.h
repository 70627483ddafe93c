// Row operations for the instruction sets that have a byte shuffle: those on pixels, and the set.

#pragma once

#include "resample/row_ops/portable_columns.h"
#include "resample/row_ops/shuffle_packed422.h"
#include "resample/row_ops/shuffle_registers.h"

namespace tavo {
namespace {

// What rounds a blend's 16-bit sums.
template <Rounding kRounding>
constexpr int16_t kSumBias = kRounding == Rounding::Up ? 255 : 0;

template <typename V>
struct ShuffleOps {
    using Base = ShuffleRegisters<V>;
    using Reg = typename V::Reg;
    static constexpr int32_t kBytes = Base::kBytes;

    template <typename Pixel, Rounding kRounding, int32_t kWindow>
    static void BlendByteTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const Reg bias = V::Set16(kSumBias<kRounding>);
        const auto sums = [&](const ShuffleStep<V>& step, int32_t slot) {
            const Reg pairs =
                V::Xor(Base::template LoadTiles<kWindow>(row, step, slot), V::Set8(kBias));
            const Reg products = V::MulAddBytes(V::Load(step.weights[slot]), pairs);
            return kRounding == Rounding::Down ? products : V::Add16(products, bias);
        };
        Base::StoreSteps(
            dst, plan, plan.columns.count * Pixel::kSize, [&](const ShuffleStep<V>& step) {
                return V::Xor(V::HighBytes(sums(step, 0), sums(step, V::kParts)), V::Set8(kBias));
            });
    }

    template <typename Pixel, Rounding kRounding>
    static void BlendByteColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return BlendByteTiles<Pixel, kRounding, OneWindow>(dst, row, plan);
            case TwoWindows: return BlendByteTiles<Pixel, kRounding, TwoWindows>(dst, row, plan);
            default: return BlendColumnsPlain<Pixel, kRounding>(dst, row, plan.columns, 0);
        }
    }

    // 16-bit lanes; weight16 is the weight times 16, so that the high half of the product is the
    // blend (mmx_registers.h has the proof).
    template <Rounding kRounding>
    static Reg BlendLanes(Reg a, Reg b, Reg weight16) {
        if constexpr (kRounding == Rounding::Down) {
            return V::Add16(a, V::MulHigh16(V::template ShiftLeft16<4>(V::Sub16(b, a)), weight16));
        } else {
            return V::Sub16(a, V::MulHigh16(V::template ShiftLeft16<4>(V::Sub16(a, b)), weight16));
        }
    }

    template <Rounding kRounding, int32_t kShift, int32_t kMask>
    static Reg BlendField(Reg a, Reg b, Reg weight16) {
        const Reg mask = V::Set16(kMask);
        const Reg from = V::And(V::template ShiftRight16<kShift>(a), mask);
        const Reg to = V::And(V::template ShiftRight16<kShift>(b), mask);
        return V::template ShiftLeft16<kShift>(BlendLanes<kRounding>(from, to, weight16));
    }

    template <typename Pixel, Rounding kRounding>
    static Reg BlendFields(Reg a, Reg b, Reg weight16) {
        return V::Or(
            BlendField<kRounding, 0, Pixel::kBlueMask>(a, b, weight16),
            V::Or(BlendField<kRounding, Pixel::kGreenShift, Pixel::kGreenMask>(a, b, weight16),
                  BlendField<kRounding, Pixel::kRedShift, Pixel::kRedMask>(a, b, weight16)));
    }

    template <typename Pixel>
    static void BlendFieldRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                               int32_t bytes) {
        if (bytes < kBytes) return BlendRowsPlain<Pixel>(dst, a, b, weight, bytes);
        const Reg weight16 = V::Set16(static_cast<int16_t>(weight * 16));
        Base::ForRegisters(bytes, [&](int32_t i) {
            V::Store(dst + i,
                     BlendFields<Pixel, Rounding::Down>(V::Load(a + i), V::Load(b + i), weight16));
        });
    }

    template <typename Pixel, Rounding kRounding, int32_t kWindow>
    static void BlendFieldTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        Base::StoreSteps(
            dst, plan, plan.columns.count * Pixel::kSize, [&](const ShuffleStep<V>& step) {
                const Reg first = Base::template LoadTiles<kWindow>(row, step, 0);
                const Reg second = Base::template LoadTiles<kWindow>(row, step, V::kParts);
                const Reg weights =
                    V::LowHalves(V::Load(step.weights[0]), V::Load(step.weights[V::kParts]));
                return BlendFields<Pixel, kRounding>(V::LowHalves(first, second),
                                                     V::HighHalves(first, second), weights);
            });
    }

    template <typename Pixel, Rounding kRounding>
    static void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return BlendFieldTiles<Pixel, kRounding, OneWindow>(dst, row, plan);
            case TwoWindows: return BlendFieldTiles<Pixel, kRounding, TwoWindows>(dst, row, plan);
            default: return BlendColumnsPlain<Pixel, kRounding>(dst, row, plan.columns, 0);
        }
    }

    template <typename Pixel, int32_t kWindow>
    static void NearestTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        Base::StoreSteps(
            dst, plan, plan.columns.count * Pixel::kSize, [&](const ShuffleStep<V>& step) {
                return V::LowHalves(Base::template LoadTiles<kWindow>(row, step, 0),
                                    Base::template LoadTiles<kWindow>(row, step, V::kParts));
            });
    }

    template <typename Pixel>
    static void NearestColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        switch (plan.window) {
            case OneWindow: return NearestTiles<Pixel, OneWindow>(dst, row, plan);
            case TwoWindows: return NearestTiles<Pixel, TwoWindows>(dst, row, plan);
            default: return NearestColumnsPlain<Pixel>(dst, row, plan.columns, 0);
        }
    }

    static void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
        std::memcpy(dst, src, static_cast<size_t>(blocks) * 8);
    }

    static void Finish() {}

    template <typename Pixel>
    static constexpr PixelOps kByteOps = {Base::BlendByteRows,
                                          PlanByteBlend<V, Pixel>,
                                          PlanNearest<V, Pixel>,
                                          BlendByteColumns<Pixel, Rounding::Down>,
                                          BlendByteColumns<Pixel, Rounding::Up>,
                                          NearestColumns<Pixel>};
    template <typename Pixel>
    static constexpr PixelOps kFieldOps = {BlendFieldRows<Pixel>,
                                           PlanFieldBlend<V, Pixel>,
                                           PlanNearest<V, Pixel>,
                                           BlendFieldColumns<Pixel, Rounding::Down>,
                                           BlendFieldColumns<Pixel, Rounding::Up>,
                                           NearestColumns<Pixel>};

    static constexpr RowOps kAll = {
        kByteOps<PlanePixel>,
        kByteOps<Rgb24Pixel>,
        kFieldOps<Rgb555Pixel>,
        kFieldOps<Rgb565Pixel>,
        ShufflePacked422<V>::kAll,
        Base::CopyRow,
        CopyBlocks,
        Finish,
    };
};

}  // namespace
}  // namespace tavo
