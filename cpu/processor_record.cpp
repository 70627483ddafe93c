// The record, and the one of this process.

#include "cpu/processor_record.h"

#include "cpu/cpu_level.h"

namespace tavo {
namespace {

// Constant from the start: constructors of global objects may use it.
constinit ProcessorRecord processRecord;

}  // namespace

int ProcessorRecord::Identify(Machine& machine, int& level) noexcept {
    const MutexLock oneAtATime(identification_);
    ProcessorInfo next = Copy();
    const int result = IdentifyProcessor(next, machine);
    level = CpuLevelOf(next);
    const MutexLock lock(access_);
    info_ = next;
    return result;
}

ProcessorInfo ProcessorRecord::Copy() const noexcept {
    const MutexLock lock(access_);
    return info_;
}

int IdentifyProcessor() {
    int level;
    return processRecord.Identify(ThisMachine(), level);
}

ProcessorInfo GetProcessorInfo() { return processRecord.Copy(); }

int GetCpuLevel() {
    int level;
    processRecord.Identify(ThisMachine(), level);
    return level;
}

int CpuSpeedClass() { return SpeedClassOf(processRecord.Copy().clockMhz); }

}  // namespace tavo
