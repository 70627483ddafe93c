// Row operations: what the frame kernels are made of. The portable set is the reference; every
// other instruction set has a set of its own that gives the same bytes.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo {

// A run of destination columns and where each of them comes from: pixels of a row whose first pixel
// is source column `firstIndex`.
struct ColumnRun {
    const int32_t* indices;  // [count], none below firstIndex
    const uint8_t* weights;  // [count]; null where nothing is blended
    int32_t firstIndex;
    int32_t count;

    ptrdiff_t Pixel(int32_t column) const {
        return static_cast<ptrdiff_t>(indices[column]) - firstIndex;
    }
};

// A run of columns as an instruction set has prepared it, once for all rows. The tables belong to
// the set that filled them.
struct ColumnPlan {
    ColumnRun columns;
    int32_t window;   // how the tables were made; 0 where there are none
    uint8_t* tables;  // memory for them, at a multiple of 64
};

// What the tables for so many destination bytes take: 40 for every eight, 64 at a time.
constexpr int32_t PlanTableBytes(int32_t bytes) { return (bytes + 63) / 64 * 320; }
// How many destination bytes there are tables for in so much memory.
constexpr int32_t PlannedBytes(int32_t tableBytes) { return tableBytes / 320 * 64; }

// The operations on one kind of pixel. A blend is made for each sample of a pixel, a byte or a
// field of bits: a + (((b - a) * weight) >> 8). Bits that belong to no field come out as 0.
struct PixelOps {
    // Blends two rows, which `dst` must not overlap.
    void (*BlendRows)(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                      int32_t bytes);

    // Prepare a plan for the operations below, of columns that it has memory for. The rows that it
    // is used for can be read for `rowBytes` bytes from their first pixel on.
    using Plan = void (*)(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes);
    using Apply = void (*)(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan);
    Plan PlanBlend;
    Plan PlanNearest;

    // Blends each column's pixel with its right neighbour, which every one of them must have.
    Apply BlendColumns;

    // The same, but rounded up: a - (((a - b) * weight) >> 8).
    Apply BlendColumnsUp;

    // Copies each column's pixel. Needs the plan of PlanNearest.
    Apply NearestColumns;
};

// Where the bytes of a packed 4:2:2 row lie. Two pixels share a group of four bytes, with a luma
// byte each and two chroma bytes. No operation knows which of them is U and which V.
struct PackedLayout {
    int32_t luma;         // of the even pixel; the odd one's is two bytes on
    int32_t firstChroma;  // the second chroma byte is two bytes on
};
inline constexpr PackedLayout kYuy2Layout = {0, 1};
inline constexpr PackedLayout kUyvyLayout = {1, 0};

// A row of packed 4:2:2 taken apart into bytes of one kind each.
struct PackedSamples {
    uint8_t* luma;
    uint8_t* firstChroma;
    uint8_t* secondChroma;
};

// The operations on packed 4:2:2 rows. To be blended, their samples are treated as planes.
struct Packed422Ops {
    // Takes groups apart: two luma bytes and one of each chroma a group.
    void (*Unpack)(const PackedSamples& dst, const uint8_t* src, int32_t groups,
                   const PackedLayout& layout);

    // Packs an even number of pixels with chroma samples of their own. Those of two pixels are
    // averaged, a half rounded down or up.
    using Pack = void (*)(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                          const PackedLayout& layout);
    Pack PackDown;
    Pack PackUp;

    // Blends two rows of samples and packs the result, an even number of pixels.
    using BlendPack = void (*)(uint8_t* dst, const PackedSamples& a, const PackedSamples& b,
                               int32_t weight, int32_t pixels, const PackedLayout& layout);
    BlendPack BlendPackDown;
    BlendPack BlendPackUp;

    // Takes 1 from every third sample that is not 0, beginning with the first: that is what a
    // weight of 255/256 leaves of it.
    void (*DimThirds)(uint8_t* samples, int32_t count);

    // Prepares a plan for NearestColumns, as the plans of PixelOps. Rows consist of whole groups.
    void (*PlanNearest)(ColumnPlan& plan, const ColumnRun& columns, const PackedLayout& layout,
                        int32_t rowBytes);

    // Copies each column's pixel, straight from a packed row. The chroma of two pixels is averaged,
    // a half rounded down; an odd last column is repeated.
    void (*NearestColumns)(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                           const PackedLayout& layout);
};

struct RowOps {
    PixelOps plane;  // one byte
    PixelOps rgb24;
    PixelOps rgb555;
    PixelOps rgb565;
    Packed422Ops packed422;

    // Copies a row, which `dst` must not overlap.
    void (*CopyRow)(uint8_t* dst, const uint8_t* src, int32_t bytes);

    // Copies whole blocks of eight bytes.
    void (*CopyBlocks)(uint8_t* dst, const uint8_t* src, int32_t blocks);

    // Gives the registers back to ordinary code; called once at the end of a kernel.
    void (*Finish)();
};

// Picks the operations of a kind of pixel out of a set.
using PixelKind = PixelOps RowOps::*;

// The variants of a kernel family: what their name promises to need at least, and whose bytes they
// give. A variant may run wider operations than its name says, if its processor has them.
enum class KernelVariant { Portable, Mmx, Sse };

// The operations that a variant runs on. Portable ones for every variant until they are chosen.
const RowOps& RowOpsOf(KernelVariant variant);

// Sets what the portable variants run on, and what all others do. Any thread.
void SetRowOps(const RowOps& ofPortable, const RowOps& ofOthers);

// Each in row_ops_<set>.cpp. Those of another architecture are not defined.
extern const RowOps kPortableRowOps;
extern const RowOps kMmxRowOps;
extern const RowOps kSseRowOps;
extern const RowOps kSsse3RowOps;
extern const RowOps kAvx2RowOps;
extern const RowOps kAvx512RowOps;

// Ends the use of an instruction set's registers on every way out of a kernel.
class RowOpsScope {
  public:
    explicit RowOpsScope(KernelVariant variant) : ops_(RowOpsOf(variant)) {}
    ~RowOpsScope() { ops_.Finish(); }
    RowOpsScope(const RowOpsScope&) = delete;
    RowOpsScope& operator=(const RowOpsScope&) = delete;

    const RowOps& operator*() const { return ops_; }
    const RowOps* operator->() const { return &ops_; }
    const PixelOps& Of(PixelKind kind) const { return ops_.*kind; }

  private:
    const RowOps& ops_;
};

}  // namespace tavo
