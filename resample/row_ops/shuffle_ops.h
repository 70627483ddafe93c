// Row operations for instruction sets with a byte shuffle: the operations on pixels, and the whole
// set. docs/kernels.md has the formulas.
//
// The way of a row: BlendByteColumns (or another) calls ApplyPlan, which looks whether the plan has
// one window or two; StoreSteps stores a register for each step of the plan; load(position),
// LoadTiles, brings the source bytes of a step's tiles by V::LoadWindows and V::Shuffle; bytesOf
// makes the register of them.

#pragma once

#include "resample/row_ops/portable_columns.h"
#include "resample/row_ops/shuffle_packed422.h"
#include "resample/row_ops/shuffle_packed_blend.h"
#include "resample/row_ops/shuffle_registers.h"

namespace tavo {
namespace {

// Rounds a blend's 16-bit sums up.
constexpr int16_t kSumBias = 255;

template <ShuffleRegister V>
struct ShuffleOps {
    using Base = ShuffleRegisters<V>;
    using Reg = typename V::Reg;
    static constexpr int32_t kBytes = Base::kBytes;

    template <typename Pixel, Rounding kRounding, bool kIsBiased = false>
    static void BlendByteColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const auto bytesOf = [](const ShuffleStep<V>& step, const auto& load) {
            const auto sums = [&](int32_t position) {
                Reg pairs = load(position);
                if constexpr (!kIsBiased) pairs = V::Xor(pairs, V::Set8(kBias));
                const Reg products = V::MulAddBytes(V::Load(step.weights[position]), pairs);
                if constexpr (kRounding == Rounding::Down) return products;
                return V::Add16(products, V::Set16(kSumBias));
            };
            return V::Xor(V::HighBytes(sums(0), sums(V::kParts)), V::Set8(kBias));
        };
        Base::ApplyPlan(dst, row, plan, plan.columns.count * Pixel::kSize, bytesOf,
                        [&] { BlendColumnsPlain<Pixel, kRounding>(dst, row, plan.columns, 0); });
    }

    // The row in between stays biased.
    template <typename Pixel>
    static void BlendBytesDownAndAcross(uint8_t* dst, uint8_t* row, const uint8_t* a,
                                        const uint8_t* b, int32_t weight, int32_t bytes,
                                        const ColumnPlan& plan) {
        if (plan.window == NoWindow || bytes < kBytes) {
            Base::BlendByteRows(row, a, b, weight, bytes);
            BlendByteColumns<Pixel, Rounding::Down>(dst, row, plan);
            return;
        }
        Base::BlendByteRowsBiased(row, a, b, weight, bytes);
        BlendByteColumns<Pixel, Rounding::Down, true>(dst, row, plan);
    }

    // Moves a field of the pixels, which stands at kShift, from a toward b. The high half of the
    // product is (b - a) * weight / 256: kScale and scaledWeight make up the factor 256.
    template <Rounding kRounding, int32_t kScale, int32_t kShift>
    static Reg MoveField(Reg pixels, Reg a, Reg b, Reg scaledWeight) {
        constexpr bool kDown = kRounding == Rounding::Down;
        const Reg difference =
            V::template ShiftLeft16<kScale>(kDown ? V::Sub16(b, a) : V::Sub16(a, b));
        const Reg move = V::template ShiftLeft16<kShift>(V::MulHigh16(difference, scaledWeight));
        return kDown ? V::Add16(pixels, move) : V::Sub16(pixels, move);
    }

