// The machine under Linux. Sets the affinity of the calling thread only, which is the one that runs
// the probe. Thread priorities are not changed.

#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <limits>

#include "cpu/machine.h"
#include "cpu/x86_instructions.h"

namespace tavo {
namespace {

constexpr int kMaskBits = std::numeric_limits<uintptr_t>::digits;

class LinuxMachine final : public Machine {
  public:
    bool IsCpuidAvailable() override { return CanChangeIdFlag(); }
    CpuidRegisters Cpuid(uint32_t leaf) override { return ReadCpuid(leaf); }
    uint32_t TimeStamp() override { return ReadTimeStamp(); }
    void ScanBits(int count) override { RunBitScans(count); }

    // In units of 100 ns, like the counter of Windows: rounds are measured in ticks.
    bool CounterFrequency(uint64_t& ticksPerSecond) override {
        ticksPerSecond = 10'000'000;
        timespec time;
        return clock_gettime(CLOCK_MONOTONIC, &time) == 0;
    }

    uint64_t Counter() override {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return static_cast<uint64_t>(time.tv_sec) * 10'000'000 +
               static_cast<uint64_t>(time.tv_nsec) / 100;
    }

    int ProcessorCount() override { return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)); }

    bool GetAffinity(uintptr_t& process, uintptr_t& system) override {
        cpu_set_t set;
        CPU_ZERO(&set);
        if (sched_getaffinity(0, sizeof(set), &set) != 0) return false;
        process = 0;
        for (int bit = 0; bit < kMaskBits; ++bit) {
            if (CPU_ISSET(bit, &set)) process |= uintptr_t{1} << bit;
        }
        const int count = ProcessorCount();
        system = count >= kMaskBits ? ~uintptr_t{0} : (uintptr_t{1} << count) - 1;
        return true;
    }

    bool SetAffinity(uintptr_t process) override {
        cpu_set_t set;
        CPU_ZERO(&set);
        for (int bit = 0; bit < kMaskBits; ++bit) {
            if (process >> bit & 1) CPU_SET(bit, &set);
        }
        return sched_setaffinity(0, sizeof(set), &set) == 0;
    }

    void GiveWay() override { sched_yield(); }

    int ThreadPriority() override { return kPriorityUnknown; }
    bool ChangeThreadPriority(int) override { return false; }
};

constinit LinuxMachine thisMachine;

}  // namespace

Machine& ThisMachine() { return thisMachine; }

}  // namespace tavo
