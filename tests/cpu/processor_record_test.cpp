// The record: what it holds before and after an identification, and what several threads see of it.

#include "cpu/processor_record.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/cpu/fake_machine.h"

namespace tavo::test {
namespace {

FakeMachine Athlon() {
    FakeMachine machine;
    machine.SetVendor("AuthenticAMD");
    machine.SetNumbers(6, 2, 1);
    machine.leaves[1].edx = kMmxBit | kTimeStampBit;
    machine.SetBrand("An Athlon 500MHz");
    machine.leaves[0x80000001].edx = k3DNowBit | kExt3DNowBit;
    machine.processorCount = 2;
    return machine;
}

TEST(ProcessorRecord, IsEmptyAtFirst) {
    const ProcessorInfo info = ProcessorRecord().Copy();
    EXPECT_STREQ(info.vendor, "------------");
    EXPECT_EQ(info.family, -1);
    EXPECT_EQ(info.model, -1);
    EXPECT_EQ(info.stepping, -1);
    EXPECT_EQ(info.processorType, -1);
    EXPECT_STREQ(info.name, "");
    EXPECT_FALSE(info.hasMmx || info.hasSse || info.hasSse2 || info.has3DNow || info.hasExt3DNow ||
                 info.hasSse3 || info.hasMonitor || info.identified);
    EXPECT_EQ(info.clockMhz, 0);
    EXPECT_EQ(info.logicalPerPackage, 0);
    EXPECT_EQ(info.physicalCount, 0);
    EXPECT_EQ(info.hyperThreadingStatus, 0);
}

TEST(ProcessorRecord, HoldsAnIdentification) {
    FakeMachine machine = Athlon();
    ProcessorRecord record;
    int level = -1;
    EXPECT_EQ(record.Identify(machine, level), 0);
    EXPECT_EQ(level, 4);
    const ProcessorInfo info = record.Copy();
    EXPECT_STREQ(info.vendor, "AuthenticAMD");
    EXPECT_STREQ(info.name, "An Athlon");
    EXPECT_EQ(info.family, 6);
    EXPECT_EQ(info.model, 2);
    EXPECT_EQ(info.stepping, 1);
    EXPECT_EQ(info.processorType, 0);
    EXPECT_TRUE(info.hasMmx && info.has3DNow && info.hasExt3DNow && info.identified);
    EXPECT_EQ(info.clockMhz, 500);
    EXPECT_EQ(info.logicalPerPackage, 1);
    EXPECT_EQ(info.physicalCount, 2);
    EXPECT_EQ(info.hyperThreadingStatus, 0);
}

TEST(ProcessorRecord, KeepsTheHyperThreadingProbe) {
    FakeMachine machine;
    machine.SetVendor("GenuineIntel");
    machine.SetNumbers(15, 2, 7);
    machine.leaves[1].edx = kHyperThreadingBit | kTimeStampBit | kMmxBit | kSseBit;
    machine.leaves[1].ebx = 2u << 16;
    machine.processorCount = 2;
    machine.processMask = 1;
    machine.systemMask = 3;
    ProcessorRecord record;
    int level = -1;
    EXPECT_EQ(record.Identify(machine, level), 0);
    EXPECT_EQ(level, 2);
    EXPECT_EQ(record.Copy().hyperThreadingStatus, 4);
    EXPECT_EQ(record.Copy().physicalCount, -1);
    EXPECT_EQ(record.Copy().logicalPerPackage, 2);
}

TEST(ProcessorRecord, IsUntouchedWithoutCpuid) {
    FakeMachine machine = Athlon();
    machine.hasCpuid = false;
    ProcessorRecord record;
    int level = -1;
    EXPECT_EQ(record.Identify(machine, level), -1);
    EXPECT_EQ(level, 0);
    EXPECT_STREQ(record.Copy().vendor, "------------");
    EXPECT_EQ(record.Copy().family, -1);
    EXPECT_FALSE(record.Copy().identified);
    EXPECT_EQ(machine.counterCalls, 0);

    machine.hasCpuid = true;
    EXPECT_EQ(record.Identify(machine, level), 0);
    machine.hasCpuid = false;
    EXPECT_EQ(record.Identify(machine, level), -1);
    EXPECT_EQ(level, 4);
    EXPECT_STREQ(record.Copy().name, "An Athlon");
    EXPECT_TRUE(record.Copy().identified);
}

TEST(ProcessorRecord, IsWrittenAnewEachTime) {
    FakeMachine machine = Athlon();
    ProcessorRecord record;
    int level = -1;
    record.Identify(machine, level);
    machine.leaves[1].edx = kMmxBit | kSseBit;
    machine.leaves[0x80000001].edx = 0;
    machine.hasFrequency = false;
    EXPECT_EQ(record.Identify(machine, level), 0);
    EXPECT_EQ(level, 2);
    const ProcessorInfo info = record.Copy();
    EXPECT_FALSE(info.has3DNow || info.hasExt3DNow);
    EXPECT_EQ(info.clockMhz, 0);
}

// A slow machine that notices a second identification beside its own.
class SlowMachine : public FakeMachine {
  public:
    SlowMachine(const FakeMachine& like, std::atomic<int>& inside)
        : FakeMachine(like), inside_(inside) {}

    bool CounterFrequency(uint64_t& ticksPerSecond) override {
        if (++inside_ > 1) sawOther = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        --inside_;
        return FakeMachine::CounterFrequency(ticksPerSecond);
    }
    bool sawOther = false;

  private:
    std::atomic<int>& inside_;
};

// While two threads identify, a third never meets half a record.
TEST(ProcessorRecord, IsWholeForEveryThread) {
    ProcessorRecord record;
    std::atomic<int> inside{0}, wrongLevels{0}, others{0}, wrongCopies{0};
    std::atomic<bool> isOver{false};
    int level;
    {
        FakeMachine machine = Athlon();
        record.Identify(machine, level);
    }
    std::thread reader([&] {
        while (!isOver) {
            const ProcessorInfo info = record.Copy();
            const bool isFirst = info.family == 6 && info.hasExt3DNow && info.clockMhz == 500 &&
                                 strcmp(info.name, "An Athlon") == 0;
            const bool isSecond = info.family == 5 && !info.hasExt3DNow && info.clockMhz == 300 &&
                                  strcmp(info.name, "AMD K6") == 0;
            if (!info.identified || isFirst == isSecond) ++wrongCopies;
        }
    });
    const auto identify = [&](const FakeMachine& like, int expected) {
        SlowMachine machine(like, inside);
        for (int i = 0; i < 25; ++i) {
            int found = -1;
            record.Identify(machine, found);
            if (found != expected) ++wrongLevels;
            if (machine.sawOther) ++others;
        }
    };
    FakeMachine k6 = Athlon();
    k6.SetNumbers(5, 6, 1);
    k6.leaves[0x80000001].edx = 0;
    k6.cyclesPerTick = 30;
    std::thread first(identify, Athlon(), 4);
    std::thread second(identify, k6, 1);
    first.join();
    second.join();
    isOver = true;
    reader.join();
    EXPECT_EQ(wrongLevels, 0);
    EXPECT_EQ(others, 0);
    EXPECT_EQ(wrongCopies, 0);
}

}  // namespace
}  // namespace tavo::test
