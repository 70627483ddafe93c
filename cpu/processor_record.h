// One identification record, shared between threads.

#pragma once

#include "cpu/mutex.h"
#include "cpu/processor_info.h"

namespace tavo {

// Identifications run one after another, since each changes the affinity of the process; a record
// appears only when it is complete. Any thread may call anything.
class ProcessorRecord {
  public:
    constexpr ProcessorRecord() = default;

    // As the function of that name; `level` is that of this identification, or of the record as it
    // was if there is no cpuid.
    int Identify(Machine& machine, int& level) noexcept;

    ProcessorInfo Copy() const noexcept;

  private:
    Mutex identification_;
    mutable Mutex access_;
    ProcessorInfo info_;
};

}  // namespace tavo
