// A stretch of destination columns of packed 4:2:2. Source rows are taken apart into planes on the
// stack; then luma and chroma are scaled like planes, each with columns of its own. Its sizes keep
// a kernel within 16 KB of stack.

#pragma once

#include "resample/frame.h"
#include "resample/row_ops/row_ops.h"

namespace tavo {

// The most columns of a stretch. A whole number of the groups of every fixed ratio.
inline constexpr int32_t kMaxPackedColumns = 720;

// The samples of one source row at the stretch's columns: one byte of each kind a pixel. The
// stretch knows where.
struct PackedRow {
    alignas(64) uint8_t bytes[3 * kMaxPackedColumns];
};

// Columns of a whole row, of which a stretch is made.
struct PackedColumns {
    const int32_t* indices;
    const uint8_t* weights;
    int32_t count;
    int32_t srcWidth;
};

// In every `period` columns, the chroma of one column comes from where that of another comes.
struct RepeatedChroma {
    int32_t column;
    int32_t from;
    int32_t period;  // 0 where none is repeated
};
inline constexpr RepeatedChroma kNoneRepeated = {0, 0, 0};

class PackedStretch {
  public:
    // As many columns from `first` on as a stretch holds. An odd last column is repeated.
    PackedStretch(const PackedColumns& columns, int32_t first, RepeatedChroma repeated,
                  const RowOps& ops);
    PackedStretch(const PackedStretch&) = delete;
    PackedStretch& operator=(const PackedStretch&) = delete;

    // The number of columns before the repeated one.
    int32_t Count() const { return count_; }

    // Memory for two rows, which the stretch itself does not look at.
    PackedRow& Row(int32_t i) { return rows_[i]; }

    PackedSamples Samples(PackedRow& row) const {
        return {row.bytes, row.bytes + evenCount_, row.bytes + 2 * evenCount_};
    }
    int32_t RowBytes() const { return 3 * evenCount_; }

    // The stretch's columns of a source row.
    void BlendRow(const PackedLayout& layout, const uint8_t* srcRow, PackedRow& row) const;

    // Turns what BlendRow made of the last source row into what it gives where it has no next row.
    void BlendBackLastRow(const PackedLayout& layout, const uint8_t* srcRow, int32_t rowWeight,
                          PackedRow& row) const;

    // Packs the samples into their place in a destination row.
    void Pack(const PackedLayout& layout, Packed422Ops::Pack pack, PackedRow& row,
              uint8_t* dstRow) const;

    // The same for the blend of two rows.
    void BlendPack(const PackedLayout& layout, Packed422Ops::BlendPack blendPack, PackedRow& upper,
                   PackedRow& lower, int32_t weight, uint8_t* dstRow) const;

  private:
    // Source pixels that a stretch spans at the most.
    static constexpr int32_t kMaxSourcePixels = 1024;
    // Groups that a column needs in a sparse stretch: its own and the next one.
    static constexpr int32_t kSparseGroups = 2;
    static constexpr int32_t kMaxSparseColumns = kMaxSourcePixels / 2 / kSparseGroups;
    // A stretch of fewer columns, for its source pixels, is a sparse one.
    static constexpr int32_t kFewColumns = 16;
    // Behind the planes: the neighbour of the last sample, which counts for nothing.
    static constexpr int32_t kSlack = 64;

    struct Planes {
        alignas(64) uint8_t luma[kMaxSourcePixels + kSlack];
        alignas(64) uint8_t firstChroma[kMaxSourcePixels / 2 + kSlack];
        alignas(64) uint8_t secondChroma[kMaxSourcePixels / 2 + kSlack];
    };
    void Unpack(const PackedLayout& layout, const uint8_t* srcRow, Planes& planes) const;
    // The source pixel of a column, the repeated one included.
    int32_t Pixel(int32_t i) const;
    // Where a column lies in the planes.
    int32_t Group(int32_t i) const;
    void PlanLuma(const uint8_t* weights);
    void PlanChroma(const uint8_t* weights, RepeatedChroma repeated);
    void PlanColumns(ColumnPlan& plan, int32_t rowBytes);

    const RowOps& ops_;
    const int32_t first_;
    const int32_t* const indices_;  // from column `first` on
    const int32_t lastPixel_;       // of the source
    const int32_t firstGroup_;
    int32_t count_;
    int32_t evenCount_;
    bool isSparse_;  // columns lie so far apart that each has groups of its own in the planes
    SizedPlan<kMaxPackedColumns> lumaPlan_;
    SizedPlan<kMaxPackedColumns> chromaPlan_;
    struct Columns {
        int32_t indices[kMaxPackedColumns];
        uint8_t weights[kMaxPackedColumns];
    };
    static_assert(sizeof(Columns) <= PlanTableBytes(kMaxPackedColumns));
    union {
        Columns planned_;  // while the plans are made
        PackedRow rows_[2];
    };
};

}  // namespace tavo
