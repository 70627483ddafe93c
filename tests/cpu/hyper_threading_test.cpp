// The HyperThreading probe on machines of every kind: counts, codes, and affinity put back.

#include "cpu/hyper_threading.h"

#include <gtest/gtest.h>

#include "tests/cpu/fake_machine.h"

namespace tavo::test {
namespace {

// Two packages of two logical processors each.
FakeMachine HyperThreadedMachine() {
    FakeMachine machine;
    machine.SetVendor("GenuineIntel");
    machine.SetNumbers(15, 2, 7);
    machine.leaves[1].edx = kHyperThreadingBit | kTimeStampBit;
    machine.leaves[1].ebx = 2u << 16;
    machine.processorCount = 4;
    machine.processMask = machine.systemMask = machine.affinity = 0xf;
    machine.apicIds = {{1, 0}, {2, 1}, {4, 6}, {8, 7}};
    return machine;
}

struct Count {
    uint8_t status = 0xee;
    uint8_t logical = 0xee;
    int physical = 1234;
};

Count CountIn(FakeMachine& machine) {
    Count count;
    count.status = CountProcessors(count.logical, count.physical, machine);
    return count;
}

void ExpectCount(FakeMachine& machine, int status, int logical, int physical) {
    const Count count = CountIn(machine);
    EXPECT_EQ(count.status, status);
    EXPECT_EQ(count.logical, logical);
    EXPECT_EQ(count.physical, physical);
}

TEST(HyperThreading, HasATextForEachStatus) {
    EXPECT_STREQ(HyperThreadingText(0), "HyperThreading technology not capable");
    EXPECT_STREQ(HyperThreadingText(1), "HyperThreading technology enabled");
    EXPECT_STREQ(HyperThreadingText(2), "HyperThreading technology disabled");
    EXPECT_STREQ(HyperThreadingText(3), "HyperThreading technology capable but not enabled");
    EXPECT_STREQ(HyperThreadingText(4), "HyperThreading technology cannot be detected");
    EXPECT_STREQ(HyperThreadingText(255), "HyperThreading technology cannot be detected");
}

TEST(HyperThreading, SupportNeedsIntelOfARecentFamily) {
    FakeMachine machine = HyperThreadedMachine();
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0x10000000u);
    machine.SetNumbers(14, 2, 7);
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0u);
    for (int extended : {1, 2, 4, 8, 15}) {
        machine.SetNumbers(6, 2, 7, extended);
        EXPECT_EQ(IsHyperThreadingSupported(machine), 0x10000000u) << extended;
    }
    machine.SetNumbers(6, 2, 7, 16);  // above the four bits that count
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0u);
    machine.SetNumbers(15, 2, 7);
    machine.leaves[1].edx = ~kHyperThreadingBit;
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0u);
    machine.leaves[1].edx = ~0u;
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0x10000000u);
    machine.SetVendor("AuthenticAMD");
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0u);
}

TEST(HyperThreading, AsksNothingOfAProcessorWithoutCpuid) {
    FakeMachine machine = HyperThreadedMachine();
    machine.hasCpuid = false;
    EXPECT_FALSE(IsCpuidAvailable(machine));
    EXPECT_EQ(IsHyperThreadingSupported(machine), 0u);
    EXPECT_EQ(GetLogicalProcessorsPerPackage(machine), 1);
    EXPECT_EQ(GetInitialApicId(machine), 0xff);
    ExpectCount(machine, 0, 1, 4);
    EXPECT_EQ(machine.cpuidCalls, 0);
}

TEST(HyperThreading, ProbesReadLeafOne) {
    FakeMachine machine = HyperThreadedMachine();
    machine.apicIds.clear();
    machine.leaves[1].ebx = 0xab37ffff;
    EXPECT_TRUE(IsCpuidAvailable(machine));
    EXPECT_EQ(GetLogicalProcessorsPerPackage(machine), 0x37);
    EXPECT_EQ(GetInitialApicId(machine), 0xab);
    machine.SetVendor("AuthenticAMD");
    EXPECT_EQ(GetLogicalProcessorsPerPackage(machine), 1);
    EXPECT_EQ(GetInitialApicId(machine), 0xff);
}

TEST(HyperThreading, NotCapable) {
    FakeMachine machine = HyperThreadedMachine();
    machine.leaves[1].edx = 0;
    ExpectCount(machine, 0, 1, 4);
    EXPECT_TRUE(machine.affinities.empty());
}

