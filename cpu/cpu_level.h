// What the processor offers, reduced to the two figures that choose the kernels.

#pragma once

#include "cpu/processor_info.h"

namespace tavo {

// 0: no MMX; 1: MMX; 2: SSE; 3: MMX and 3DNow!; 4: MMX and extended 3DNow!. Identifies the
// processor anew each time, which takes about a millisecond. Any thread.
int GetCpuLevel();

// Of the processor as last identified, -2 before that. Negative for one below 400 MHz, otherwise 0
// or more. Any thread.
int CpuSpeedClass();

// The rules behind the two.
int CpuLevelOf(const ProcessorInfo& info);
int SpeedClassOf(int clockMhz);

}  // namespace tavo
