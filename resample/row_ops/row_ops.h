// Row operations: what frame drivers are made of. The portable set is the reference; all other sets
// give the same bytes. docs/kernels.md has the formulas.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo {

// Neighbouring destination columns and the pixels of a row that they come from. The row begins with
// source column `firstIndex`.
struct ColumnRun {
    const int32_t* indices;  // [count], none below firstIndex
    const uint8_t* weights;  // [count]; null where nothing is blended
    int32_t firstIndex;
    int32_t count;

    ptrdiff_t Pixel(int32_t column) const {
        return static_cast<ptrdiff_t>(indices[column]) - firstIndex;
    }
};

// Columns as an instruction set has prepared them, once for all rows. Only that set can read its
// tables.
struct ColumnPlan {
    ColumnRun columns;
    int32_t window;   // how the tables were made; 0 if there are none
    uint8_t* tables;  // memory for them, aligned to 64 bytes
};

// Bytes of tables for so many destination bytes: 40 for each eight, in units of 64 bytes.
constexpr int32_t PlanTableBytes(int32_t bytes) { return (bytes + 63) / 64 * 320; }
// How many destination bytes can be planned with so many bytes of tables.
constexpr int32_t PlannedBytes(int32_t tableBytes) { return tableBytes / 320 * 64; }

// Operations on one kind of pixel. Each sample, a byte or a field of bits, is blended by itself.
// Bits outside of all fields become 0.
struct PixelOps {
    // Blends two rows. `dst` must not overlap them.
    void (*BlendRows)(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                      int32_t bytes);

    // These make a plan, of no more columns than it has memory for. The rows that it will be
    // applied to must be readable for `rowBytes` bytes from their first pixel on.
    using Plan = void (*)(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes);
    using Apply = void (*)(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan);
    Plan PlanBlend;
    Plan PlanNearest;

    // Blends each pixel with its right neighbour, which must be readable. Needs a plan of
    // PlanBlend.
    Apply BlendColumns;

    // The same, rounded up.
    Apply BlendColumnsUp;

    // Copies pixels. Needs a plan of PlanNearest.
    Apply NearestColumns;

    // BlendRows of so many bytes into `row`, and BlendColumns of that. What `row` holds in between
    // is the set's own affair. Null where there is no faster way than the two calls.
    void (*BlendDownAndAcross)(uint8_t* dst, uint8_t* row, const uint8_t* a, const uint8_t* b,
                               int32_t weight, int32_t bytes, const ColumnPlan& plan) = nullptr;

    // Asks for bytes that will be read soon. Null where that gains nothing.
    void (*Fetch)(const uint8_t* row, int32_t bytes) = nullptr;
};

// The bytes of packed 4:2:2. Two pixels share a group of four: a luma byte each, and two chroma
// bytes. No operation needs to know which chroma byte is U.
struct PackedLayout {
    int32_t luma;         // of the even pixel; the odd one's is two bytes on
    int32_t firstChroma;  // the second chroma byte is two bytes on
};
inline constexpr PackedLayout kYuy2Layout = {0, 1};
inline constexpr PackedLayout kUyvyLayout = {1, 0};

// A packed row split into three.
struct PackedSamples {
    uint8_t* luma;
    uint8_t* firstChroma;
    uint8_t* secondChroma;
};

// Operations on packed 4:2:2. Split rows are blended by the operations of planes.
struct Packed422Ops {
    // Splits groups: two luma bytes and two chroma bytes each.
    void (*Unpack)(const PackedSamples& dst, const uint8_t* src, int32_t groups,
                   const PackedLayout& layout);

    // Packs an even number of pixels that each have their own chroma. The chroma of each two is
    // averaged, rounded down or up.
    using Pack = void (*)(uint8_t* dst, const PackedSamples& src, int32_t pixels,
                          const PackedLayout& layout);
    Pack PackDown;
    Pack PackUp;

    // Blends two split rows and packs the result, an even number of pixels.
    using BlendPack = void (*)(uint8_t* dst, const PackedSamples& a, const PackedSamples& b,
                               int32_t weight, int32_t pixels, const PackedLayout& layout);
    BlendPack BlendPackDown;
    BlendPack BlendPackUp;

    // Dims the first of every three samples (DimSample).
    void (*DimThirds)(uint8_t* samples, int32_t count);

    // Makes a plan for NearestColumns. Rows consist of whole groups.
    void (*PlanNearest)(ColumnPlan& plan, const ColumnRun& columns, const PackedLayout& layout,
                        int32_t rowBytes);

