// The measurement of the clock by time stamps, on machines whose clocks are known and on broken
// ones.

#include "cpu/processor_speed.h"

#include <gtest/gtest.h>

#include "tests/cpu/speed_machine.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

TEST(ProcessorSpeed, IsMeasuredInThreeRounds) {
    FakeMachine machine = MachineWithTimeStamps(500);
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(speed.cycles, 150000u);
    EXPECT_EQ(speed.microseconds, 300u);
    EXPECT_EQ(speed.rawMhz, 500u);
    EXPECT_EQ(speed.normalisedMhz, 500u);
    // Each round: one look, 50 ticks of lead, 1000 ticks.
    EXPECT_EQ(machine.counterCalls, 3 * (1 + 50 + 1000));
}

// A counter that moves in steps: the lead ends at 51, the round 1020 ticks on.
TEST(ProcessorSpeed, CountsTheTicksThatWerePassed) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.ticksPerRead = 51;
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(machine.counterCalls, 3 * (1 + 1 + 20));
    EXPECT_EQ(speed.microseconds, 306u);
    EXPECT_EQ(speed.cycles, 153000u);
}

TEST(ProcessorSpeed, IsRoundedFromSixOn) {
    struct Case {
        int hundredths;  // of a MHz
        uint32_t raw, normalised;
    };
    constexpr Case kCases[] = {
        {50000, 500, 500},    {50050, 500, 500}, {50054, 500, 500}, {50055, 500, 500},
        {50056, 500, 501},    {50060, 500, 501}, {50065, 500, 501}, {50095, 500, 501},
        {50096, 500, 501},    {50099, 500, 501}, {50006, 500, 500}, {239956, 2399, 2400},
        {239955, 2399, 2399},
    };
    for (const Case& c : kCases) {
        // A round of 1000 ticks lasts 1000 microseconds; half a cycle keeps the quotient off the
        // border between two hundredths, where doubles may fall to either side.
        FakeMachine machine = MachineWithTimeStamps(0);
        machine.frequency = 1'000'000;
        machine.stampOf = [&](uint64_t ticks) {
            return static_cast<uint32_t>((ticks * (uint64_t(c.hundredths) * 2 + 1)) / 200);
        };
        const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
        EXPECT_EQ(speed.rawMhz, c.raw) << c.hundredths;
        EXPECT_EQ(speed.normalisedMhz, c.normalised) << c.hundredths;
    }
}

// Cycles of the rounds as given, the last for all that follow.
class RoundsMachine : public FakeMachine {
  public:
    explicit RoundsMachine(std::vector<uint32_t> cyclesOfRounds) : cycles_(cyclesOfRounds) {
        SetNumbers(6, 8, 3);
        leaves[1].edx = kTimeStampBit;
        frequency = 1'000'000;
        ticksPerRead = 1000;  // three looks a round: from, start, end
        counterOf = [this](uint64_t ticks) {
            if (counterCalls % 3 == 0) {
                stamp_ += cycles_[std::min(rounds, cycles_.size() - 1)];
                ++rounds;
            }
            return ticks;
        };
        stampOf = [this](uint64_t) { return stamp_; };
    }
    size_t rounds = 0;

  private:
    const std::vector<uint32_t> cycles_;
    uint32_t stamp_ = 0xfff00000;  // wraps in between
};

TEST(ProcessorSpeed, RoundsGoOnUntilThreeAgree) {
    struct Case {
        std::vector<uint32_t> mhz;
        size_t rounds;
    };
    const Case kCases[] = {
        {{500, 500, 500}, 3}, {{500, 501, 502}, 3},  // within one of 501
        {{500, 500, 502}, 5},                        // 4/3 apart from the mean, and again
        {{500, 500, 501}, 3}, {{100, 500, 501, 502}, 4}, {{900, 100, 500, 700, 700, 700}, 6},
        {{0, 0, 0}, 3},
    };
    for (const Case& c : kCases) {
        std::vector<uint32_t> cycles;
        for (uint32_t mhz : c.mhz) cycles.push_back(mhz * 1000);
        RoundsMachine machine(cycles);
        const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
        EXPECT_EQ(machine.rounds, c.rounds) << c.mhz[0] << " " << c.mhz[1] << " " << c.mhz[2];
        uint64_t total = 0;
        for (size_t i = 0; i < c.rounds; ++i) total += cycles[std::min(i, cycles.size() - 1)];
        EXPECT_EQ(speed.cycles, total);
        EXPECT_EQ(speed.microseconds, c.rounds * 1000);
        EXPECT_EQ(speed.rawMhz, total / (c.rounds * 1000));
    }
}

TEST(ProcessorSpeed, RoundsEndAtTwenty) {
    std::vector<uint32_t> cycles;
    for (uint32_t i = 0; i < 40; ++i) cycles.push_back(i % 2 ? 700000 : 500000);
    RoundsMachine machine(cycles);
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(machine.rounds, 20u);
    EXPECT_EQ(speed.microseconds, 20000u);
    EXPECT_EQ(speed.rawMhz, 600u);
    EXPECT_EQ(machine.priorities.size(), 40u);
}

TEST(ProcessorSpeed, RaisesThePriorityInEachRoundAndPutsItBack) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.priority = -2;
    MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(machine.priorities, (std::vector<int>{15, -2, 15, -2, 15, -2}));
    EXPECT_EQ(machine.priority, -2);
}

