// The dispatch table once more: which kernel has to stand in which slot and which bytes it has to
// write.

#pragma once

#include "resample/scale_kernel.h"
#include "tests/kernel_check/oracle/oracles.h"

namespace tavo::check {

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

    const ExpectedKernel& InSlot(int slot) const;
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

    const ExpectedCopy& InSlot(int slot) const;
};

extern const CopyRow kCopyRows[3];

// The slot from 3 to 8 whose kernel an automatic slot of a row of scalers holds at a processor
// level and speed class; other slots are their own. In copy rows only slot 0 depends on the level.
int ScaleSource(int row, int slot, int level, int speedClass);
int CopySource(int slot, int level);

}  // namespace tavo::check
