#include "resample/packed422/packed422_stretch.h"

#include <algorithm>
#include <new>

#include "resample/row_ops/pixel_blend.h"

namespace tavo {
namespace {

void BlendBack(uint8_t* sample, uint8_t own, int32_t weight) {
    *sample = static_cast<uint8_t>(RoundDown::Blend(*sample, own, weight));
}

}  // namespace

PackedStretch::PackedStretch(const PackedColumns& columns, int32_t first, RepeatedChroma repeated,
                             const RowOps& ops)
    : ops_(ops),
      first_(first),
      indices_(columns.indices + first),
      lastPixel_(columns.srcWidth - 1),
      firstGroup_(indices_[0] / 2) {
    // Even, so that a stretch ends with a whole group.
    const int32_t rest = std::min(columns.count - first, kMaxPackedColumns);
    const int32_t limit = firstGroup_ * 2 + kMaxSourcePixels - 4;
    count_ = static_cast<int32_t>(std::upper_bound(indices_, indices_ + rest, limit) - indices_);
    if (count_ < rest) count_ &= ~1;
    isSparse_ = count_ < rest && count_ < kFewColumns;
    if (isSparse_) count_ = std::min(rest, kMaxSparseColumns);
    evenCount_ = count_ + count_ % 2;
    PlanLuma(columns.weights + first);
    PlanChroma(columns.weights + first, repeated);
}

int32_t PackedStretch::Pixel(int32_t i) const { return indices_[std::min(i, count_ - 1)]; }

int32_t PackedStretch::Group(int32_t i) const {
    return isSparse_ ? i * kSparseGroups : Pixel(i) / 2 - firstGroup_;
}

// The last pixel of the source is its own neighbour.
void PackedStretch::PlanLuma(const uint8_t* weights) {
    for (int32_t i = 0; i < evenCount_; ++i) {
        const int32_t pixel = Pixel(i);
        planned_.indices[i] = Group(i) * 2 + pixel % 2;
        planned_.weights[i] = pixel == lastPixel_ ? 0 : weights[std::min(i, count_ - 1)];
    }
    PlanColumns(lumaPlan_, kMaxSourcePixels + kSlack);
}

// The chroma of a group is that of its even pixel; an odd one lies on the way to the next group.
void PackedStretch::PlanChroma(const uint8_t* weights, RepeatedChroma repeated) {
    for (int32_t i = 0; i < evenCount_; ++i) {
        const int32_t pixel = Pixel(i);
        const bool isBetween = pixel % 2 != 0 && pixel != lastPixel_;
        planned_.indices[i] = Group(i);
        planned_.weights[i] = isBetween ? weights[std::min(i, count_ - 1)] : uint8_t{0};
    }
    for (int32_t i = 0; repeated.period > 0 && i + repeated.column < evenCount_;
         i += repeated.period) {
        planned_.indices[i + repeated.column] = planned_.indices[i + repeated.from];
        planned_.weights[i + repeated.column] = planned_.weights[i + repeated.from];
    }
    PlanColumns(chromaPlan_, kMaxSourcePixels / 2 + kSlack);
}

// A plan without tables reads its columns on each row, so they move to where the tables would be.
void PackedStretch::PlanColumns(ColumnPlan& plan, int32_t rowBytes) {
    ops_.plane.PlanBlend(plan, {planned_.indices, planned_.weights, 0, evenCount_}, rowBytes);
    if (plan.window != 0) return;
    auto* kept = new (plan.tables) Columns(planned_);
    plan.columns.indices = kept->indices;
    plan.columns.weights = kept->weights;
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