TEST(ProcessorSpeed, LeavesAPriorityThatItCannotRead) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.priority = Machine::kPriorityUnknown;
    EXPECT_EQ(MeasureProcessorSpeed(0, machine).rawMhz, 500u);
    EXPECT_TRUE(machine.priorities.empty());
}

TEST(ProcessorSpeed, IsMeasuredAtThePriorityThatThereIs) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.refusesPriorities = true;
    EXPECT_EQ(MeasureProcessorSpeed(0, machine).rawMhz, 500u);
    EXPECT_EQ(machine.priority, 7);
}

TEST(ProcessorSpeed, IsZeroWithoutACounter) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.hasFrequency = false;
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.counterCalls, 0);
    for (uint64_t frequency : {0, 1, 9}) {
        FakeMachine slow = MachineWithTimeStamps(500);
        slow.frequency = frequency;
        ExpectZeros(MeasureProcessorSpeed(0, slow));
    }
}

TEST(ProcessorSpeed, IsZeroWhenTheCounterStandsStill) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.ticksPerRead = 0;
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.priority, 7);
    EXPECT_EQ(machine.priorities, (std::vector<int>{15, 7}));
}

TEST(ProcessorSpeed, IsZeroWhenTheCounterStopsInARound) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.counterOf = [](uint64_t ticks) { return ticks < 1500 ? ticks : 1500; };
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.priority, 7);
    EXPECT_EQ(machine.priorities.size(), 4u);
}

// Less and less: its low half seems to have advanced by a lot.
TEST(ProcessorSpeed, IsZeroWhenTheCounterGoesBack) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.counterOf = [](uint64_t ticks) { return 1'000'000'000 - ticks; };
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.priority, 7);
}

TEST(ProcessorSpeed, EndsWhenTheCounterIsRandom) {
    for (uint64_t seed = 1; seed <= 200; ++seed) {
        FakeMachine machine = MachineWithTimeStamps(500);
        uint64_t state = seed * 0x9e3779b97f4a7c15;
        const auto next = [&state](uint64_t) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            return state;
        };
        machine.counterOf = next;
        machine.stampOf = [&](uint64_t ticks) { return static_cast<uint32_t>(next(ticks) >> 32); };
        machine.frequency = seed % 2 ? 10 : ~uint64_t{0};
        MeasureProcessorSpeed(0, machine);
        EXPECT_EQ(machine.priority, 7);
        EXPECT_LT(machine.counterCalls, 1000);
    }
}

TEST(ProcessorSpeed, RoundsTheTime) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.frequency = 3'579'545;  // 3000 ticks last 838.1 microseconds, 3003 ticks 838.9
    EXPECT_EQ(MeasureProcessorSpeed(0, machine).microseconds, 838u);
    machine.ticksPerRead = 77;  // 13 reads are 1001 ticks
    machine.ticks = 0;
    EXPECT_EQ(MeasureProcessorSpeed(0, machine).microseconds, 839u);
}

TEST(ProcessorSpeed, SurvivesTheWrapOfTheLowHalf) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.ticks = 0xffffffff - 600;
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(speed.rawMhz, 500u);
    EXPECT_EQ(speed.microseconds, 300u);
}

TEST(ProcessorSpeed, IsZeroWhenTheTimeStampStandsStill) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.stampOf = [](uint64_t) { return 77u; };
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(speed.cycles, 0u);
    EXPECT_EQ(speed.microseconds, 300u);
    EXPECT_EQ(speed.rawMhz, 0u);
    EXPECT_EQ(speed.normalisedMhz, 0u);
}

// 32-bit cycles: a time stamp that goes back has gone on by nearly 2^32.
TEST(ProcessorSpeed, EndsWhenTheTimeStampGoesBack) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.stampOf = [](uint64_t ticks) { return static_cast<uint32_t>(0u - ticks); };
    const SpeedMeasurement speed = MeasureProcessorSpeed(0, machine);
    EXPECT_EQ(speed.cycles, 0xffffffffu);
    EXPECT_EQ(speed.rawMhz, 42949662u);
}

// The time of a round is no double, and the sum of three of them is 1000 only if each is rounded to
// the nearest: otherwise the quotient falls to 299.
TEST(ProcessorSpeed, IsTheSameUnderEveryX87Setting) {
    for (const X87Setting& setting : kX87Settings) {
        SCOPED_TRACE(setting.name);
        FakeMachine machine = MachineWithTimeStamps(0);
        machine.frequency = 3'000'000;
        machine.stampOf = [](uint64_t ticks) { return static_cast<uint32_t>(ticks * 100); };
        SpeedMeasurement speed;
        uint16_t after;
        {
            const X87ControlWordScope host(setting.word);
            speed = MeasureProcessorSpeed(0, machine);
            after = X87ControlWord();
        }
        EXPECT_EQ(speed.cycles, 300000u);
        EXPECT_EQ(speed.microseconds, 1000u);
        EXPECT_EQ(speed.rawMhz, 300u);
        EXPECT_EQ(speed.normalisedMhz, 300u);
        EXPECT_EQ(after, TAVO_TEST_HAS_X87 ? setting.word : 0);
    }
}

TEST(ProcessorSpeed, IsZeroWithoutCpuid) {
    FakeMachine machine = MachineWithTimeStamps(500);
    machine.hasCpuid = false;
    ExpectZeros(MeasureProcessorSpeed(0, machine));
    EXPECT_EQ(machine.cpuidCalls, 0);
}

}  // namespace
}  // namespace tavo::test
