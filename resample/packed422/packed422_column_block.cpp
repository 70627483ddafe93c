// Planning a block of packed 4:2:2 columns, and applying it to rows.

#include "resample/packed422/packed422_column_block.h"

#include <algorithm>
#include <cstring>

namespace tavo {
namespace {

// Bytes that a block needs.
struct PackedSizes {
    int32_t columns;
    int32_t sourcePixels;

    constexpr int32_t TableBytes() const { return PlanTableBytes(columns); }
    constexpr int32_t RowBytes() const { return PackedRowBytes(columns); }
    constexpr int32_t LumaBytes() const { return sourcePixels + PackedMemory::kSlack; }
    constexpr int32_t ChromaBytes() const { return sourcePixels / 2 + PackedMemory::kSlack; }
    constexpr int32_t Bytes() const {
        return 2 * TableBytes() + 2 * RowBytes() + LumaBytes() + 2 * ChromaBytes();
    }
};
static_assert(kPackedPlanBytes <= 2 * PlanTableBytes(kPackedPlanColumns));
constexpr PackedSizes kSharedSizes = {1920, 4096};
// All columns of a fixed ratio at once: 720 pixels become 480.
constexpr PackedSizes kOwnSizes = {480, 736};
static_assert(kSharedSizes.Bytes() <= WorkMemory::kSharedBytes);
static_assert(kOwnSizes.Bytes() <= WorkMemory::kOwnBytes);

}  // namespace

PackedMemory::PackedMemory(WorkMemory& memory) {
    const PackedSizes& sizes = memory.IsShared() ? kSharedSizes : kOwnSizes;
    maxColumns = sizes.columns;
    maxSourcePixels = sizes.sourcePixels;
    uint8_t* next = memory.Bytes();
    const auto take = [&next](int32_t bytes) {
        uint8_t* const taken = next;
        next += bytes;
        return taken;
    };
    tables = take(sizes.TableBytes());
    chromaTables = take(sizes.TableBytes());
    rows[0] = take(sizes.RowBytes());
    rows[1] = take(sizes.RowBytes());
    planes.luma = take(sizes.LumaBytes());
    planes.firstChroma = take(sizes.ChromaBytes());
    planes.secondChroma = take(sizes.ChromaBytes());
}

PackedColumnBlock::PackedColumnBlock(const PackedColumns& columns, int32_t first,
                                     RepeatedChroma repeated, const PackedMemory& memory,
                                     const RowOps& ops)
    : memory_(memory),
      ops_(ops),
      first_(first),
      indices_(columns.indices + first),
      weights_(columns.weights + first),
      repeated_(repeated),
      lastPixel_(columns.srcWidth - 1),
      firstGroup_(indices_[0] / 2),
      rowBytes_(((columns.rowPixels + 1) / 2 - firstGroup_) * 4) {
    // Even, so that a block ends with a whole group.
    const int32_t rest = std::min(columns.count - first, memory.maxColumns);
    const int32_t limit = firstGroup_ * 2 + memory.maxSourcePixels - 4;
    count_ = static_cast<int32_t>(std::upper_bound(indices_, indices_ + rest, limit) - indices_);
    if (count_ < rest) count_ &= ~1;
    isSparse_ = count_ < rest && count_ < kFewColumns;
    if (isSparse_) count_ = std::min(rest, memory.maxSourcePixels / 2 / kSparseGroups);
    evenCount_ = count_ + count_ % 2;
    isSplit_ = isSparse_ || !ops_.packedBlend || !PlanPacked();
    if (!isSplit_) return;
    const Columns planned = ColumnsAt(memory_.rows[0]);
    lumaPlan_.tables = memory_.tables;
    FillLuma(planned, 0, evenCount_);
    PlanColumns(lumaPlan_, memory_.maxSourcePixels + PackedMemory::kSlack);
    chromaPlan_.tables = memory_.chromaTables;
    FillChroma(planned, 0, evenCount_);
    PlanColumns(chromaPlan_, memory_.maxSourcePixels / 2 + PackedMemory::kSlack);
}

int32_t PackedColumnBlock::Pixel(int32_t i) const { return indices_[std::min(i, count_ - 1)]; }

// The last source pixel is its own neighbour. Members are copied to locals first, because the
// compiler must assume that byte stores change members.
void PackedColumnBlock::FillLuma(const Columns& columns, int32_t first, int32_t count) const {
    const int32_t lastPixel = lastPixel_;
    const int32_t lastColumn = count_ - 1;
    const int32_t firstPixel = firstGroup_ * 2;
    const bool isSparse = isSparse_;
    const bool blendsOdd = blendsOdd_;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t column = std::min(first + i, lastColumn);
        const int32_t pixel = indices_[column];
        const bool isBlended = pixel != lastPixel && (blendsOdd || pixel % 2 == 0);
        columns.weights[i] = isBlended ? weights_[column] : uint8_t{0};
        columns.indices[i] = isSparse ? column * kSparseGroups * 2 + pixel % 2 : pixel - firstPixel;
    }
}

