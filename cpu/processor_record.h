// An identification record that threads share.

#pragma once

#include "cpu/mutex.h"
#include "cpu/processor_info.h"

namespace tavo {

// Identifications run one at a time, since each changes the affinity of the process. A record is
// replaced only when the new one is complete. Any thread.
class ProcessorRecord {
  public:
    constexpr ProcessorRecord() = default;

    // As IdentifyProcessor. `level` is that of this identification; without cpuid, that of the
    // record so far.
    int Identify(Machine& machine, int& level) noexcept;

    ProcessorInfo Copy() const noexcept;

  private:
    Mutex identification_;
    mutable Mutex access_;
    ProcessorInfo info_;
};

}  // namespace tavo
