// The seam between the rules of processor identification and the machine they are applied to: a few
// instructions and a few calls of the operating system, so that recorded processors can stand in.

#pragma once

#include <cstdint>

namespace tavo {

struct CpuidRegisters {
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
};

// No function fails other than by its result, and none throws. An object serves one thread at a
// time; that of ThisMachine has no state, and serves any number.
class Machine {
  public:
    // What ThreadPriority returns when it cannot tell.
    static constexpr int kPriorityUnknown = 0x7fffffff;
    static constexpr int kPriorityTimeCritical = 15;

    virtual bool IsCpuidAvailable() = 0;
    // Only while cpuid is available.
    virtual CpuidRegisters Cpuid(uint32_t leaf) = 0;
    // The low half of the time-stamp counter; only where leaf 1 says that there is one.
    virtual uint32_t TimeStamp() = 0;
    // Finds the highest set bit of 0x80000000 `count` times, from the lowest on.
    virtual void ScanBits(int count) = 0;

    // Ticks per second of Counter; false when there is no such counter.
    virtual bool CounterFrequency(uint64_t& ticksPerSecond) = 0;
    virtual uint64_t Counter() = 0;

    virtual int ProcessorCount() = 0;
    // One bit for each processor that the process may use and that the system has.
    virtual bool GetAffinity(uintptr_t& process, uintptr_t& system) = 0;
    virtual bool SetAffinity(uintptr_t process) = 0;
    // Lets the system move the calling thread to where it may run.
    virtual void GiveWay() = 0;

    // Of the calling thread.
    virtual int ThreadPriority() = 0;
    virtual bool ChangeThreadPriority(int priority) = 0;

  protected:
    ~Machine() = default;
};

// The machine that this code runs on.
Machine& ThisMachine();

}  // namespace tavo
