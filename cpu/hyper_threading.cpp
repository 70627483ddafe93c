// The HyperThreading probe.

#include "cpu/hyper_threading.h"

#include "cpu/processor_info.h"

namespace tavo {
namespace {

constexpr const char* kStatusTexts[] = {
    "HyperThreading technology not capable",
    "HyperThreading technology enabled",
    "HyperThreading technology disabled",
    "HyperThreading technology capable but not enabled",
    "HyperThreading technology cannot be detected",
};

// Puts the affinity of the process back.
class AffinityScope {
  public:
    AffinityScope(Machine& machine, uintptr_t process) : machine_(machine), process_(process) {}
    ~AffinityScope() { machine_.SetAffinity(process_); }
    AffinityScope(const AffinityScope&) = delete;
    AffinityScope& operator=(const AffinityScope&) = delete;

  private:
    Machine& machine_;
    const uintptr_t process_;
};

// The bits of an APIC id that number packages; the others number the logical processors of one.
// Beyond 128 logical processors, all bits number logical processors, and the mask is 0.
uint8_t PackageMask(uint8_t logicalPerPackage) {
    uint8_t mask = 0xff;
    for (int count = 1; count < logicalPerPackage; count *= 2) {
        mask = static_cast<uint8_t>(mask << 1);
    }
    return mask;
}

// Whether a processor of the process is not the first one of its package.
bool VisitProcessors(Machine& machine, uintptr_t process, uint8_t packageMask) {
    const AffinityScope scope(machine, process);
    bool seenOther = false;
    for (uintptr_t bit = 1; bit != 0 && bit <= process; bit <<= 1) {
        if (!(process & bit) || !machine.SetAffinity(bit)) continue;
        machine.GiveWay();
        if (GetInitialApicId(machine) & ~packageMask) seenOther = true;
    }
    return seenOther;
}

}  // namespace

const char* HyperThreadingText(uint8_t status) {
    constexpr uint8_t kLast = HyperThreadingNotDetected;
    return kStatusTexts[status < kLast ? status : kLast];
}

bool IsCpuidAvailable(Machine& machine) { return machine.IsCpuidAvailable(); }

uint32_t IsHyperThreadingSupported(Machine& machine) {
    if (!machine.IsCpuidAvailable()) return 0;
    char vendor[kVendorSize];
    ReadVendor(machine, vendor);
    const CpuidRegisters leaf = machine.Cpuid(1);
    constexpr uint32_t kFamily = 0xf00, kExtendedFamily = 0xf00000, kHyperThreading = 0x10000000;
    const bool isRecent = (leaf.eax & kFamily) == kFamily || (leaf.eax & kExtendedFamily) != 0;
    return isRecent && IsIntel(vendor) ? leaf.edx & kHyperThreading : 0;
}

uint8_t GetLogicalProcessorsPerPackage(Machine& machine) {
    if (!IsHyperThreadingSupported(machine)) return 1;
    return static_cast<uint8_t>(machine.Cpuid(1).ebx >> 16);
}

uint8_t GetInitialApicId(Machine& machine) {
    if (!IsHyperThreadingSupported(machine)) return 0xff;
    return static_cast<uint8_t>(machine.Cpuid(1).ebx >> 24);
}

uint8_t CountProcessors(uint8_t& logicalPerPackage, int& physicalCount, Machine& machine) {
    logicalPerPackage = 0;
    physicalCount = machine.ProcessorCount();
    if (!IsHyperThreadingSupported(machine)) {
        logicalPerPackage = 1;
        return HyperThreadingNotCapable;
    }
    logicalPerPackage = GetLogicalProcessorsPerPackage(machine);
    if (logicalPerPackage == 0) return HyperThreadingNotCapable;

    uintptr_t process = 0, system = 0;
    if (!machine.GetAffinity(process, system) || process != system) {
        physicalCount = -1;
        return HyperThreadingNotDetected;
    }
    const bool seenOther = VisitProcessors(machine, process, PackageMask(logicalPerPackage));
    if (logicalPerPackage == 1) return HyperThreadingDisabled;
    if (!seenOther) return HyperThreadingNotEnabled;
    physicalCount /= logicalPerPackage;
    return HyperThreadingEnabled;
}

}  // namespace tavo
