// The two figures about the processor that choose the kernels.

#pragma once

#include "cpu/processor_info.h"

namespace tavo {

// 0: no MMX; 1: MMX; 2: SSE; 3: MMX and 3DNow!; 4: MMX and extended 3DNow!. Any thread.
//
// Deliberate: every call identifies the processor anew. That takes about a millisecond, raises the
// priority of the calling thread and moves the whole process between its processors; both are put
// back.
int GetCpuLevel();

// By the clock of the last identification: negative below 400 MHz, otherwise 0 or more; -2 before
// the first one. Any thread.
int CpuSpeedClass();

// The rules for the two.
int CpuLevelOf(const ProcessorInfo& info);
int SpeedClassOf(int clockMhz);

}  // namespace tavo
