// How many logical and physical processors there are, as first-generation HyperThreading tells it.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

namespace tavo {

enum HyperThreadingStatus : uint8_t {
    HyperThreadingNotCapable,
    HyperThreadingEnabled,
    HyperThreadingDisabled,
    HyperThreadingNotEnabled,
    HyperThreadingNotDetected,
};

// An English sentence without a full stop; of any other code than the five that of the last.
const char* HyperThreadingText(uint8_t status);

bool IsCpuidAvailable(Machine& machine = ThisMachine());

// The feature bit itself, 0x10000000, or 0. A processor without cpuid does not support it.
uint32_t IsHyperThreadingSupported(Machine& machine = ThisMachine());

// 1 without HyperThreading; 0 is possible with it.
uint8_t GetLogicalProcessorsPerPackage(Machine& machine = ThisMachine());

// Of the processor that the calling thread happens to run on; 0xff without HyperThreading.
uint8_t GetInitialApicId(Machine& machine = ThisMachine());

// Returns a HyperThreadingStatus. physicalCount is -1 when the process may not use all processors,
// or when nobody can say which ones it may. Moves the whole process between its processors, and
// back before it returns: one call at a time.
uint8_t CountProcessors(uint8_t& logicalPerPackage, int& physicalCount,
                        Machine& machine = ThisMachine());

}  // namespace tavo
