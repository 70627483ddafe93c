#include "resample/packed422/packed422_stretch.h"

#include <algorithm>

#include "resample/row_ops/pixel_blend.h"

namespace tavo {
namespace {

void BlendBack(uint8_t* sample, uint8_t own, int32_t weight) {
    *sample = static_cast<uint8_t>(RoundDown::Blend(*sample, own, weight));
}

}  // namespace

PackedStretch::PackedStretch(const PackedColumns& columns, int32_t first, const RowOps& ops)
    : ops_(ops),
      first_(first),
      indices_(columns.indices + first),
      lastPixel_(columns.srcWidth - 1),
      firstGroup_(indices_[0] / 2) {
    // Even, so that a stretch ends with a whole group.
    const int32_t rest = std::min(columns.count - first, kMaxPlanColumns);
    const int32_t limit = firstGroup_ * 2 + kMaxSourcePixels - 4;
    count_ = static_cast<int32_t>(std::upper_bound(indices_, indices_ + rest, limit) - indices_);
    if (count_ < rest) count_ &= ~1;
    isSparse_ = count_ < 2 && count_ < rest;
    if (isSparse_) count_ = rest;
    evenCount_ = count_ + count_ % 2;
    for (int32_t i = 0; i < evenCount_; ++i) {
        const int32_t column = std::min(i, count_ - 1);
        SetColumn(i, columns.weights[first + column]);
    }
    Plan();
}

int32_t PackedStretch::Pixel(int32_t i) const { return indices_[std::min(i, count_ - 1)]; }

// The last pixel of the source is its own neighbour. The chroma of a group is that of its even
// pixel; an odd one lies on the way to the next group.
void PackedStretch::SetColumn(int32_t i, int32_t weight) {
    const int32_t pixel = Pixel(i);
    const bool hasNext = pixel != lastPixel_;
    const bool isOdd = pixel % 2 != 0;
    const int32_t group = isSparse_ ? i * kSparseGroups : pixel / 2 - firstGroup_;
    lumaIndices_[i] = group * 2 + pixel % 2;
    lumaWeights_[i] = static_cast<uint8_t>(hasNext ? weight : 0);
    chromaIndices_[i] = group;
    chromaWeights_[i] = static_cast<uint8_t>(hasNext && isOdd ? weight : 0);
}

void PackedStretch::Plan() {
    const ColumnRun luma = {lumaIndices_, lumaWeights_, 0, evenCount_};
    const ColumnRun chroma = {chromaIndices_, chromaWeights_, 0, evenCount_};
    ops_.plane.PlanBlend(lumaPlan_, luma, kMaxSourcePixels + kSlack);
    ops_.plane.PlanBlend(chromaPlan_, chroma, kMaxSourcePixels / 2 + kSlack);
}

void PackedStretch::RepeatChroma(int32_t column, int32_t from, int32_t period) {
    for (int32_t i = 0; i + column < evenCount_; i += period) {
        chromaIndices_[i + column] = chromaIndices_[i + from];
        chromaWeights_[i + column] = chromaWeights_[i + from];
    }
    Plan();
}

void PackedStretch::Unpack(const PackedLayout& layout, const uint8_t* srcRow,
                           Planes& planes) const {
    const auto unpack = [&](int32_t to, int32_t firstPixel, int32_t lastPixel) {
        const int32_t firstGroup = firstPixel / 2;
        const int32_t lastGroup = std::min(lastPixel + 1, lastPixel_) / 2;
        ops_.packed422.Unpack(
            {planes.luma + to * 2, planes.firstChroma + to, planes.secondChroma + to},
            srcRow + static_cast<ptrdiff_t>(firstGroup) * 4, lastGroup - firstGroup + 1, layout);
    };
    if (!isSparse_) return unpack(0, Pixel(0), Pixel(count_ - 1));
    for (int32_t i = 0; i < evenCount_; ++i) unpack(i * kSparseGroups, Pixel(i), Pixel(i));
}

void PackedStretch::BlendRow(const PackedLayout& layout, const uint8_t* srcRow,
                             PackedRow& row) const {
    Planes planes;
    Unpack(layout, srcRow, planes);
    const PackedSamples samples = Samples(row);
    ops_.plane.BlendColumns(samples.luma, planes.luma, lumaPlan_);
    ops_.plane.BlendColumns(samples.firstChroma, planes.firstChroma, chromaPlan_);
    ops_.plane.BlendColumns(samples.secondChroma, planes.secondChroma, chromaPlan_);
}

// Deliberate: below an odd pixel of the last row lies that pixel itself, and to the right of it
// again. So the blend toward the next pixel is taken back by the row's weight. An even pixel's
// lower row is the row itself.
void PackedStretch::BlendBackLastRow(const PackedLayout& layout, const uint8_t* srcRow,
                                     int32_t rowWeight, PackedRow& row) const {
    const PackedSamples samples = Samples(row);
    for (int32_t i = 0; i < evenCount_; ++i) {
        const int32_t pixel = Pixel(i);
        if (pixel % 2 == 0 || pixel == lastPixel_) continue;
        const uint8_t* group = srcRow + static_cast<ptrdiff_t>(pixel / 2) * 4;
        BlendBack(&samples.luma[i], group[layout.luma + 2], rowWeight);
        BlendBack(&samples.firstChroma[i], group[layout.firstChroma], rowWeight);
        BlendBack(&samples.secondChroma[i], group[layout.firstChroma + 2], rowWeight);
    }
}

void PackedStretch::Pack(const PackedLayout& layout, Packed422Ops::Pack pack, PackedRow& row,
                         uint8_t* dstRow) const {
    pack(dstRow + static_cast<ptrdiff_t>(first_) * 2, Samples(row), evenCount_, layout);
}

void PackedStretch::BlendPack(const PackedLayout& layout, Packed422Ops::BlendPack blendPack,
                              PackedRow& upper, PackedRow& lower, int32_t weight,
                              uint8_t* dstRow) const {
    blendPack(dstRow + static_cast<ptrdiff_t>(first_) * 2, Samples(upper), Samples(lower), weight,
              evenCount_, layout);
}

}  // namespace tavo
