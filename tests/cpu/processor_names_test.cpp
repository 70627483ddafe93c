// Every vendor's way to a name, every row of the name tables, and the cleaning of names.

#include "cpu/processor_names.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/cpu/fake_machine.h"

namespace tavo::test {
namespace {

constexpr char kBrand[] = "A brand string";

FakeMachine Processor(const char* vendor, int family, int model, int stepping = 0) {
    FakeMachine machine;
    machine.SetVendor(vendor);
    machine.SetNumbers(family, model, stepping);
    machine.leaves[1].edx = kTimeStampBit;
    return machine;
}

std::string NameOf(FakeMachine machine) {
    ProcessorInfo info;
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    return info.name;
}

struct IntelCase {
    int family, model;
    int lastDescriptor, brandIndex;
    const char* name;
};

TEST(ProcessorNames, OfIntelWithoutBrandString) {
    constexpr IntelCase kCases[] = {
        {3, 0, 0, 0, "Intel 386 Processor"},
        {4, 8, 0, 0, "Intel 486 Processor"},
        {0, 0, 0, 0, "Intel 086 Processor"},
        {5, 4, 0, 0, "Intel Pentium"},
        {5, 15, 0, 9, "Intel Pentium"},
        {6, 5, 64, 0, "Intel Celeron"},
        {6, 5, 0, 0, "Intel Pentium II"},
        {6, 5, 121, 0, "Intel Pentium II"},
        {6, 5, 122, 0, "Intel Pentium II"},
        {6, 5, 123, 0, "Intel Pentium II"},
        {6, 5, 130, 0, "Intel Pentium II"},
        {6, 5, 68, 0, "Intel Pentium II Xeon"},
        {6, 5, 69, 0, "Intel Pentium II Xeon"},
        {6, 5, 124, 0, "Intel Pentium II Xeon"},
        {6, 5, 132, 0, "Intel Pentium II Xeon"},
        {6, 5, 133, 0, "Intel Pentium II Xeon"},
        {6, 6, 0, 0, "Intel Celeron"},
        {6, 6, 133, 8, "Intel Celeron"},
        {6, 7, 64, 0, "Intel Pentium III"},
        {6, 7, 123, 0, "Intel Pentium III"},
        {6, 7, 132, 0, "Intel Pentium III Xeon"},
        {6, 8, 0, 1, "Intel Celeron"},
        {6, 8, 0, 2, "Intel Pentium III"},
        {6, 8, 0, 3, "Intel Pentium III Xeon"},
        {6, 8, 0, 8, "Intel Pentium 4"},
        {6, 8, 0, 0, "Intel Processor"},
        {6, 8, 0, 4, "Intel Processor"},
        {6, 8, 0, 255, "Intel Processor"},
        {6, 0, 0, 0, ""},
        {6, 4, 0, 0, ""},
        {6, 9, 0, 8, ""},
        {6, 15, 0, 8, ""},
        {7, 1, 0, 8, "Intel Processor"},
        {14, 1, 0, 8, "Intel Processor"},
        {15, 0, 0, 7, "Intel Processor"},
        {15, 0, 0, 8, "Intel Pentium 4"},
        {15, 2, 0, 255, "Intel Pentium 4"},
    };
    for (const IntelCase& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.family << " " << c.model << " " << c.lastDescriptor
                                        << " " << c.brandIndex);
        FakeMachine machine = Processor("GenuineIntel", c.family, c.model);
        machine.leaves[1].ebx = static_cast<uint32_t>(c.brandIndex) | 0x5a00;
        machine.leaves[2] = {0x85858585, 0x85858585, 0x85858585,
                             0x858585u | static_cast<uint32_t>(c.lastDescriptor) << 24};
        EXPECT_EQ(NameOf(machine), c.name);
    }
}

TEST(ProcessorNames, OfIntelCountTheExtendedNumbers) {
    FakeMachine machine = Processor("GenuineIntel", 15, 0);
    machine.SetNumbers(15, 3, 9, 0x12, 0xa, 2);
    machine.leaves[1].ebx = 8;
    ProcessorInfo info;
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_EQ(info.family, 15 + 0x12);
    EXPECT_EQ(info.model, 3 + 0xa0);
    EXPECT_EQ(info.stepping, 9);
    EXPECT_EQ(info.processorType, 2);
    EXPECT_STREQ(info.name, "Intel Processor");
}

TEST(ProcessorNames, OfIntelWithBrandString) {
    FakeMachine machine = Processor("GenuineIntel", 6, 8);
    machine.SetNumbers(6, 14, 10, 0, 8, 1);
    machine.SetBrand("  Intel(R) Pentium(R) 4 CPU 2.40GHz");
    machine.leaves[1].ecx = 1 | 8;
    machine.SetExtendedFeatures(k3DNowBit | kExt3DNowBit);
    machine.leaves[0x80000000].eax = 0x80000008;
    ProcessorInfo info;
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_STREQ(info.vendor, "GenuineIntel");
    EXPECT_STREQ(info.name, "Intel(R) Pentium(R) 4 CPU");
    EXPECT_EQ(info.family, 6);
    EXPECT_EQ(info.model, 14 + 8 * 16);
    EXPECT_EQ(info.stepping, 10);
    EXPECT_EQ(info.processorType, 0);
    EXPECT_TRUE(info.hasSse3);
    EXPECT_TRUE(info.hasMonitor);
    EXPECT_FALSE(info.has3DNow);
    EXPECT_FALSE(info.hasExt3DNow);
    EXPECT_TRUE(info.identified);
}

TEST(ProcessorNames, OfIntelWithEmptyBrandString) {
    FakeMachine machine = Processor("GenuineIntel", 5, 4);
    machine.SetNumbers(5, 4, 3, 0, 0, 1);
    machine.SetBrand("");
    machine.leaves[1].ecx = 1;
    ProcessorInfo info;
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_STREQ(info.name, "Intel Pentium");
    EXPECT_EQ(info.processorType, 1);
    EXPECT_TRUE(info.hasSse3);
    EXPECT_FALSE(info.hasMonitor);
}

// An old Intel answers the extended leaves with whatever; its SSE3 bits are not looked at either.
TEST(ProcessorNames, OfIntelWithoutExtendedLeavesReadNone) {
    FakeMachine machine = Processor("GenuineIntel", 5, 4);
    machine.SetBrand(kBrand);
    machine.leaves[0x80000000].eax = 0x80000000;
    machine.leaves[1].ecx = 1 | 8;
    EXPECT_EQ(NameOf(machine), "Intel Pentium");
    ProcessorInfo info;
    IdentifyProcessor(info, machine);
    EXPECT_FALSE(info.hasSse3);
    EXPECT_FALSE(info.hasMonitor);
}

// A model of family 6 that is in no row keeps the name of the identification before.
TEST(ProcessorNames, OfUnlistedIntelModelsStay) {
    FakeMachine machine = Processor("GenuineIntel", 6, 9);
    ProcessorInfo info;
    strcpy(info.name, "Something else");
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_STREQ(info.name, "Something else");
}

struct VendorCase {
    const char* vendor;
    int family, model, stepping;
    const char* name;
};

TEST(ProcessorNames, OfTheOtherVendors) {
    constexpr VendorCase kCases[] = {
        {"AuthenticAMD", 4, 14, 0, "AMD 80486 Processor"},
        {"AuthenticAMD", 3, 1, 0, "AMD 80386 Processor"},
        {"AuthenticAMD", 5, 0, 0, "AMD K5"},
        {"AuthenticAMD", 5, 3, 0, "AMD K5"},
        {"AuthenticAMD", 5, 4, 0, "AMD Processor"},
        {"AuthenticAMD", 5, 5, 0, "AMD Processor"},
        {"AuthenticAMD", 5, 6, 0, "AMD K6"},
        {"AuthenticAMD", 5, 7, 0, "AMD K6"},
        {"AuthenticAMD", 5, 8, 0, "AMD K6-2"},
        {"AuthenticAMD", 5, 9, 0, "AMD K6-III"},
        {"AuthenticAMD", 5, 10, 0, "AMD Processor"},
        {"AuthenticAMD", 5, 13, 0, "AMD Processor"},
        {"AuthenticAMD", 6, 8, 0, kBrand},
        {"AuthenticAMD", 15, 1, 0, kBrand},
        {"CentaurHauls", 4, 1, 0, "WinChip 80486 Processor"},
        {"CentaurHauls", 5, 9, 0, "IDT WinChip Processor"},
        {"CentaurHauls", 6, 0, 0, "IDT WinChip Processor"},
        {"CentaurHauls", 6, 5, 0, "IDT WinChip Processor"},
        {"CentaurHauls", 6, 6, 9, "VIA C3 Samuel"},
        {"CentaurHauls", 6, 7, 7, "VIA C3 Samuel 2"},
        {"CentaurHauls", 6, 7, 8, "VIA C3 Ezra"},
        {"CentaurHauls", 6, 7, 15, "VIA C3 Ezra"},
        {"CentaurHauls", 6, 8, 0, kBrand},
        {"CentaurHauls", 6, 15, 0, kBrand},
        {"CentaurHauls", 7, 0, 0, kBrand},
        {"CyrixInstead", 4, 9, 0, "Cyrix 80486 Processor"},
        {"CyrixInstead", 5, 2, 0, "Cyrix MI"},
        {"CyrixInstead", 6, 7, 0, "Cyrix MII"},
        {"CyrixInstead", 7, 6, 0, kBrand},
        {"GenuineTMx86", 4, 2, 0, "Transmeta 80486 Processor"},
        {"GenuineTMx86", 5, 4, 0, "Transmeta Crusoe"},
        {"GenuineTMx86", 6, 2, 0, kBrand},
        {"GenuineTMx86", 15, 2, 0, kBrand},
        {"RiseRiseRise", 4, 2, 0, "RiseRiseRise 80486 Processor"},
        {"RiseRiseRise", 5, 2, 0, "RiseRiseRise 80586 Processor"},
        {"RiseRiseRise", 15, 2, 0, "RiseRiseRise 801586 Processor"},
        {"genuineIntel", 6, 8, 0, "genuineIntel 80686 Processor"},
    };
    for (const VendorCase& c : kCases) {
        SCOPED_TRACE(testing::Message()
                     << c.vendor << " " << c.family << " " << c.model << " " << c.stepping);
        FakeMachine machine = Processor(c.vendor, c.family, c.model, c.stepping);
        machine.SetBrand(kBrand);
        machine.leaves[0x80000001].edx = k3DNowBit | kExt3DNowBit;
        ProcessorInfo info;
        EXPECT_EQ(IdentifyProcessor(info, machine), 0);
        EXPECT_STREQ(info.name, c.name);
        EXPECT_STREQ(info.vendor, c.vendor);
        EXPECT_EQ(info.family, c.family);
        EXPECT_EQ(info.model, c.model);
        EXPECT_EQ(info.stepping, c.stepping);
        EXPECT_EQ(info.processorType, 0);
        EXPECT_EQ(info.has3DNow, c.family > 4);
        EXPECT_EQ(info.hasExt3DNow, c.family > 4);
    }
}

// Only Intel's extended numbers are added, and only its leaf 1 ECX is looked at.
TEST(ProcessorNames, OfOtherVendorsLeaveTheExtendedNumbers) {
    FakeMachine machine = Processor("AuthenticAMD", 15, 1);
    machine.SetNumbers(15, 1, 2, 7, 3, 1);
    machine.leaves[1].ecx = 1 | 8;
    machine.SetBrand(kBrand);
    ProcessorInfo info;
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_EQ(info.family, 15);
    EXPECT_EQ(info.model, 1);
    EXPECT_EQ(info.processorType, 0);
    EXPECT_FALSE(info.hasSse3);
    EXPECT_FALSE(info.hasMonitor);
}

TEST(ProcessorNames, TheBrandStringHasAllOf48Characters) {
    FakeMachine machine = Processor("AuthenticAMD", 6, 8);
    const std::string brand = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKL";
    ASSERT_EQ(brand.size(), 48u);
    machine.SetFullBrand(brand.c_str());
    ProcessorInfo info;
    memset(info.name, 'x', sizeof(info.name));
    EXPECT_EQ(IdentifyProcessor(info, machine), 0);
    EXPECT_EQ(info.name, brand);
}

TEST(ProcessorNames, CacheSizesOfAllDescriptors) {
    const std::map<int, int> sizes = {{64, 0},     {68, 1000}, {69, 2000},  {121, 128},
                                      {122, 256},  {123, 512}, {124, 1000}, {130, 256},
                                      {132, 1000}, {133, 2000}};
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        const auto found = sizes.find(descriptor);
        EXPECT_EQ(CacheSize(static_cast<uint8_t>(descriptor)),
                  found == sizes.end() ? 1 : found->second)
            << descriptor;
    }
}