TEST(HyperThreading, NotCapableWithoutAnyLogicalProcessor) {
    FakeMachine machine = HyperThreadedMachine();
    machine.leaves[1].ebx = 0;
    ExpectCount(machine, 0, 0, 4);
    EXPECT_TRUE(machine.affinities.empty());
}

TEST(HyperThreading, Enabled) {
    FakeMachine machine = HyperThreadedMachine();
    ExpectCount(machine, 1, 2, 2);
    EXPECT_EQ(machine.affinities, (std::vector<uintptr_t>{1, 2, 4, 8, 0xf}));
    EXPECT_EQ(machine.giveWays, 4);
}

TEST(HyperThreading, Disabled) {
    FakeMachine machine = HyperThreadedMachine();
    machine.leaves[1].ebx = 1u << 16;
    ExpectCount(machine, 2, 1, 4);
    EXPECT_EQ(machine.affinity, 0xfu);
    EXPECT_EQ(machine.affinities.size(), 5u);
}

TEST(HyperThreading, CapableButNotEnabled) {
    FakeMachine machine = HyperThreadedMachine();
    machine.apicIds = {{1, 0}, {2, 2}, {4, 4}, {8, 6}};
    ExpectCount(machine, 3, 2, 4);
    EXPECT_EQ(machine.affinity, 0xfu);
}

TEST(HyperThreading, NotDetectedInANarrowedProcess) {
    FakeMachine machine = HyperThreadedMachine();
    machine.processMask = machine.affinity = 0x3;
    ExpectCount(machine, 4, 2, -1);
    EXPECT_TRUE(machine.affinities.empty());
}

TEST(HyperThreading, NotDetectedWithoutAffinity) {
    FakeMachine machine = HyperThreadedMachine();
    machine.hasAffinity = false;
    ExpectCount(machine, 4, 2, -1);
    EXPECT_TRUE(machine.affinities.empty());
}

TEST(HyperThreading, PassesOverProcessorsThatRefuse) {
    FakeMachine machine = HyperThreadedMachine();
    machine.refusedMask = 0x2 | 0x8;  // those with odd ids
    ExpectCount(machine, 3, 2, 4);
    EXPECT_EQ(machine.giveWays, 2);
    EXPECT_EQ(machine.affinities.back(), 0xfu);
    EXPECT_EQ(machine.affinity, 0xfu);

    machine.refusedMask = ~uintptr_t{0};
    ExpectCount(machine, 3, 2, 4);
    EXPECT_EQ(machine.giveWays, 2);
    EXPECT_EQ(machine.affinities.back(), 0xfu);
}

TEST(HyperThreading, VisitsOnlyTheBitsOfTheProcess) {
    FakeMachine machine = HyperThreadedMachine();
    const uintptr_t top = ~(~uintptr_t{0} >> 1);
    machine.processMask = machine.systemMask = top | 0x4;
    machine.apicIds = {{4, 6}, {top, 7}};
    ExpectCount(machine, 1, 2, 2);
    EXPECT_EQ(machine.affinities, (std::vector<uintptr_t>{4, top, top | 4}));
}

// The ids of one package fill as many bits as are needed to count it.
TEST(HyperThreading, MasksThePackageNumber) {
    struct Case {
        int logical, id;
        int status;
    };
    constexpr Case kCases[] = {{1, 0xff, 2},   {2, 0xfe, 3},   {2, 0x01, 1},   {3, 0xfc, 3},
                               {3, 0x02, 1},   {4, 0xfc, 3},   {4, 0x02, 1},   {5, 0xf8, 3},
                               {5, 0x04, 1},   {128, 0x80, 3}, {128, 0x40, 1}, {129, 0x80, 1},
                               {255, 0x80, 1}, {255, 0x00, 3}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.logical << " " << c.id);
        FakeMachine machine = HyperThreadedMachine();
        machine.leaves[1].ebx = static_cast<uint32_t>(c.logical) << 16;
        machine.processMask = machine.systemMask = 1;
        machine.apicIds = {{1, static_cast<uint8_t>(c.id)}};
        machine.processorCount = 600;
        ExpectCount(machine, c.status, c.logical, c.status == 1 ? 600 / c.logical : 600);
    }
}

}  // namespace
}  // namespace tavo::test
