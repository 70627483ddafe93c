// What is known about the processor, and how it is found out. Of all this only the level and the
// clock choose kernels; the rest is for display and diagnosis.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

namespace tavo {

constexpr int kVendorSize = 13;
constexpr int kNameSize = 49;

// As constructed: no processor identified yet.
struct ProcessorInfo {
    char vendor[kVendorSize] = "------------";
    int family = -1;  // of Intel with the extended family added, of others the base family
    int model = -1;   // likewise
    int stepping = -1;
    int processorType = -1;  // of Intel processors without brand string; of all others 0
    bool hasMmx = false;
    bool hasSse = false;
    bool hasSse2 = false;
    bool has3DNow = false;     // never on Intel
    bool hasExt3DNow = false;  // likewise
    bool hasSse3 = false;      // only looked for on Intel
    bool hasMonitor = false;   // likewise
    char name[kNameSize] = "";
    int clockMhz = 0;  // truncated; 0 when it could not be measured
    uint8_t logicalPerPackage = 0;
    int physicalCount = 0;  // -1 when it could not be told
    uint8_t hyperThreadingStatus = 0;
    bool identified = false;
};

// Fills `info` for the machine, which takes about a millisecond: the speed is measured and the
// HyperThreading probe is made each time. Returns 0, or -1 without a change when there is no cpuid.
// One call at a time.
int IdentifyProcessor(ProcessorInfo& info, Machine& machine);

// The same for the process-wide record. Any thread; callers wait for each other.
int IdentifyProcessor();

// A copy of the process-wide record: of the last completed identification, never of half a one.
// Any thread, also during an identification.
ProcessorInfo GetProcessorInfo();

// Twelve characters of leaf 0 and a terminator.
void ReadVendor(Machine& machine, char (&vendor)[kVendorSize]);
bool IsIntel(const char* vendor);

}  // namespace tavo
