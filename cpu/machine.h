// What identification needs of the machine: a few instructions and a few system calls. Tests put
// recorded processors in its place.

#pragma once

#include <cstdint>

namespace tavo {

struct CpuidRegisters {
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
};

// Functions fail by their results only. An object serves one thread at a time; that of ThisMachine
// has no state and serves any number.
class Machine {
  public:
    // ThreadPriority returns this when it cannot tell.
    static constexpr int kPriorityUnknown = 0x7fffffff;
    static constexpr int kPriorityTimeCritical = 15;

    virtual bool IsCpuidAvailable() = 0;
    // Only where cpuid is available.
    virtual CpuidRegisters Cpuid(uint32_t leaf) = 0;
    // The low half of the time-stamp counter. Only where leaf 1 has its bit.
    virtual uint32_t TimeStamp() = 0;
    // Scans 0x80000000 for its lowest set bit, `count` times.
    virtual void ScanBits(int count) = 0;

    // Ticks per second of Counter. False if there is no such counter.
    virtual bool CounterFrequency(uint64_t& ticksPerSecond) = 0;
    virtual uint64_t Counter() = 0;

    virtual int ProcessorCount() = 0;
    // A bit for each processor that the process may use, and for each that the system has.
    virtual bool GetAffinity(uintptr_t& process, uintptr_t& system) = 0;
    virtual bool SetAffinity(uintptr_t process) = 0;
    // Lets the system move the calling thread to a processor that it may use.
    virtual void GiveWay() = 0;

    // Of the calling thread.
    virtual int ThreadPriority() = 0;
    virtual bool ChangeThreadPriority(int priority) = 0;

  protected:
    ~Machine() = default;
};

// The machine that this program runs on.
Machine& ThisMachine();

}  // namespace tavo
