// A block of destination columns of packed 4:2:2. Source rows are split into planes; luma and
// chroma are then scaled like planes, each with columns of its own.

#pragma once

#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"
#include "resample/work_memory.h"

namespace tavo {

// How the work memory of a block is divided.
class PackedMemory {
  public:
    explicit PackedMemory(WorkMemory& memory);

    // The most columns of a block, and the most source pixels that it spans.
    int32_t maxColumns;
    int32_t maxSourcePixels;

    uint8_t* lumaTables;
    uint8_t* chromaTables;
    // Two source rows, blended to the columns of the block: three bytes a pixel.
    uint8_t* rows[2];
    // One source row, split.
    PackedSamples planes;

    // Behind each plane: the right neighbour of its last sample, whose weight is 0.
    static constexpr int32_t kSlack = 64;
};

// Columns of a whole row.
struct PackedColumns {
    const int32_t* indices;
    const uint8_t* weights;
    int32_t count;
    int32_t srcWidth;
};

// In every `period` columns, one column has the chroma of another.
struct RepeatedChroma {
    int32_t column;
    int32_t from;
    int32_t period;  // 0 where none is repeated
};
inline constexpr RepeatedChroma kNoneRepeated = {0, 0, 0};

class PackedColumnBlock {
  public:
    // As many columns from `first` on as the memory has room for. An odd last column is repeated.
    PackedColumnBlock(const PackedColumns& columns, int32_t first, RepeatedChroma repeated,
                      const PackedMemory& memory, const RowOps& ops);
    PackedColumnBlock(const PackedColumnBlock&) = delete;
    PackedColumnBlock& operator=(const PackedColumnBlock&) = delete;

    // Not counting the repeated column.
    int32_t Count() const { return count_; }

    // Where the samples lie in a row of the memory.
    PackedSamples Samples(uint8_t* row) const {
        return {row, row + evenCount_, row + 2 * evenCount_};
    }
    int32_t RowBytes() const { return 3 * evenCount_; }

    // Blends a source row to the columns of the block, into a row of the memory.
    void BlendRow(const PackedLayout& layout, const uint8_t* srcRow, uint8_t* row) const;

    // Changes what BlendRow made of the last source row to what it is as a destination row: there
    // is no next row to blend with.
    void BlendBackLastRow(const PackedLayout& layout, const uint8_t* srcRow, int32_t rowWeight,
                          uint8_t* row) const;

    // Packs the samples into their place in a destination row.
    void Pack(const PackedLayout& layout, Packed422Ops::Pack pack, uint8_t* row,
              uint8_t* dstRow) const;

    // Blends two rows and does the same.
    void BlendPack(const PackedLayout& layout, Packed422Ops::BlendPack blendPack, uint8_t* upper,
                   uint8_t* lower, int32_t weight, uint8_t* dstRow) const;

  private:
    // The groups of one column in a sparse block: its own and the next one.
    static constexpr int32_t kSparseGroups = 2;
    // A block that has room for fewer columns is sparse.
    static constexpr int32_t kFewColumns = 16;

    void Unpack(const PackedLayout& layout, const uint8_t* srcRow) const;
    // The source pixel of a column, the repeated one included.
    int32_t Pixel(int32_t i) const;
    void PlanLuma(const uint8_t* weights);
    void PlanChroma(const uint8_t* weights, RepeatedChroma repeated);

    // The columns that a plan is made of.
    struct Columns {
        int32_t* indices;
        uint8_t* weights;
    };
    Columns ColumnsAt(uint8_t* memory) const;
    void RepeatLast(const Columns& planned) const;
    void PlanColumns(ColumnPlan& plan, int32_t rowBytes);

    const PackedMemory& memory_;
    const RowOps& ops_;
    const int32_t first_;
    const int32_t* const indices_;  // from column `first` on
    const int32_t lastPixel_;       // of the source
    const int32_t firstGroup_;
    int32_t count_;
    int32_t evenCount_;
    bool isSparse_;  // columns lie far apart, so each has groups of its own in the planes
    ColumnPlan lumaPlan_;
    ColumnPlan chromaPlan_;
};

}  // namespace tavo
