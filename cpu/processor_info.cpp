// Identification by cpuid: vendor, numbers, features and name, then speed and count.

#include "cpu/processor_info.h"

#include <cstdio>
#include <cstring>

#include "cpu/hyper_threading.h"
#include "cpu/processor_names.h"
#include "cpu/processor_speed.h"

namespace tavo {
namespace {

constexpr uint32_t kExtendedLeaf = 0x80000000;
constexpr uint32_t kExtendedFeatureLeaf = 0x80000001;
constexpr uint32_t kFirstBrandLeaf = 0x80000002;
constexpr int kBrandLeaves = 3;

constexpr bool HasBit(uint32_t value, int bit) { return (value >> bit & 1) != 0; }
constexpr int Bits(uint32_t value, int first, int count) {
    return static_cast<int>(value >> first & ((1u << count) - 1));
}

void StoreText(uint32_t value, char* text) {
    for (int i = 0; i < 4; ++i) text[i] = static_cast<char>(value >> (8 * i));
}

void SetName(ProcessorInfo& info, const char* name) {
    snprintf(info.name, sizeof(info.name), "%s", name);
}

// "Intel 486 Processor", "AMD 80486 Processor".
void SetOldName(ProcessorInfo& info, const char* prefix, int family) {
    snprintf(info.name, sizeof(info.name), "%s%d86 Processor", prefix, family);
}

void ClearResults(ProcessorInfo& info) {
    info.hasExt3DNow = info.has3DNow = false;
    info.hasSse2 = info.hasSse = info.hasMmx = false;
    info.stepping = info.model = info.family = info.processorType = 0;
    info.identified = false;
}

bool HasExtendedLeaves(Machine& machine) {
    return machine.Cpuid(kExtendedLeaf).eax > kExtendedLeaf;
}

void ReadBrandString(Machine& machine, ProcessorInfo& info) {
    char* text = info.name;
    for (int leaf = 0; leaf < kBrandLeaves; ++leaf) {
        const CpuidRegisters part = machine.Cpuid(kFirstBrandLeaf + leaf);
        for (const uint32_t value : {part.eax, part.ebx, part.ecx, part.edx}) {
            StoreText(value, text);
            text += sizeof(value);
        }
    }
    *text = '\0';
}

void Read3DNow(Machine& machine, ProcessorInfo& info) {
    if (!HasExtendedLeaves(machine)) return;
    const uint32_t features = machine.Cpuid(kExtendedFeatureLeaf).edx;
    info.has3DNow = HasBit(features, 31);
    info.hasExt3DNow = HasBit(features, 30);
}

void SetBaseNumbers(ProcessorInfo& info, uint32_t signature) {
    info.stepping = Bits(signature, 0, 4);
    info.model = Bits(signature, 4, 4);
    info.family = Bits(signature, 8, 4);
}

// Deliberate: the last descriptor byte of leaf 2 decides, whatever the fourteen before it say.
int DecidingCacheSize(Machine& machine) {
    return CacheSize(static_cast<uint8_t>(machine.Cpuid(2).edx >> 24));
}

void NameLegacyIntel(Machine& machine, const CpuidRegisters& leaf, ProcessorInfo& info) {
    info.processorType = Bits(leaf.eax, 12, 2);
    if (info.family < kFirstNamedFamily) return SetOldName(info, "Intel ", info.family);
    NameDetails details;
    details.brandIndex = Bits(leaf.ebx, 0, 8);
    constexpr int kFamilyWithCaches = 6;
    if (info.family == kFamilyWithCaches) details.cacheSize = DecidingCacheSize(machine);
    if (const char* name = FindName(kIntelNames, info.family, info.model, details)) {
        SetName(info, name);
    }
}

void IdentifyIntel(Machine& machine, const CpuidRegisters& leaf, ProcessorInfo& info) {
    SetBaseNumbers(info, leaf.eax);
    info.family += Bits(leaf.eax, 20, 8);
    info.model += Bits(leaf.eax, 16, 4) * 16;
    bool hasBrand = false;
    if (HasExtendedLeaves(machine)) {
        ReadBrandString(machine, info);
        info.hasSse3 = HasBit(leaf.ecx, 0);
        info.hasMonitor = HasBit(leaf.ecx, 3);
        hasBrand = info.name[0] != '\0';
    }
    if (!hasBrand) NameLegacyIntel(machine, leaf, info);
}

void IdentifyKnown(Machine& machine, const VendorNames& vendor, ProcessorInfo& info) {
    if (info.family < kFirstNamedFamily) return SetOldName(info, vendor.oldPrefix, info.family);
    Read3DNow(machine, info);
    NameDetails details;
    details.stepping = info.stepping;
    if (const char* name = FindName(vendor.rows, info.family, info.model, details)) {
        SetName(info, name);
    } else {
        ReadBrandString(machine, info);
    }
}

void IdentifyUnknown(Machine& machine, ProcessorInfo& info) {
    char prefix[kVendorSize + 3];
    snprintf(prefix, sizeof(prefix), "%s 80", info.vendor);
    SetOldName(info, prefix, info.family);
    if (info.family >= kFirstNamedFamily) Read3DNow(machine, info);
}

void IdentifyByVendor(Machine& machine, const CpuidRegisters& leaf, ProcessorInfo& info) {
    if (IsIntel(info.vendor)) return IdentifyIntel(machine, leaf, info);
    SetBaseNumbers(info, leaf.eax);
    if (const VendorNames* vendor = FindVendor(info.vendor)) {
        IdentifyKnown(machine, *vendor, info);
    } else {
        IdentifyUnknown(machine, info);
    }
}

}  // namespace

void ReadVendor(Machine& machine, char (&vendor)[kVendorSize]) {
    const CpuidRegisters leaf = machine.Cpuid(0);
    StoreText(leaf.ebx, vendor);
    StoreText(leaf.edx, vendor + 4);
    StoreText(leaf.ecx, vendor + 8);
    vendor[12] = '\0';
}

bool IsIntel(const char* vendor) { return strcmp(vendor, "GenuineIntel") == 0; }

int IdentifyProcessor(ProcessorInfo& info, Machine& machine) {
    if (!machine.IsCpuidAvailable()) return -1;
    ClearResults(info);
    ReadVendor(machine, info.vendor);
    const CpuidRegisters leaf = machine.Cpuid(1);
    info.hasMmx = HasBit(leaf.edx, 23);
    info.hasSse = HasBit(leaf.edx, 25);
    info.hasSse2 = HasBit(leaf.edx, 26);
    IdentifyByVendor(machine, leaf, info);
    CleanName(info.name);
    info.clockMhz = static_cast<int>(MeasureProcessorSpeed(0, machine).rawMhz);
    info.hyperThreadingStatus =
        CountProcessors(info.logicalPerPackage, info.physicalCount, machine);
    info.identified = true;
    return 0;
}

}  // namespace tavo
