// Planning a block of packed 4:2:2 columns, and applying it to rows.

#include "resample/packed422/packed422_column_block.h"

#include <algorithm>
#include <cstring>

#include "resample/formulas.h"

namespace tavo {
namespace {

void BlendBack(uint8_t* sample, uint8_t own, int32_t weight) {
    *sample = static_cast<uint8_t>(BlendSamples<Rounding::Down>(*sample, own, weight));
}

// Bytes that a block needs.
struct PackedSizes {
    int32_t columns;
    int32_t sourcePixels;

    constexpr int32_t TableBytes() const { return PlanTableBytes(columns); }
    constexpr int32_t RowBytes() const { return (3 * columns + 63) / 64 * 64; }
    constexpr int32_t LumaBytes() const { return sourcePixels + PackedMemory::kSlack; }
    constexpr int32_t ChromaBytes() const { return sourcePixels / 2 + PackedMemory::kSlack; }
    constexpr int32_t Bytes() const {
        return 2 * TableBytes() + 2 * RowBytes() + LumaBytes() + 2 * ChromaBytes();
    }
};
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
    lumaTables = take(sizes.TableBytes());
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
      lastPixel_(columns.srcWidth - 1),
      firstGroup_(indices_[0] / 2) {
    // Even, so that a block ends with a whole group.
    const int32_t rest = std::min(columns.count - first, memory.maxColumns);
    const int32_t limit = firstGroup_ * 2 + memory.maxSourcePixels - 4;
    count_ = static_cast<int32_t>(std::upper_bound(indices_, indices_ + rest, limit) - indices_);
    if (count_ < rest) count_ &= ~1;
    isSparse_ = count_ < rest && count_ < kFewColumns;
    if (isSparse_) count_ = std::min(rest, memory.maxSourcePixels / 2 / kSparseGroups);
    evenCount_ = count_ + count_ % 2;
    lumaPlan_.tables = memory.lumaTables;
    chromaPlan_.tables = memory.chromaTables;
    PlanLuma(columns.weights + first);
    PlanChroma(columns.weights + first, repeated);
}

int32_t PackedColumnBlock::Pixel(int32_t i) const { return indices_[std::min(i, count_ - 1)]; }

void PackedColumnBlock::RepeatLast(const Columns& planned) const {
    if (count_ == evenCount_) return;
    planned.indices[count_] = planned.indices[count_ - 1];
    planned.weights[count_] = planned.weights[count_ - 1];
}

// The last source pixel is its own neighbour. Members are copied to locals first, because the
// compiler must assume that byte stores change members.
void PackedColumnBlock::PlanLuma(const uint8_t* weights) {
    const Columns planned = ColumnsAt(memory_.rows[0]);
    const int32_t lastPixel = lastPixel_;
    const int32_t count = count_;
    const int32_t* const indices = indices_;
    for (int32_t i = 0; i < count; ++i) {
        planned.weights[i] = indices[i] == lastPixel ? 0 : weights[i];
    }
    const int32_t firstPixel = firstGroup_ * 2;
    const bool isSparse = isSparse_;
    for (int32_t i = 0; i < count; ++i) {
        planned.indices[i] =
            isSparse ? i * kSparseGroups * 2 + indices[i] % 2 : indices[i] - firstPixel;
    }
    RepeatLast(planned);
    PlanColumns(lumaPlan_, memory_.maxSourcePixels + PackedMemory::kSlack);
}

// The chroma of a group is that of its even pixel. An odd pixel's lies on the way to the next
// group.
//
// Deliberate: it goes that way by the weight of its luma, although chroma samples lie two pixels
// apart.
void PackedColumnBlock::PlanChroma(const uint8_t* weights, RepeatedChroma repeated) {
    const Columns planned = ColumnsAt(memory_.rows[0]);
    const int32_t lastPixel = lastPixel_;
    const int32_t count = count_;
    const int32_t* const indices = indices_;
    for (int32_t i = 0; i < count; ++i) {
        const bool isBetween = indices[i] % 2 != 0 && indices[i] != lastPixel;
        planned.weights[i] = isBetween ? weights[i] : uint8_t{0};
    }
    const int32_t firstGroup = firstGroup_;
    const bool isSparse = isSparse_;
    for (int32_t i = 0; i < count; ++i) {
        planned.indices[i] = isSparse ? i * kSparseGroups : indices[i] / 2 - firstGroup;
    }
    RepeatLast(planned);
    for (int32_t i = 0; repeated.period > 0 && i + repeated.column < evenCount_;
         i += repeated.period) {
        planned.indices[i + repeated.column] = planned.indices[i + repeated.from];
        planned.weights[i + repeated.column] = planned.weights[i + repeated.from];
    }
    PlanColumns(chromaPlan_, memory_.maxSourcePixels / 2 + PackedMemory::kSlack);
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
void PackedColumnBlock::BlendBackLastRow(const PackedLayout& layout, const uint8_t* srcRow,
                                         int32_t rowWeight, uint8_t* row) const {
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

void PackedColumnBlock::Pack(const PackedLayout& layout, Packed422Ops::Pack pack, uint8_t* row,
                             uint8_t* dstRow) const {
    pack(dstRow + static_cast<ptrdiff_t>(first_) * 2, Samples(row), evenCount_, layout);
}

void PackedColumnBlock::BlendPack(const PackedLayout& layout, Packed422Ops::BlendPack blendPack,
                                  uint8_t* upper, uint8_t* lower, int32_t weight,
                                  uint8_t* dstRow) const {
    blendPack(dstRow + static_cast<ptrdiff_t>(first_) * 2, Samples(upper), Samples(lower), weight,
              evenCount_, layout);
}

}  // namespace tavo
