// The processor level against the processor's own feature bits, and against what an emulator was
// told to be.

#include "cpu/cpu_level.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "tests/cpu/fake_machine.h"

#if defined(__i386__) || defined(__x86_64__)
#include <cpuid.h>
#endif
#if defined(__i386__) && defined(__linux__)
#include <setjmp.h>
#include <signal.h>
#endif

namespace tavo::test {
namespace {

TEST(CpuLevel, IsOneOfTheFive) {
    EXPECT_GE(GetCpuLevel(), 0);
    EXPECT_LE(GetCpuLevel(), 4);
}

TEST(CpuLevel, IsTheSameEveryTime) { EXPECT_EQ(GetCpuLevel(), GetCpuLevel()); }

#if defined(__i386__) || defined(__x86_64__)
TEST(CpuLevel, FollowsTheFeatureBits) {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    ASSERT_TRUE(__get_cpuid(1, &eax, &ebx, &ecx, &edx));
    constexpr unsigned kMmx = 1u << 23;
    constexpr unsigned kSse = 1u << 25;
    const int level = GetCpuLevel();
    if (!(edx & kMmx)) {
        EXPECT_EQ(level, 0);
    } else if (edx & kSse) {
        EXPECT_EQ(level, 2);
    } else {
        EXPECT_TRUE(level == 1 || level == 3 || level == 4) << level;
    }
}
#endif

// TAVO_EXPECTED_CPU_LEVEL is set where the processor is an emulated one.
TEST(CpuLevel, IsThatOfTheEmulatedProcessor) {
    const char* expected = std::getenv("TAVO_EXPECTED_CPU_LEVEL");
    if (!expected) GTEST_SKIP() << "not emulated";
    EXPECT_EQ(GetCpuLevel(), std::atoi(expected));
}

#if defined(__i386__) && defined(__linux__)
sigjmp_buf afterFault;

void OnIllegalInstruction(int) { siglongjmp(afterFault, 1); }

// That the other tests can see a forbidden instruction when an emulated processor runs them.
TEST(CpuLevel, AProcessorWithoutSseStopsAtItsInstructions) {
    if (GetCpuLevel() == 2) GTEST_SKIP() << "this one has SSE";
    const auto previous = signal(SIGILL, OnIllegalInstruction);
    volatile bool executed = false;
    if (sigsetjmp(afterFault, 1) == 0) {
        asm volatile("xorps %%xmm0, %%xmm0" : : : "memory");
        executed = true;
    }
    signal(SIGILL, previous);
    EXPECT_FALSE(executed);
}
#endif

// Bits of leaf 1 and of the extended features, and the level that they make.
TEST(CpuLevel, IsThatOfTheFirstTestThatHolds) {
    struct Case {
        uint32_t features, extended;
        int level;
    };
    constexpr uint32_t kAmd = k3DNowBit | kExt3DNowBit;
    constexpr Case kCases[] = {
        {0, 0, 0},
        {0, kAmd, 0},
        {kSseBit | kSse2Bit, kAmd, 0},
        {kMmxBit, 0, 1},
        {kMmxBit | kSse2Bit, 0, 1},
        {kMmxBit, k3DNowBit, 3},
        {kMmxBit, kExt3DNowBit, 4},
        {kMmxBit, kAmd, 4},
        {kMmxBit | kSseBit, 0, 2},
        {kMmxBit | kSseBit, k3DNowBit, 2},
        {kMmxBit | kSseBit, kAmd, 2},
        {kMmxBit | kSseBit | kSse2Bit, kAmd, 2},
    };
    const char* const kVendors[] = {"AuthenticAMD", "CentaurHauls", "CyrixInstead",
                                    "GenuineTMx86", "RiseRiseRise", "GenuineIntel"};
    for (const char* vendor : kVendors) {
        for (const Case& c : kCases) {
            SCOPED_TRACE(testing::Message()
                         << vendor << std::hex << " " << c.features << " " << c.extended);
            FakeMachine machine;
            machine.SetVendor(vendor);
            machine.SetNumbers(6, 1, 1);
            machine.leaves[1].edx = c.features;
            machine.SetExtendedFeatures(c.extended);
            ProcessorInfo info;
            EXPECT_EQ(IdentifyProcessor(info, machine), 0);
            // Intel has no such extensions.
            const bool counts = strcmp(vendor, "GenuineIntel") != 0;
            EXPECT_EQ(CpuLevelOf(info), counts || c.level < 3 ? c.level : 1);
            EXPECT_EQ(info.hasSse2, (c.features & kSse2Bit) != 0);
        }
    }
}

TEST(CpuLevel, CountsNoExtensionsOfAnOldFamilyOrWithoutExtendedLeaves) {
    FakeMachine machine;
    machine.SetVendor("AuthenticAMD");
    machine.leaves[1].edx = kMmxBit;
    machine.SetExtendedFeatures(k3DNowBit);
    ProcessorInfo info;
    for (int family : {4, 5, 6}) {
        machine.SetNumbers(family, 1, 1);
        machine.leaves[0x80000000].eax = 0x80000001;
        EXPECT_EQ(IdentifyProcessor(info, machine), 0);
        EXPECT_EQ(CpuLevelOf(info), family > 4 ? 3 : 1) << family;
        for (uint32_t last : {0x80000000u, 0u, 0x7fffffffu}) {
            machine.leaves[0x80000000].eax = last;
            EXPECT_EQ(IdentifyProcessor(info, machine), 0);
            EXPECT_EQ(CpuLevelOf(info), 1) << family;
        }
    }
}

TEST(CpuSpeedClass, FollowsTheClock) {
    struct Case {
        int mhz, speedClass;
    };
    constexpr Case kCases[] = {
        {0, -2},  {1, -2},   {199, -2}, {200, -1}, {399, -1}, {400, 0},  {799, 0}, {800, 1},
        {999, 1}, {1000, 2}, {1499, 2}, {1500, 0}, {1501, 0}, {5000, 0}, {-1, -2}, {2147483647, 0},
    };
    for (const Case& c : kCases) EXPECT_EQ(SpeedClassOf(c.mhz), c.speedClass) << c.mhz;
}

TEST(CpuSpeedClass, IsThatOfTheLastIdentification) {
    GetCpuLevel();
    EXPECT_EQ(CpuSpeedClass(), SpeedClassOf(GetProcessorInfo().clockMhz));
}

}  // namespace
}  // namespace tavo::test