    // Copies pixels of a packed row. The chroma of each two is averaged, rounded down. An odd last
    // column is repeated.
    void (*NearestColumns)(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan,
                           const PackedLayout& layout);
};

// Columns of packed 4:2:2 that are planned at once, and the bytes of their tables.
inline constexpr int32_t kPackedPlanColumns = 64;
inline constexpr int32_t kPackedPlanBytes = 9 * kPackedPlanColumns;
// Bytes of a row of PackedBlendOps.
constexpr int32_t PackedRowBytes(int32_t pixels) {
    return (pixels + kPackedPlanColumns - 1) / kPackedPlanColumns * kPackedPlanColumns * 3;
}

// Bilinear scaling of packed 4:2:2 without splitting source rows first. Blended rows are in an
// order of the set's own.
struct PackedBlendOps {
    // Makes tables of at most kPackedPlanColumns columns. The indices of `luma` are pixels of a
    // row, those of `chroma` its groups; the row has `rowBytes` bytes, in whole groups. False where
    // the set has no tables for such columns: then rows are split.
    bool (*Plan)(uint8_t* tables, const ColumnRun& luma, const ColumnRun& chroma, int32_t rowBytes);

    // Blends the columns of a packed row. Needs the tables of so many pixels, one after the other.
    void (*BlendColumns)(uint8_t* dst, const uint8_t* row, const uint8_t* tables, int32_t pixels,
                         const PackedLayout& layout);

    // Blends two blended rows and packs the result. The chroma of each two pixels is averaged,
    // rounded down or up.
    using BlendPack = void (*)(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                               int32_t pixels, const PackedLayout& layout);
    BlendPack BlendPackDown;
    BlendPack BlendPackUp;

    // Blends the columns of a packed row and packs the result. Dimmed: the first of every three
    // luma samples is (DimSample), and averages are rounded down.
    using ScaleColumns = void (*)(uint8_t* dst, const uint8_t* row, const uint8_t* tables,
                                  int32_t pixels, const PackedLayout& layout);
    ScaleColumns ScaleColumnsDown;
    ScaleColumns ScaleColumnsUp;
    ScaleColumns ScaleColumnsDimmed;
};

// The operations on every kind of pixel.
struct PixelOpsTable {
    PixelOps plane;  // one byte
    PixelOps rgb24;
    PixelOps rgb555;
    PixelOps rgb565;
};

struct RowOps {
    PixelOpsTable pixels;
    Packed422Ops packed422;
    const PackedBlendOps* packedBlend;  // null where a set splits all rows

    // Copies a row. `dst` must not overlap it.
    void (*CopyRow)(uint8_t* dst, const uint8_t* src, int32_t bytes);

    // Copies whole blocks of eight bytes.
    void (*CopyBlocks)(uint8_t* dst, const uint8_t* src, int32_t blocks);

    // Makes the registers usable for other code. Called once, at the end of a kernel.
    void (*Finish)();
};

// A kind of pixel: its operations in a set.
using PixelKind = PixelOps PixelOpsTable::*;

// The variant in a kernel's name: not the instruction set that runs, but which bytes it gives, and
// the least processor that it needs. Here it only tells the portable kernels from the others: Mmx
// and Sse run on the same operations, those of the widest set that this processor has. What _SSE
// rounds differently is told to its driver as a Rounding.
enum class KernelVariant { Portable, Mmx, Sse };

// What a variant runs on. Portable operations until others are set.
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
extern const RowOps kNeonRowOps;

// The same sets, but long rows are copied by string moves (string_moves.h).
extern const RowOps kSsse3RowOpsWithStringMoves;
extern const RowOps kAvx2RowOpsWithStringMoves;
extern const RowOps kAvx512RowOpsWithStringMoves;

// Calls Finish on every way out of a kernel.
class RowOpsScope {
  public:
    explicit RowOpsScope(KernelVariant variant) : ops_(RowOpsOf(variant)) {}
    ~RowOpsScope() { ops_.Finish(); }
    RowOpsScope(const RowOpsScope&) = delete;
    RowOpsScope& operator=(const RowOpsScope&) = delete;

    const RowOps& operator*() const { return ops_; }
    const RowOps* operator->() const { return &ops_; }
    const PixelOps& Of(PixelKind kind) const { return ops_.pixels.*kind; }

  private:
    const RowOps& ops_;
};

}  // namespace tavo
