// Machines whose clock is to be measured.

#pragma once

#include <gtest/gtest.h>

#include "cpu/processor_speed.h"
#include "tests/cpu/fake_machine.h"

namespace tavo::test {

inline FakeMachine MachineWithTimeStamps(double mhz) {
    FakeMachine machine;
    machine.SetNumbers(6, 8, 3);
    machine.leaves[1].edx = kTimeStampBit;
    machine.cyclesPerTick = mhz / 10;
    return machine;
}

inline void ExpectZeros(const SpeedMeasurement& speed) {
    EXPECT_EQ(speed.cycles, 0u);
    EXPECT_EQ(speed.microseconds, 0u);
    EXPECT_EQ(speed.rawMhz, 0u);
    EXPECT_EQ(speed.normalisedMhz, 0u);
}

}  // namespace tavo::test
