// The shared record, and the one of this process.

#include "cpu/processor_record.h"

#include "cpu/cpu_level.h"

namespace tavo {
namespace {

// Made when it is first asked for, so that it is there for the constructors of global objects too.
ProcessorRecord& ProcessRecord() {
    static ProcessorRecord record;
    return record;
}

}  // namespace

int ProcessorRecord::Identify(Machine& machine, int& level) noexcept {
    const std::lock_guard<std::mutex> oneAtATime(identification_);
    ProcessorInfo next = Copy();
    const int result = IdentifyProcessor(next, machine);
    level = CpuLevelOf(next);
    const std::lock_guard<std::mutex> lock(access_);
    info_ = next;
    return result;
}

ProcessorInfo ProcessorRecord::Copy() const noexcept {
    const std::lock_guard<std::mutex> lock(access_);
    return info_;
}

int IdentifyProcessor() {
    int level;
    return ProcessRecord().Identify(ThisMachine(), level);
}

ProcessorInfo GetProcessorInfo() { return ProcessRecord().Copy(); }

int GetCpuLevel() {
    int level;
    ProcessRecord().Identify(ThisMachine(), level);
    return level;
}

int CpuSpeedClass() { return SpeedClassOf(ProcessRecord().Copy().clockMhz); }

}  // namespace tavo
