// A block of destination columns of packed 4:2:2. Source rows are blended across, each once;
// blended rows are blended down and packed. Where the instruction set has no tables for the
// columns, source rows are split into planes first; luma and chroma are then scaled like planes,
// each with columns of its own.

#pragma once

#include "resample/formulas.h"
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

    // Of packed columns, or of luma's. The tables of chroma follow.
    uint8_t* tables;
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
    int32_t srcWidth;   // the last of these pixels is its own neighbour
    int32_t rowPixels;  // that can be read
};

// In every `period` columns, one column has the chroma of another.
struct RepeatedChroma {
    int32_t column;
    int32_t from;
    int32_t period;  // 0 where none is repeated

    int32_t Source(int32_t i) const {
        return period > 0 && i % period == column ? i - column + from : i;
    }
};
inline constexpr RepeatedChroma kNoneRepeated = {0, 0, 0};

// Whether the luma of the first of every three columns is dimmed (DimSample). That goes with
// averages that are rounded down.
enum class WholePositions { Copied, Dimmed };

class PackedColumnBlock {
  public:
    // As many columns from `first` on as the memory has room for. An odd last column is repeated.
    PackedColumnBlock(const PackedColumns& columns, int32_t first, RepeatedChroma repeated,
                      const PackedMemory& memory, const RowOps& ops);
    PackedColumnBlock(const PackedColumnBlock&) = delete;
    PackedColumnBlock& operator=(const PackedColumnBlock&) = delete;

    // Not counting the repeated column.
    int32_t Count() const { return count_; }

    // Blends a source row to the columns of the block, into a row of the memory.
    void BlendRow(const PackedLayout& layout, const uint8_t* srcRow, uint8_t* row) const;

    // Makes what takes the place of a row below the last source row, out of that one. From then on
    // no other rows can be blended.
    void BlendRowBelowLast(const PackedLayout& layout, const uint8_t* srcRow, uint8_t* row);

    // Blends two rows of the memory and packs them into their place in a destination row.
    void BlendPack(const PackedLayout& layout, Rounding rounding, uint8_t* upper, uint8_t* lower,
                   int32_t weight, uint8_t* dstRow) const;

    // Blends a source row to the columns of the block and packs it into its place in a destination
    // row.
    void ScaleRow(const PackedLayout& layout, Rounding rounding, WholePositions wholePositions,
                  const uint8_t* srcRow, uint8_t* dstRow) const;

  private:
    // The groups of one column in a sparse block: its own and the next one.
    static constexpr int32_t kSparseGroups = 2;
    // A block that has room for fewer columns is sparse.
    static constexpr int32_t kFewColumns = 16;

    void Unpack(const PackedLayout& layout, const uint8_t* srcRow) const;
    // Where the samples lie in a row that is split.
    PackedSamples Samples(uint8_t* row) const {
        return {row, row + evenCount_, row + 2 * evenCount_};
    }
    // The source pixel of a column, the repeated one included.
    int32_t Pixel(int32_t i) const;

    // The columns that a plan is made of.
    struct Columns {
        int32_t* indices;
        uint8_t* weights;
    };
    Columns ColumnsAt(uint8_t* memory) const;
    // Some columns from `first` on.
    void FillLuma(const Columns& columns, int32_t first, int32_t count) const;
    void FillChroma(const Columns& columns, int32_t first, int32_t count) const;
    bool PlanPacked() const;
    void PlanColumns(ColumnPlan& plan, int32_t rowBytes);

    const PackedMemory& memory_;
    const RowOps& ops_;
    const int32_t first_;
    const int32_t* const indices_;  // from column `first` on
    const uint8_t* const weights_;
    const RepeatedChroma repeated_;
    const int32_t lastPixel_;  // of the source
    const int32_t firstGroup_;
    const int32_t rowBytes_;  // from that group on
    int32_t count_;
    int32_t evenCount_;
    bool isSparse_;          // columns lie far apart, so each has groups of its own in the planes
    bool blendsOdd_ = true;  // source pixels
    bool isSplit_;           // rows are
    ColumnPlan lumaPlan_;
    ColumnPlan chromaPlan_;
};

}  // namespace tavo
