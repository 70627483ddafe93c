// The reference row operations. They read like the formulas in docs/kernels.md, and all other sets
// give their bytes.

#include "resample/row_ops/portable_columns.h"
#include "resample/row_ops/portable_packed422.h"

namespace tavo {
namespace {

void Unpack(const PackedSamples& dst, const uint8_t* src, int32_t groups,
            const PackedLayout& layout) {
    UnpackPlain(dst, src, groups, layout, 0);
}

template <Rounding kRounding>
void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels, const PackedLayout& layout) {
    PackPlain<kRounding>(dst, src, pixels, layout, 0);
}

void DimThirds(uint8_t* samples, int32_t count) { DimThirdsPlain(samples, count, 0); }

void CopyRow(uint8_t* dst, const uint8_t* src, int32_t bytes) {
    std::memcpy(dst, src, static_cast<size_t>(bytes));
}

void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
    for (; blocks > 0; --blocks, dst += 8, src += 8) std::memcpy(dst, src, 8);
}

void Finish() {}

}  // namespace

const RowOps kPortableRowOps = {
    .pixels = OpsOfAllPixels<PlainOps>(),
    .packed422 =
        {
            .Unpack = Unpack,
            .PackDown = Pack<Rounding::Down>,
            .PackUp = Pack<Rounding::Up>,
            .BlendPackDown = BlendThenPack<BlendRowsPlain<PlanePixel>, Pack<Rounding::Down>>,
            .BlendPackUp = BlendThenPack<BlendRowsPlain<PlanePixel>, Pack<Rounding::Up>>,
            .DimThirds = DimThirds,
            .PlanNearest = PlanPackedPlain,
            .NearestColumns = NearestPackedColumnsPlain,
        },
    .packedBlend = nullptr,
    .CopyRow = CopyRow,
    .CopyBlocks = CopyBlocks,
    .Finish = Finish,
};

}  // namespace tavo
