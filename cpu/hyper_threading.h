// Counting logical and physical processors, by the rules of the first processors with
// HyperThreading.

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

// An English sentence without a full stop. An unknown code has the text of the last one.
const char* HyperThreadingText(uint8_t status);

bool IsCpuidAvailable(Machine& machine = ThisMachine());

// The feature bit, 0x10000000, or 0. 0 where there is no cpuid.
uint32_t IsHyperThreadingSupported(Machine& machine = ThisMachine());

// 1 without HyperThreading; 0 is possible with it.
uint8_t GetLogicalProcessorsPerPackage(Machine& machine = ThisMachine());

// Of the processor that the calling thread is on; 0xff without HyperThreading.
uint8_t GetInitialApicId(Machine& machine = ThisMachine());

// Returns a HyperThreadingStatus. physicalCount is -1 when the process may not use all processors,
// or when that is unknown. Not thread-safe.
//
// Deliberate: moves the whole process from processor to processor, and back before it returns.
uint8_t CountProcessors(uint8_t& logicalPerPackage, int& physicalCount,
                        Machine& machine = ThisMachine());

}  // namespace tavo
