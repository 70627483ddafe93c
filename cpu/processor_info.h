// What is known about the processor. Only the level and the clock choose kernels; the rest is for
// display and diagnosis.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

namespace tavo {

constexpr int kVendorSize = 13;
constexpr int kNameSize = 49;

// Until the first identification, as constructed.
struct ProcessorInfo {
    char vendor[kVendorSize] = "------------";
    int family = -1;  // with the extended family on Intel, without it elsewhere
    int model = -1;   // with the extended model on Intel
    int stepping = -1;
    int processorType = -1;  // of Intel without a brand string; 0 elsewhere
    bool hasMmx = false;
    bool hasSse = false;
    bool hasSse2 = false;
    bool has3DNow = false;     // not looked for on Intel
    bool hasExt3DNow = false;  // not looked for on Intel
    bool hasSse3 = false;      // looked for on Intel only
    bool hasMonitor = false;   // looked for on Intel only
    char name[kNameSize] = "";
    int clockMhz = 0;  // truncated; 0 when unknown
    uint8_t logicalPerPackage = 0;
    int physicalCount = 0;  // -1 when unknown
    uint8_t hyperThreadingStatus = 0;
    bool identified = false;
};

// Fills `info` for the machine, in about a millisecond. Returns 0, or -1 without any change if
// there is no cpuid. Not thread-safe.
//
// Deliberate: measures the speed and makes the HyperThreading probe each time, with their changes
// of priority and affinity.
int IdentifyProcessor(ProcessorInfo& info, Machine& machine);

// The same for the record of the process. Any thread; callers wait for each other.
int IdentifyProcessor();

// A copy of the record of the process, as the last identification left it. Any thread, also during
// an identification.
ProcessorInfo GetProcessorInfo();

// The twelve characters of leaf 0, and a terminator.
void ReadVendor(Machine& machine, char (&vendor)[kVendorSize]);
bool IsIntel(const char* vendor);

}  // namespace tavo
