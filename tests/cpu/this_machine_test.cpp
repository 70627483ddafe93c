// Identification of the processor that runs the test: what must hold of any, whatever it is.

#include <gtest/gtest.h>
#ifdef _WIN32
#include <windows.h>
#endif

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>
#include <vector>

#include "cpu/cpu_level.h"
#include "cpu/hyper_threading.h"
#include "cpu/processor_speed.h"

namespace tavo::test {
namespace {

[[maybe_unused]] bool HasTimeStamps() { return ThisMachine().Cpuid(1).edx >> 4 & 1; }

#if defined(__i386__) || defined(__x86_64__)
TEST(ThisMachine, IsIdentified) {
    ASSERT_TRUE(IsCpuidAvailable());
    EXPECT_EQ(IdentifyProcessor(), 0);
    const ProcessorInfo info = GetProcessorInfo();
    EXPECT_TRUE(info.identified);
    EXPECT_EQ(strlen(info.vendor), 12u);
    EXPECT_STRNE(info.vendor, "------------");
    EXPECT_GE(info.family, 3);
    EXPECT_NE(info.name[0], ' ');
    EXPECT_LE(info.hyperThreadingStatus, 4);
    EXPECT_GE(info.logicalPerPackage, info.hyperThreadingStatus == 0 ? 0 : 1);
    printf("%s, %s, family %d, model %d, %d MHz, %d logical, %d physical: %s\n", info.vendor,
           info.name, info.family, info.model, info.clockMhz, info.logicalPerPackage,
           info.physicalCount, HyperThreadingText(info.hyperThreadingStatus));
}

TEST(ThisMachine, HasAClock) {
    if (!HasTimeStamps()) GTEST_SKIP() << "no time-stamp counter";
    SpeedMeasurement speed = {};
    // A measurement is worth nothing if another program gets the processor in the middle of it.
    for (int trial = 0; trial < 20 && (speed.rawMhz <= 10 || speed.rawMhz >= 20000); ++trial) {
        speed = MeasureProcessorSpeed(0);
    }
    EXPECT_GT(speed.cycles, 0u);
    EXPECT_GT(speed.microseconds, 0u);
    EXPECT_EQ(speed.rawMhz > 10 && speed.rawMhz < 20000, true) << speed.rawMhz;
    EXPECT_LE(speed.normalisedMhz - speed.rawMhz, 1u);
}

// Bit scans of this processor run and take time, however many cycles they are said to last.
TEST(ThisMachine, ScansBits) {
    const SpeedMeasurement speed = MeasureProcessorSpeed(100);
    EXPECT_EQ(speed.cycles, 400000u);
    EXPECT_GT(speed.rawMhz, 0u);
}
#endif

TEST(ThisMachine, HasACounter) {
    uint64_t frequency = 0;
    ASSERT_TRUE(ThisMachine().CounterFrequency(frequency));
    EXPECT_GT(frequency, 1000u);
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    const auto start = Clock::now();
    const uint64_t before = ThisMachine().Counter();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double seconds =
        static_cast<double>(ThisMachine().Counter() - before) / static_cast<double>(frequency);
    EXPECT_GT(seconds, 0.015);
    EXPECT_LT(seconds, Seconds(Clock::now() - start).count() * 1.1 + 0.1);
}

TEST(ThisMachine, KeepsItsAffinityAndPriority) {
    Machine& machine = ThisMachine();
    uintptr_t before = 0, after = 0, system = 0;
    ASSERT_TRUE(machine.GetAffinity(before, system));
    const int priority = machine.ThreadPriority();
    GetCpuLevel();
    ASSERT_TRUE(machine.GetAffinity(after, system));
    EXPECT_EQ(after, before);
    EXPECT_EQ(machine.ThreadPriority(), priority);
    EXPECT_GE(machine.ProcessorCount(), 1);
}

TEST(ThisMachine, ChangesItsAffinityAndBack) {
    Machine& machine = ThisMachine();
    uintptr_t before = 0, now = 0, system = 0;
    ASSERT_TRUE(machine.GetAffinity(before, system));
    ASSERT_NE(before, 0u);
    const uintptr_t lowest = before & (~before + 1);
    EXPECT_TRUE(machine.SetAffinity(lowest));
    machine.GiveWay();
    EXPECT_TRUE(machine.GetAffinity(now, system));
    EXPECT_TRUE(machine.SetAffinity(before));
    EXPECT_EQ(now, lowest);
    EXPECT_FALSE(machine.SetAffinity(0));
    EXPECT_TRUE(machine.GetAffinity(now, system));
    EXPECT_EQ(now, before);
}

TEST(ThisMachine, ChangesItsPriorityAndBack) {
    Machine& machine = ThisMachine();
    const int before = machine.ThreadPriority();
    if (before == Machine::kPriorityUnknown) GTEST_SKIP() << "priorities are left alone";
    EXPECT_TRUE(machine.ChangeThreadPriority(Machine::kPriorityTimeCritical));
    const int during = machine.ThreadPriority();
    EXPECT_TRUE(machine.ChangeThreadPriority(before));
    EXPECT_EQ(during, Machine::kPriorityTimeCritical);
    EXPECT_EQ(machine.ThreadPriority(), before);
}

// Levels that do not waver, a whole record at every moment, and affinity as it was at the end.
TEST(ThisMachine, IsIdentifiedByManyThreadsAtOnce) {
    Machine& machine = ThisMachine();
    uintptr_t before = 0, after = 0, system = 0;
    ASSERT_TRUE(machine.GetAffinity(before, system));
    const int level = GetCpuLevel();
    const ProcessorInfo expected = GetProcessorInfo();
    std::atomic<int> faults{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i) {
                if (GetCpuLevel() != level) ++faults;
                const ProcessorInfo info = GetProcessorInfo();
                if (strcmp(info.name, expected.name) != 0 || info.family != expected.family ||
                    info.hyperThreadingStatus != expected.hyperThreadingStatus ||
                    info.physicalCount != expected.physicalCount ||
                    info.identified != expected.identified) {
                    ++faults;
                }
                const int speedClass = CpuSpeedClass();
                if (speedClass < -2 || speedClass > 2) ++faults;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(faults, 0);
    ASSERT_TRUE(machine.GetAffinity(after, system));
    EXPECT_EQ(after, before);
}

// What this program has had of the processors so far, in seconds; waiting does not count.
double ProcessorSeconds() {
#ifdef _WIN32
    FILETIME created, ended, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user)) return 0;
    const auto seconds = [](FILETIME time) {
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
    };
    return seconds(kernel) + seconds(user);
#else
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
#endif
}

TEST(ThisMachine, IsIdentifiedInLittleTime) {
    constexpr int kRuns = 50;
    const double start = ProcessorSeconds();
    for (int i = 0; i < kRuns; ++i) GetCpuLevel();
    const double average = (ProcessorSeconds() - start) / kRuns;
    printf("%.0f microseconds of the processor on average\n", average * 1e6);
    EXPECT_LT(average, 0.1);
}

}  // namespace
}  // namespace tavo::test
