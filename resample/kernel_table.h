// The dispatch table: one row for each pair of pixel format family and axis mode, one slot for each
// method. The filter picks a row by what changes, and a slot by what the user asked for.

#pragma once

#include <cstdint>

#include "resample/row_ops/instruction_sets.h"
#include "resample/scale_kernel.h"

namespace tavo {

constexpr int kKernelRows = 33;
constexpr int kKernelSlots = 9;

// The rows in order. H720 and H640 serve a width of 720 or 640 scaled to 480.
enum KernelRow : int32_t {
    RowCopyPlanar,
    RowCopyPacked422,
    RowCopyRgb,
    RowVerticalUyvy,
    RowVerticalYuy2,
    RowVerticalRgb565,
    RowVerticalRgb555,
    RowVerticalRgb24,
    RowVerticalPlanar,
    RowH720Uyvy,
    RowH640Uyvy,
    RowHorizontalUyvy,
    RowH720Yuy2,
    RowH640Yuy2,
    RowHorizontalYuy2,
    RowH720Rgb565,
    RowH640Rgb565,
    RowHorizontalRgb565,
    RowH720Rgb555,
    RowH640Rgb555,
    RowHorizontalRgb555,
    RowH720Rgb24,
    RowH640Rgb24,
    RowHorizontalRgb24,
    RowH720Planar,
    RowH640Planar,
    RowHorizontalPlanar,
    RowBothUyvy,
    RowBothYuy2,
    RowBothRgb565,
    RowBothRgb555,
    RowBothRgb24,
    RowBothPlanar,
};
constexpr int kFirstScaleRow = RowVerticalUyvy;
static_assert(RowBothPlanar == kKernelRows - 1);

// The slots in order; the first three are filled from the processor at start-up.
enum KernelSlot : int32_t {
    SlotAuto,
    SlotNearestAuto,
    SlotBilinearAuto,
    SlotNearest,
    SlotNearestMmx,
    SlotNearestSse,
    SlotBilinear,
    SlotBilinearMmx,
    SlotBilinearSse,
};
static_assert(SlotBilinearSse == kKernelSlots - 1);

// One entry of the table: rows 0 to 2 hold copies, all other rows scalers. The automatic
// slots are null until the first fill.
union KernelEntry {
    ScaleKernel scale;
    CopyKernel copy;

    constexpr KernelEntry() : scale(nullptr) {}
    constexpr KernelEntry(ScaleKernel kernel) : scale(kernel) {}
    constexpr KernelEntry(CopyKernel kernel) : copy(kernel) {}
};

// Slots 3 to 8 of every row (1 to 8 of the copy rows) are constant and present from the start; the
// others have meaning after the first fill. Process-wide; only read while frames are processed.
extern KernelEntry KernelTable[kKernelRows][kKernelSlots];

// The kernel that stands in the table. Code that scales calls a function of this type, so that a
// test can give it other kernels and leave the table alone. Any thread.
using KernelSelector = KernelEntry (*)(int32_t row, int32_t slot);
KernelEntry SelectKernel(int32_t row, int32_t slot);

// Fills the automatic slots for the processor of this machine, and chooses the row operations. Any
// thread: every call writes the same values.
void FillKernelTable();

// The same for a given processor level and speed class.
void FillKernelTable(int cpuLevel, int speedClass);

// The set that FillKernelTable chooses: the widest that this processor can run. A level without SSE
// is given no more than it has.
InstructionSet WidestSet(int cpuLevel);

// How many bytes a copy reads past the end of the source picture and writes past the end of the
// destination picture.
int32_t CopySpill(CopyKernel kernel, int32_t width, int32_t bitsPerPixel);

// How many bytes a scaler writes past the end of a destination picture whose rows have no padding.
// No scaler reads past the source.
int32_t ScaleSpill(ScaleKernel kernel);

// The slot that a VantrelScaleMethod selects; SlotAuto for codes that are none.
int32_t MethodToSlot(int32_t scaleMethod);

}  // namespace tavo
