// Plain loops over columns and rows. They are the portable row operations, and the other sets use
// them for what does not fill a register.

#pragma once

#include "resample/row_ops/pixel_blend.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {
namespace {

template <typename Pixel>
void BlendRowsPlain(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                    int32_t bytes) {
    for (int32_t i = 0; i < bytes; i += Pixel::kSize) {
        Pixel::template Blend<Rounding::Down>(dst + i, a + i, b + i, weight);
    }
}

// A plan without tables.
[[maybe_unused]] void PlanPlain(ColumnPlan& plan, const ColumnRun& columns, int32_t /*rowBytes*/) {
    plan.columns = columns;
    plan.window = 0;
}

// From column `first` on.
template <typename Pixel, Rounding kRounding>
void BlendColumnsPlain(uint8_t* dst, const uint8_t* row, const ColumnRun& columns, int32_t first) {
    for (int32_t i = first; i < columns.count; ++i) {
        const uint8_t* pixel = row + columns.Pixel(i) * Pixel::kSize;
        Pixel::template Blend<kRounding>(dst + i * Pixel::kSize, pixel, pixel + Pixel::kSize,
                                         columns.weights[i]);
    }
}

template <typename Pixel>
void NearestColumnsPlain(uint8_t* dst, const uint8_t* row, const ColumnRun& columns,
                         int32_t first) {
    for (int32_t i = first; i < columns.count; ++i) {
        std::memcpy(dst + i * Pixel::kSize, row + columns.Pixel(i) * Pixel::kSize, Pixel::kSize);
    }
}

template <typename Pixel, Rounding kRounding>
void BlendPlannedPlain(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    BlendColumnsPlain<Pixel, kRounding>(dst, row, plan.columns, 0);
}

template <typename Pixel>
void NearestPlannedPlain(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    NearestColumnsPlain<Pixel>(dst, row, plan.columns, 0);
}

struct PlainOps {
    template <typename Pixel>
    static constexpr PixelOps Of() {
        return {
            .BlendRows = BlendRowsPlain<Pixel>,
            .PlanBlend = PlanPlain,
            .PlanNearest = PlanPlain,
            .BlendColumns = BlendPlannedPlain<Pixel, Rounding::Down>,
            .BlendColumnsUp = BlendPlannedPlain<Pixel, Rounding::Up>,
            .NearestColumns = NearestPlannedPlain<Pixel>,
        };
    }
};

// The one list of the kinds of pixel: Ops::Of<Pixel>() gives the operations on one of them.
template <typename Ops>
constexpr PixelOpsTable OpsOfAllPixels() {
    return {
        .plane = Ops::template Of<PlanePixel>(),
        .rgb24 = Ops::template Of<Rgb24Pixel>(),
        .rgb555 = Ops::template Of<Rgb555Pixel>(),
        .rgb565 = Ops::template Of<Rgb565Pixel>(),
    };
}

}  // namespace
}  // namespace tavo
