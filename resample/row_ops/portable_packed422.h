// Plain loops over packed 4:2:2. They are the portable row operations, and the other sets use them
// for what does not fill a register.

#pragma once

#include "resample/formulas.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {
namespace {

// From group `first` on.
[[maybe_unused]] void UnpackPlain(const PackedSamples& dst, const uint8_t* src, int32_t groups,
                                  const PackedLayout& layout, int32_t first) {
    for (int32_t i = first; i < groups; ++i) {
        const uint8_t* group = src + i * 4;
        dst.luma[i * 2] = group[layout.luma];
        dst.luma[i * 2 + 1] = group[layout.luma + 2];
        dst.firstChroma[i] = group[layout.firstChroma];
        dst.secondChroma[i] = group[layout.firstChroma + 2];
    }
}

// From pixel `first` on.
template <Rounding kRounding>
void PackPlain(uint8_t* dst, const PackedSamples& src, int32_t pixels, const PackedLayout& layout,
               int32_t first) {
    const auto average = [](const uint8_t* chroma) {
        return static_cast<uint8_t>(AverageSamples<kRounding>(chroma[0], chroma[1]));
    };
    for (int32_t i = first; i < pixels; i += 2) {
        uint8_t* group = dst + i * 2;
        group[layout.luma] = src.luma[i];
        group[layout.luma + 2] = src.luma[i + 1];
        group[layout.firstChroma] = average(src.firstChroma + i);
        group[layout.firstChroma + 2] = average(src.secondChroma + i);
    }
}

// Blends and then packs with a set's own operations, some pixels at a time.
template <auto kBlendRows, auto kPack>
void BlendThenPack(uint8_t* dst, const PackedSamples& a, const PackedSamples& b, int32_t weight,
                   int32_t pixels, const PackedLayout& layout) {
    constexpr int32_t kAtOnce = 256;
    uint8_t row[3][kAtOnce];
    for (int32_t i = 0; i < pixels; i += kAtOnce) {
        const int32_t count = pixels - i < kAtOnce ? pixels - i : kAtOnce;
        kBlendRows(row[0], a.luma + i, b.luma + i, weight, count);
        kBlendRows(row[1], a.firstChroma + i, b.firstChroma + i, weight, count);
        kBlendRows(row[2], a.secondChroma + i, b.secondChroma + i, weight, count);
        kPack(dst + i * 2, {row[0], row[1], row[2]}, count, layout);
    }
}

// From column `first` on, which is even. An odd last column is repeated.
[[maybe_unused]] void NearestPackedPlain(uint8_t* dst, const uint8_t* row, const ColumnRun& columns,
                                         const PackedLayout& layout, int32_t first) {
    for (int32_t i = first; i < columns.count; i += 2) {
        const ptrdiff_t even = columns.Pixel(i);
        const ptrdiff_t odd = columns.Pixel(i + 1 < columns.count ? i + 1 : i);
        const uint8_t* evenGroup = row + even / 2 * 4;
        const uint8_t* oddGroup = row + odd / 2 * 4;
        uint8_t* group = dst + i * 2;
        group[layout.luma] = row[even * 2 + layout.luma];
        group[layout.luma + 2] = row[odd * 2 + layout.luma];
        for (int32_t chroma = layout.firstChroma; chroma < 4; chroma += 2) {
            group[chroma] = static_cast<uint8_t>(
                AverageSamples<Rounding::Down>(evenGroup[chroma], oddGroup[chroma]));
        }
    }
}

// A plan without tables.
[[maybe_unused]] void PlanPackedPlain(ColumnPlan& plan, const ColumnRun& columns,
                                      const PackedLayout& /*layout*/, int32_t /*rowBytes*/) {
    plan.columns = columns;
    plan.window = 0;
}

[[maybe_unused]] void NearestPackedColumnsPlain(uint8_t* dst, const uint8_t* row,
                                                const ColumnPlan& plan,
                                                const PackedLayout& layout) {
    NearestPackedPlain(dst, row, plan.columns, layout, 0);
}

// From sample `first` on, which is one of the thirds.
[[maybe_unused]] void DimThirdsPlain(uint8_t* samples, int32_t count, int32_t first) {
    for (int32_t i = first; i < count; i += 3) {
        samples[i] = static_cast<uint8_t>(DimSample(samples[i]));
    }
}

}  // namespace
}  // namespace tavo
