// The machine under Windows.

#include <windows.h>

#include "cpu/machine.h"
#include "cpu/mutex.h"
#include "cpu/x86_instructions.h"

namespace tavo {
namespace {

static_assert(Machine::kPriorityUnknown == THREAD_PRIORITY_ERROR_RETURN);
static_assert(Machine::kPriorityTimeCritical == THREAD_PRIORITY_TIME_CRITICAL);

class WindowsMachine final : public Machine {
  public:
    bool IsCpuidAvailable() override { return CanChangeIdFlag(); }
    CpuidRegisters Cpuid(uint32_t leaf) override { return ReadCpuid(leaf); }
    uint32_t TimeStamp() override { return ReadTimeStamp(); }
    void ScanBits(int count) override { RunBitScans(count); }

    bool CounterFrequency(uint64_t& ticksPerSecond) override {
        LARGE_INTEGER frequency{};
        if (!QueryPerformanceFrequency(&frequency)) return false;
        ticksPerSecond = static_cast<uint64_t>(frequency.QuadPart);
        return true;
    }

    uint64_t Counter() override {
        LARGE_INTEGER ticks{};
        QueryPerformanceCounter(&ticks);
        return static_cast<uint64_t>(ticks.QuadPart);
    }

    int ProcessorCount() override {
        SYSTEM_INFO info{};
        GetSystemInfo(&info);
        return static_cast<int>(info.dwNumberOfProcessors);
    }

    bool GetAffinity(uintptr_t& process, uintptr_t& system) override {
        DWORD_PTR processMask = 0, systemMask = 0;
        if (!GetProcessAffinityMask(GetCurrentProcess(), &processMask, &systemMask)) return false;
        process = processMask;
        system = systemMask;
        return true;
    }

    bool SetAffinity(uintptr_t process) override {
        return SetProcessAffinityMask(GetCurrentProcess(), process) != 0;
    }

    void GiveWay() override { Sleep(0); }

    int ThreadPriority() override { return GetThreadPriority(GetCurrentThread()); }

    bool ChangeThreadPriority(int priority) override {
        return SetThreadPriority(GetCurrentThread(), priority) != 0;
    }
};

constinit WindowsMachine thisMachine;

}  // namespace

Machine& ThisMachine() { return thisMachine; }

static_assert(sizeof(SRWLOCK) == sizeof(void*));

void Mutex::Lock() { AcquireSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&state_)); }
void Mutex::Unlock() { ReleaseSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&state_)); }

}  // namespace tavo
