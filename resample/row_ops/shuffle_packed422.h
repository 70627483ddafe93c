// Row operations on packed 4:2:2 for instruction sets with a byte shuffle.

#pragma once

#include "resample/row_ops/portable_packed422.h"
#include "resample/row_ops/shuffle_registers.h"

namespace tavo {
namespace {

template <ShuffleRegister V>
struct ShufflePacked422 {
    using Base = ShuffleRegisters<V>;
    using Reg = typename V::Reg;
    static constexpr int32_t kBytes = Base::kBytes;

    static void NearestPackedColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                                     const PackedLayout& layout) {
        const auto bytesOf = [](const ShuffleStep<V>&, const auto& load) {
            const Reg first = load(0);
            const Reg second = load(V::kParts);
            const Reg a = V::LowHalves(first, second);
            const Reg b = V::HighHalves(first, second);
            const Reg oddSums = V::And(V::Xor(a, b), V::Set8(1));
            return V::SubSaturated8(V::AverageUp8(a, b), oddSums);
        };
        const int32_t groups = (plan.columns.count + 1) / 2;
        Base::ApplyPlan(dst, row, plan, groups * 4, bytesOf,
                        [&] { NearestPackedPlain(dst, row, plan.columns, layout, 0); });
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
        Base::ForRegisters(groups, [&](int32_t i) {
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

    // Averages of neighbouring bytes, in 16-bit lanes.
    template <Rounding kRounding>
    static Reg AveragePairs(Reg bytes) {
        const Reg sum = V::MulAddBytes(bytes, V::Set8(1));
        return V::template ShiftRight16<1>(
            V::Add16(sum, V::Set16(kRounding == Rounding::Up ? 1 : 0)));
    }

    template <Rounding kRounding>
    static void StorePacked(uint8_t* dst, Reg luma, Reg first, Reg second, bool lumaFirst) {
        const Reg chroma = V::Or(AveragePairs<kRounding>(first),
                                 V::template ShiftLeft16<8>(AveragePairs<kRounding>(second)));
        V::StoreInterleaved8(dst, lumaFirst ? luma : chroma, lumaFirst ? chroma : luma);
    }

    template <Rounding kRounding>
    static void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                     const PackedLayout& layout) {
        if (pixels < kBytes) return PackPlain<kRounding>(dst, src, pixels, layout, 0);
        Base::ForRegisters(pixels, [&](int32_t i) {
            StorePacked<kRounding>(dst + i * 2, V::Load(src.luma + i), V::Load(src.firstChroma + i),
                                   V::Load(src.secondChroma + i), layout.luma == 0);
        });
    }

    template <Rounding kRounding>
    static void BlendPack(uint8_t* dst, const PackedSamples& a, const PackedSamples& b,
                          int32_t weight, int32_t pixels, const PackedLayout& layout) {
        if (weight == 0) return Pack<kRounding>(dst, a, pixels, layout);
        if (pixels < kBytes) {
            return BlendThenPack<Base::BlendByteRows, Pack<kRounding>>(dst, a, b, weight, pixels,
                                                                       layout);
        }
        const Reg weights = Base::WeightPairs(weight);
        Base::ForRegisters(pixels, [&](int32_t i) {
            StorePacked<kRounding>(
                dst + i * 2, Base::BlendBytes(a.luma + i, b.luma + i, weights),
                Base::BlendBytes(a.firstChroma + i, b.firstChroma + i, weights),
                Base::BlendBytes(a.secondChroma + i, b.secondChroma + i, weights),
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

    static constexpr Packed422Ops kAll = {
        .Unpack = Unpack,
        .PackDown = Pack<Rounding::Down>,
        .PackUp = Pack<Rounding::Up>,
        .BlendPackDown = BlendPack<Rounding::Down>,
        .BlendPackUp = BlendPack<Rounding::Up>,
        .DimThirds = DimThirds,
        .PlanNearest = PlanPackedNearest<V>,
        .NearestColumns = NearestPackedColumns,
    };
};

}  // namespace
}  // namespace tavo