// The chroma of a group is that of its even pixel. An odd pixel's lies on the way to the next
// group.
//
// Deliberate: it goes that way by the weight of its luma, although chroma samples lie two pixels
// apart.
void PackedColumnBlock::FillChroma(const Columns& columns, int32_t first, int32_t count) const {
    const int32_t lastPixel = lastPixel_;
    const int32_t lastColumn = count_ - 1;
    const int32_t firstGroup = firstGroup_;
    const bool isSparse = isSparse_;
    const bool blendsOdd = blendsOdd_;
    const RepeatedChroma repeated = repeated_;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t column = std::min(repeated.Source(first + i), lastColumn);
        const int32_t pixel = indices_[column];
        const bool isBetween = blendsOdd && pixel % 2 != 0 && pixel != lastPixel;
        columns.weights[i] = isBetween ? weights_[column] : uint8_t{0};
        columns.indices[i] = isSparse ? column * kSparseGroups : pixel / 2 - firstGroup;
    }
}

bool PackedColumnBlock::PlanPacked() const {
    uint8_t* tables = memory_.tables;
    for (int32_t first = 0; first < evenCount_; first += kPackedPlanColumns) {
        int32_t indices[2][kPackedPlanColumns];
        uint8_t weights[2][kPackedPlanColumns];
        const int32_t count = std::min(evenCount_ - first, kPackedPlanColumns);
        FillLuma({indices[0], weights[0]}, first, count);
        FillChroma({indices[1], weights[1]}, first, count);
        if (!ops_.packedBlend->Plan(tables, {indices[0], weights[0], 0, count},
                                    {indices[1], weights[1], 0, count}, rowBytes_)) {
            return false;
        }
        tables += kPackedPlanBytes;
    }
    return true;
}

// Plans are made in the two rows of the memory, which are adjacent and not in use yet. They have
// six bytes a column; the columns of a plan take five.
PackedColumnBlock::Columns PackedColumnBlock::ColumnsAt(uint8_t* memory) const {
    auto* indices = reinterpret_cast<int32_t*>(memory);
    return {indices, reinterpret_cast<uint8_t*>(indices + evenCount_)};
}

// A plan without tables reads its columns again on each row, so they move to the memory for tables.
void PackedColumnBlock::PlanColumns(ColumnPlan& plan, int32_t rowBytes) {
    const Columns planned = ColumnsAt(memory_.rows[0]);
    ops_.pixels.plane.PlanBlend(plan, {planned.indices, planned.weights, 0, evenCount_}, rowBytes);
    if (plan.window != 0) return;
    const auto bytes = static_cast<size_t>(evenCount_) * (sizeof(int32_t) + 1);
    std::memcpy(plan.tables, memory_.rows[0], bytes);
    const Columns kept = ColumnsAt(plan.tables);
    plan.columns.indices = kept.indices;
    plan.columns.weights = kept.weights;
}

