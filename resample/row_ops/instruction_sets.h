// The instruction sets that row operations are written for, in one table.

#pragma once

#include <span>

#include "resample/row_ops/row_ops.h"

namespace tavo {

// Those of an architecture stand narrowest first.
enum class InstructionSet { Portable, Mmx, Sse, Ssse3, Avx2, Avx512, Neon };

struct InstructionSetInfo {
    InstructionSet set;
    const char* name;     // as printed: "AVX2"
    const char* key;      // as typed: "avx2"
    int cpuLevel;         // the least processor level (cpu_level.h) that runs it
    bool inMmxRegisters;  // only kernels named for MMX or SSE may run it
    const RowOps& rowOps;
    const RowOps* withStringMoves;  // the same for processors whose string moves are fast, or null
    bool (*canRun)();               // whether this processor has it
};

// Those that are part of the build, narrowest first. Portable is always the first one.
std::span<const InstructionSetInfo> InstructionSets();

// Null for a set that is not part of the build.
const InstructionSetInfo* FindInstructionSet(InstructionSet set);

// As printed; "none" for a set that is not part of the build.
const char* InstructionSetName(InstructionSet set);

// Whether a set is part of the build and this processor can run it.
bool CanRun(InstructionSet set);

// Chooses the row operations of all kernel variants, on a processor that can run them. MMX and SSE
// leave the portable variants as they are. A set that is not part of the build acts like Portable.
// Any thread; kernels in progress go on with the old choice.
void ChooseRowOps(InstructionSet set);

}  // namespace tavo