struct CleanCase {
    const char* before;
    const char* after;
};

TEST(ProcessorNames, AreCleaned) {
    constexpr CleanCase kCases[] = {
        {"", ""},
        {"   ", ""},
        {"Plain", "Plain"},
        {"  Plain name ", "Plain name "},
        {"Ends in CPU 2.40GHz", "Ends in CPU"},
        {"Ends in CPU 866MHz", "Ends in CPU"},
        {"  Intel(R) Pentium(R) 4 CPU 2.40GHz", "Intel(R) Pentium(R) 4 CPU"},
        {"Several blanks    1.GHz", "Several blanks"},
        {"Attached1.5GHz", "Attached"},
        {"Sign @ 1.80GHz", "Sign @"},
        {"Sign @1.80GHz", "Sign @"},
        {"No figure GHz", "No figure"},
        {"Early 100MHz bus", "Early"},
        {"2.40GHz", ""},
        {" 2.40GHz", ""},
        {"GHz", ""},
        {"Twice 1GHz 2GHz", "Twice"},
        {"wrong case 1ghz", "wrong case 1ghz"},
        // Places 4 and 10 combine to 14, behind the end at 13: nothing is cut.
        {"A 10MHz12 GHz", "A 10MHz12 GHz"},
        // Places 4 and 8 combine to 12, behind a blank.
        {"A 10MHz GHz up", "A 10MHz GHz"},
        // Places 1 and 5 combine to 5.
        {"1MHz GHz", "1MHz"},
    };
    for (const CleanCase& c : kCases) {
        char name[kNameSize];
        memset(name, '7', sizeof(name));
        strcpy(name, c.before);
        CleanName(name);
        EXPECT_STREQ(name, c.after) << c.before;
    }
}

}  // namespace
}  // namespace tavo::test