void PackedColumnBlock::Unpack(const PackedLayout& layout, const uint8_t* srcRow) const {
    const PackedSamples& planes = memory_.planes;
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

void PackedColumnBlock::BlendRow(const PackedLayout& layout, const uint8_t* srcRow,
                                 uint8_t* row) const {
    if (!isSplit_) {
        const uint8_t* from = srcRow + static_cast<ptrdiff_t>(firstGroup_) * 4;
        return ops_.packedBlend->BlendColumns(row, from, memory_.tables, evenCount_, layout);
    }
    const PackedSamples& planes = memory_.planes;
    Unpack(layout, srcRow);
    const PackedSamples samples = Samples(row);
    ops_.pixels.plane.BlendColumns(samples.luma, planes.luma, lumaPlan_);
    ops_.pixels.plane.BlendColumns(samples.firstChroma, planes.firstChroma, chromaPlan_);
    ops_.pixels.plane.BlendColumns(samples.secondChroma, planes.secondChroma, chromaPlan_);
}

// Deliberate: at the last source row, both lower neighbours of an odd pixel are that pixel. So what
// was blended across goes back to it by the weight of the row. An even pixel is blended with its
// own row, which changes nothing.
void PackedColumnBlock::BlendRowBelowLast(const PackedLayout& layout, const uint8_t* srcRow,
                                          uint8_t* row) {
    if (!isSplit_) {
        blendsOdd_ = false;
        // What had tables has them with fewer neighbours too.
        PlanPacked();
        return BlendRow(layout, srcRow, row);
    }
    BlendRow(layout, srcRow, row);
    const PackedSamples samples = Samples(row);
    for (int32_t i = 0; i < evenCount_; ++i) {
        const int32_t pixel = Pixel(i);
        if (pixel % 2 == 0) continue;
        const uint8_t* group = srcRow + static_cast<ptrdiff_t>(pixel / 2) * 4;
        samples.luma[i] = group[layout.luma + 2];
        samples.firstChroma[i] = group[layout.firstChroma];
        samples.secondChroma[i] = group[layout.firstChroma + 2];
    }
}

void PackedColumnBlock::ScaleRow(const PackedLayout& layout, Rounding rounding,
                                 WholePositions wholePositions, const uint8_t* srcRow,
                                 uint8_t* dstRow) const {
    uint8_t* const dst = dstRow + static_cast<ptrdiff_t>(first_) * 2;
    const bool isDimmed = wholePositions == WholePositions::Dimmed;
    if (!isSplit_) {
        const PackedBlendOps& ops = *ops_.packedBlend;
        const auto scaleColumns = isDimmed                   ? ops.ScaleColumnsDimmed
                                  : rounding == Rounding::Up ? ops.ScaleColumnsUp
                                                             : ops.ScaleColumnsDown;
        return scaleColumns(dst, srcRow + static_cast<ptrdiff_t>(firstGroup_) * 4, memory_.tables,
                            evenCount_, layout);
    }
    uint8_t* const row = memory_.rows[0];
    BlendRow(layout, srcRow, row);
    const PackedSamples samples = Samples(row);
    if (isDimmed) ops_.packed422.DimThirds(samples.luma, count_);
    const auto pack = rounding == Rounding::Up ? ops_.packed422.PackUp : ops_.packed422.PackDown;
    pack(dst, samples, evenCount_, layout);
}

void PackedColumnBlock::BlendPack(const PackedLayout& layout, Rounding rounding, uint8_t* upper,
                                  uint8_t* lower, int32_t weight, uint8_t* dstRow) const {
    uint8_t* const dst = dstRow + static_cast<ptrdiff_t>(first_) * 2;
    const auto blendPack = [&](const auto& ops, const auto& a, const auto& b) {
        const auto blendPackRows = rounding == Rounding::Up ? ops.BlendPackUp : ops.BlendPackDown;
        blendPackRows(dst, a, b, weight, evenCount_, layout);
    };
    isSplit_ ? blendPack(ops_.packed422, Samples(upper), Samples(lower))
             : blendPack(*ops_.packedBlend, upper, lower);
}

}  // namespace tavo
