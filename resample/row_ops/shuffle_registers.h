// Building blocks of the row operations with a byte shuffle, over a register type V
// (shuffle_register.h). A part of a register holds one tile of a plan (shuffle_plan.h).

#pragma once

#include <cstring>

#include "resample/row_ops/shuffle_plan.h"
#include "resample/row_ops/shuffle_register.h"

namespace tavo {
namespace {

constexpr uint8_t kBias = 0x80;

template <ShuffleRegister V>
struct ShuffleRegisters {
    using Reg = typename V::Reg;

    // Bytes of a register, and of a step.
    static constexpr int32_t kBytes = V::kParts * 16;
    static_assert(kBytes == kStepBytes<V>);

    // Calls operation(i) for each register of a row of at least one. The last one overlaps the one
    // before it.
    template <typename Operation>
    static void ForRegisters(int32_t bytes, Operation operation) {
        for (int32_t i = 0; i < bytes - kBytes; i += kBytes) operation(i);
        operation(bytes - kBytes);
    }

    // Faster than the library for rows of this length.
    static void CopyRow(uint8_t* dst, const uint8_t* src, int32_t bytes) {
        if (bytes < kBytes) {
            std::memcpy(dst, src, static_cast<size_t>(bytes));
            return;
        }
        ForRegisters(bytes, [&](int32_t i) { V::Store(dst + i, V::Load(src + i)); });
    }

    // Stores registerOf(step) for each step, so many bytes in all.
    template <typename RegisterOf>
    static void StoreSteps(uint8_t* dst, const ColumnPlan& plan, int32_t bytes,
                           RegisterOf registerOf) {
        const ShuffleStep<V>* step = StepsOf<V>(plan);
        int32_t i = 0;
        for (; i + kBytes <= bytes; i += kBytes, ++step) V::Store(dst + i, registerOf(*step));
        if (i == bytes) return;
        uint8_t last[kBytes];
        V::Store(last, registerOf(*step));
        std::memcpy(dst + i, last, static_cast<size_t>(bytes - i));
    }

    // (a * (256 - w) + b * w) / 256, of biased bytes.
    static Reg Sums(Reg pairs, Reg weights) {
        return V::ShiftRight8(V::MulAddBytes(weights, V::Xor(pairs, V::Set8(kBias))));
    }

    // For a whole register. Not for a weight of 0.
    static Reg WeightPairs(int32_t weight) {
        return V::Set16(static_cast<int16_t>(weight << 8 | (256 - weight)));
    }
    static Reg BlendBytesBiased(const uint8_t* a, const uint8_t* b, Reg weights) {
        const Reg a8 = V::Load(a);
        const Reg b8 = V::Load(b);
        return V::PackSigned(Sums(V::InterleaveLow8(a8, b8), weights),
                             Sums(V::InterleaveHigh8(a8, b8), weights));
    }
    static Reg BlendBytes(const uint8_t* a, const uint8_t* b, Reg weights) {
        return V::Xor(BlendBytesBiased(a, b, weights), V::Set8(kBias));
    }

    static void BlendByteRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                              int32_t bytes) {
        if (weight == 0) {
            CopyRow(dst, a, bytes);
            return;
        }
        if (bytes < kBytes) return BlendRowsPlain<PlanePixel>(dst, a, b, weight, bytes);
        const Reg weights = WeightPairs(weight);
        ForRegisters(bytes,
                     [&](int32_t i) { V::Store(dst + i, BlendBytes(a + i, b + i, weights)); });
    }

    // At least one register. The result stays biased.
    static void BlendByteRowsBiased(uint8_t* dst, const uint8_t* a, const uint8_t* b,
                                    int32_t weight, int32_t bytes) {
        if (weight == 0) {
            ForRegisters(bytes, [&](int32_t i) {
                V::Store(dst + i, V::Xor(V::Load(a + i), V::Set8(kBias)));
            });
            return;
        }
        const Reg weights = WeightPairs(weight);
        ForRegisters(
            bytes, [&](int32_t i) { V::Store(dst + i, BlendBytesBiased(a + i, b + i, weights)); });
    }

    template <int32_t kWindow>
    static Reg LoadTiles(const uint8_t* row, const ShuffleStep<V>& step, int32_t position) {
        const Reg control = V::Load(step.shuffle[position]);
        if constexpr (kWindow == OneWindow) {
            return V::Shuffle(V::LoadWindows(row, &step.low[position]), control);
        } else if constexpr (kWindow == TwoWindows) {
            return V::ShuffleTwoWindows(row, &step.low[position], &step.high[position], control);
        } else {
            return V::ShuffleTwo(V::LoadWindows(row, &step.low[position]),
                                 V::LoadWindows(row, &step.high[position]), control);
        }
    }

    template <int32_t kWindow, typename BytesOf>
    static void StoreTiles(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan, int32_t bytes,
                           BytesOf bytesOf) {
        StoreSteps(dst, plan, bytes, [&](const ShuffleStep<V>& step) {
            return bytesOf(
                step, [&](int32_t position) { return LoadTiles<kWindow>(row, step, position); });
        });
    }

    // Stores bytesOf(step, load) for each step of a plan, so many bytes in all. load(position) is
    // what the shuffles bring of the row from that position on. A plan without tables is left to
    // plain().
    template <typename BytesOf, typename Plain>
    static void ApplyPlan(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan, int32_t bytes,
                          BytesOf bytesOf, Plain plain) {
        switch (plan.window) {
            case OneWindow: return StoreTiles<OneWindow>(dst, row, plan, bytes, bytesOf);
            case TwoWindows: return StoreTiles<TwoWindows>(dst, row, plan, bytes, bytesOf);
        }
        if constexpr (!V::kSharesWindow) {
            if (plan.window == WideWindows) {
                return StoreTiles<WideWindows>(dst, row, plan, bytes, bytesOf);
            }
        }
        plain();
    }
};

}  // namespace
}  // namespace tavo
