// The dispatch table as it has to be, laid down a second time: which kernel stands in which slot at
// which processor level.

#pragma once

#include "resample/kernel_table.h"

namespace tavo::test {

// The constant kernels of one row of scalers. Nearest neighbour for SSE is always that for MMX.
struct ExpectedScaleRow {
    int row;
    ScaleKernel nearest;
    ScaleKernel nearestMmx;
    ScaleKernel bilinear;
    ScaleKernel bilinearMmx;
    ScaleKernel bilinearSse;
};

struct ExpectedCopyRow {
    int row;
    CopyKernel portable;
    CopyKernel mmx;
};

extern const ExpectedScaleRow kExpectedScaleRows[30];
extern const ExpectedCopyRow kExpectedCopyRows[3];

// Slots 3 to 8.
ScaleKernel ExpectedStatic(const ExpectedScaleRow& row, int slot);
// Slots 1 to 8.
CopyKernel ExpectedStatic(const ExpectedCopyRow& row, int slot);

// The slot whose kernel an automatic slot (0 to 2) of a row of scalers holds.
int ExpectedSource(int row, int automaticSlot, int level, int speedClass);

// Whether a slot's kernel interpolates.
bool SlotIsBilinear(int slot, int speedClass);

}  // namespace tavo::test
