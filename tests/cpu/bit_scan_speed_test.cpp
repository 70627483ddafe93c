// The measurement of the clock by bit scans, for processors without time stamps and for callers
// that ask for it.

#include <gtest/gtest.h>

#include "cpu/processor_speed.h"
#include "tests/cpu/speed_machine.h"

namespace tavo::test {
namespace {

FakeMachine MachineWithoutTimeStamps(int family) {
    FakeMachine machine;
    machine.SetNumbers(family, 1, 1);
    machine.frequency = 1'000'000;
    machine.ticksPerScanLoop = 999;  // with the look after it 1000 microseconds
    return machine;
}

TEST(ProcessorSpeed, IsMeasuredByBitScansWithoutTimeStamps) {
    constexpr uint32_t kCycles[] = {0,      0,      0,      460000, 188000, 172000, 152000, 152000,
                                    152000, 152000, 152000, 152000, 4000,   4000,   4000,   4000};
    for (int family = 0; family < 16; ++family) {
        SCOPED_TRACE(family);
        FakeMachine machine = MachineWithoutTimeStamps(family);
        const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
        if (family < 3) {
            ExpectZeros(speed);
            EXPECT_EQ(machine.scans, 0);
            continue;
        }
        EXPECT_EQ(machine.scans, 10 * 4000);
        EXPECT_EQ(speed.cycles, kCycles[family]);
        EXPECT_EQ(speed.microseconds, 1000u);
        EXPECT_EQ(speed.rawMhz, kCycles[family] / 1000);
        EXPECT_EQ(speed.normalisedMhz, kCycles[family] / 1000);
    }
}

TEST(ProcessorSpeed, TakesTheCallersClocksForABitScan) {
    for (int clocks : {1, 38, 150}) {
        FakeMachine machine = MachineWithTimeStamps(500);
        machine.frequency = 1'000'000;
        machine.ticksPerScanLoop = 999;
        const SpeedMeasurement speed = MeasureProcessorSpeed(clocks, machine);
        EXPECT_EQ(machine.scans, 10 * 4000);
        EXPECT_EQ(speed.cycles, static_cast<uint32_t>(clocks) * 4000);
        EXPECT_EQ(speed.rawMhz, static_cast<uint32_t>(clocks) * 4);
    }
    FakeMachine old = MachineWithoutTimeStamps(2);
    ExpectZeros(MeasureProcessorSpeed(38, old));
}

TEST(ProcessorSpeed, KnowsNoOtherWay) {
    for (int clocks : {-1, 151, 2147483647, -2147483647 - 1}) {
        FakeMachine machine = MachineWithTimeStamps(500);
        ExpectZeros(MeasureProcessorSpeed(clocks, machine));
        EXPECT_EQ(machine.counterCalls, 0);
    }
}

TEST(ProcessorSpeed, WithoutTimeStampsOtherClocksChooseNoLoop) {
    FakeMachine machine = MachineWithoutTimeStamps(4);
    EXPECT_EQ(MeasureProcessorSpeed(151, machine).cycles, 0u);
    EXPECT_EQ(MeasureProcessorSpeed(-1, machine).cycles, 188000u);
}

TEST(ProcessorSpeed, OfBitScansTakesTheShortestTime) {
    FakeMachine machine = MachineWithoutTimeStamps(6);
    int reads = 0;
    const uint64_t kTimes[] = {900, 800, 760, 1000, 761, 999, 2000, 770, 4000, 800};
    uint64_t now = 0xfffffc00;  // the low half wraps
    machine.counterOf = [&](uint64_t) {
        if (reads % 2 == 1) now += kTimes[reads / 2];
        ++reads;
        return now;
    };
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(reads, 20);
    EXPECT_EQ(speed.microseconds, 760u);
    EXPECT_EQ(speed.rawMhz, 200u);
}

TEST(ProcessorSpeed, OfBitScansIsRoundedAgainstTheFrequency) {
    struct Case {
        uint64_t frequency, ticks;
        uint32_t microseconds, raw, normalised;
    };
    constexpr Case kCases[] = {
        {1000, 1, 1000, 152, 152},  // nothing is left of 1000
        {1'000'000, 760, 760, 200, 200},
        {1'000'000, 500'000, 500'000, 0, 0},  // half is not more than half
        {1'000'000, 500'001, 500'002, 0, 0},
        {1'000'000, 96, 96, 1583, 1583},  // 32 of 96
        {1'000'000, 90, 90, 1688, 1689},  // 80 of 90
        {100, 9, 90'000, 1, 2},
        {1'193'180, 900, 754, 201, 202},
    };
    for (const Case& c : kCases) {
        FakeMachine machine = MachineWithoutTimeStamps(6);
        machine.frequency = c.frequency;
        machine.ticksPerScanLoop = c.ticks - 1;
        const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
        EXPECT_EQ(speed.microseconds, c.microseconds) << c.ticks;
        EXPECT_EQ(speed.rawMhz, c.raw) << c.ticks;
        EXPECT_EQ(speed.normalisedMhz, c.normalised) << c.ticks;
    }
}

TEST(ProcessorSpeed, OfBitScansIsZeroWithoutACounter) {
    FakeMachine machine = MachineWithoutTimeStamps(6);
    machine.hasFrequency = false;
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.scans, 0);

    FakeMachine coarse = MachineWithoutTimeStamps(6);
    coarse.frequency = 0x100000003;  // of which only the low half counts
    ExpectZeros(MeasureProcessorSpeed(0, coarse));

    FakeMachine still = MachineWithoutTimeStamps(6);
    still.ticksPerScanLoop = still.ticksPerRead = 0;
    ExpectZeros(MeasureProcessorSpeed(0, still));

    FakeMachine backwards = MachineWithoutTimeStamps(6);
    backwards.counterOf = [](uint64_t ticks) { return 1'000'000'000 - ticks; };
    MeasureProcessorSpeed(0, backwards);
}

}  // namespace
}  // namespace tavo::test