    // weight16 is the weight times 16. Each field of a is moved in its place: it stays between its
    // two values, so that no field reaches into another.
    template <typename Pixel, Rounding kRounding>
    static Reg BlendFields(Reg a, Reg b, Reg weight16) {
        const auto masked = [](Reg pixels, int32_t mask) {
            return V::And(pixels, V::Set16(static_cast<int16_t>(mask)));
        };
        constexpr int32_t kGreen = Pixel::kGreenMask << Pixel::kGreenShift;
        static_assert(Pixel::kGreenShift == 5);
        const Reg weight8 = V::template ShiftRight16<1>(weight16);
        Reg pixels = a;
        if constexpr (Pixel::kRedShift < 11) {
            pixels = a = masked(a, 0x7fff);
            b = masked(b, 0x7fff);
        }
        pixels = MoveField<kRounding, 4, 0>(pixels, masked(a, Pixel::kBlueMask),
                                            masked(b, Pixel::kBlueMask), weight16);
        pixels = MoveField<kRounding, 0, 5>(pixels, masked(a, kGreen), masked(b, kGreen), weight8);
        return MoveField<kRounding, 4, Pixel::kRedShift>(
            pixels, V::template ShiftRight16<Pixel::kRedShift>(a),
            V::template ShiftRight16<Pixel::kRedShift>(b), weight16);
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

    template <typename Pixel, Rounding kRounding>
    static void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const auto bytesOf = [](const ShuffleStep<V>& step, const auto& load) {
            const Reg first = load(0);
            const Reg second = load(V::kParts);
            const Reg weights =
                V::LowHalves(V::Load(step.weights[0]), V::Load(step.weights[V::kParts]));
            return BlendFields<Pixel, kRounding>(V::LowHalves(first, second),
                                                 V::HighHalves(first, second), weights);
        };
        Base::ApplyPlan(dst, row, plan, plan.columns.count * Pixel::kSize, bytesOf,
                        [&] { BlendColumnsPlain<Pixel, kRounding>(dst, row, plan.columns, 0); });
    }

    template <typename Pixel>
    static void NearestColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
        const auto bytesOf = [](const ShuffleStep<V>&, const auto& load) {
            return V::LowHalves(load(0), load(V::kParts));
        };
        Base::ApplyPlan(dst, row, plan, plan.columns.count * Pixel::kSize, bytesOf,
                        [&] { NearestColumnsPlain<Pixel>(dst, row, plan.columns, 0); });
    }

    static void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
        std::memcpy(dst, src, static_cast<size_t>(blocks) * 8);
    }

    static void Fetch(const uint8_t* row, int32_t bytes) {
        constexpr int32_t kCacheLine = 64;
        for (int32_t i = 0; i < bytes; i += kCacheLine) __builtin_prefetch(row + i);
    }

    static void Finish() {}

    template <typename Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = Base::BlendByteRows,
            .PlanBlend = PlanByteBlend<V, Pixel>,
            .PlanNearest = PlanNearest<V, Pixel>,
            .BlendColumns = BlendByteColumns<Pixel, Rounding::Down>,
            .BlendColumnsUp = BlendByteColumns<Pixel, Rounding::Up>,
            .NearestColumns = NearestColumns<Pixel>,
            .BlendDownAndAcross = BlendBytesDownAndAcross<Pixel>,
            .Fetch = V::kFetchesPlanes && Pixel::kSize == 1 ? Fetch : nullptr,
        };
    }
    template <HasFields Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = BlendFieldRows<Pixel>,
            .PlanBlend = PlanFieldBlend<V, Pixel>,
            .PlanNearest = PlanNearest<V, Pixel>,
            .BlendColumns = BlendFieldColumns<Pixel, Rounding::Down>,
            .BlendColumnsUp = BlendFieldColumns<Pixel, Rounding::Up>,
            .NearestColumns = NearestColumns<Pixel>,
        };
    }
};

// The whole set.
template <ShuffleRegister V>
constexpr RowOps kShuffleRowOps = {
    .pixels = OpsOfAllPixels<ShuffleOps<V>>(),
    .packed422 = ShufflePacked422<V>::kAll,
    .packedBlend = &ShufflePackedBlend<V>::kAll,
    .CopyRow = ShuffleRegisters<V>::CopyRow,
    .CopyBlocks = ShuffleOps<V>::CopyBlocks,
    .Finish = ShuffleOps<V>::Finish,
};

}  // namespace
}  // namespace tavo
