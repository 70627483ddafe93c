// What the dispatch table has to hold: which kernel stands in which slot at which processor level,
// and which bytes it writes. Written down here, not read from the table.

#pragma once

#include "resample/scale_kernel.h"
#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {

enum class Axis { Copy, Vertical, H720, H640, Horizontal, Both };

const char* NameOf(Format format);
const char* NameOf(Axis axis);

struct ExpectedKernel {
    const char* name;
    ScaleKernel kernel;
    Oracle oracle;
};

// The constant kernels of one row of scalers, by slot: 3, 4 and 5, 6, 7, 8.
struct ScaleRow {
    int row;
    Format format;
    Axis axis;
    ExpectedKernel nearest;
    ExpectedKernel nearestMmx;
    ExpectedKernel bilinear;
    ExpectedKernel bilinearMmx;
    ExpectedKernel bilinearSse;

    const ExpectedKernel& InConstantSlot(int slot) const;  // 3 to 8
    const ExpectedKernel& InSlot(int slot, int level, int speedClass) const;
};

extern const ScaleRow kScaleRows[30];

struct ExpectedCopy {
    const char* name;
    CopyKernel kernel;
    Oracle oracle;
};

// A copy row serves several formats.
struct CopyRow {
    int row;
    Format formats[3];
    ExpectedCopy portable;
    ExpectedCopy mmx;

    const ExpectedCopy& InConstantSlot(int slot) const;  // 1 to 8
    const ExpectedCopy& InSlot(int slot, int level) const;
};

extern const CopyRow kCopyRows[3];

}  // namespace tavo::test
