// The clock of the processor, measured against the performance counter.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

namespace tavo {

// All zeros when nothing could be measured.
struct SpeedMeasurement {
    uint32_t cycles = 0;         // by the time-stamp counter, or as a loop of bit scans has them
    uint32_t microseconds = 0;   // elapsed meanwhile
    uint32_t rawMhz = 0;         // their quotient, truncated
    uint32_t normalisedMhz = 0;  // their quotient, rounded
};

// With clocks 0: by the time-stamp counter, or where there is none by bit scans. With 1 to 150: by
// bit scans, of which each is taken to last so many cycles. With anything else: all zeros.
// Raises the priority of the calling thread for about a millisecond; ends within a second or two
// even when the counters do not move.
SpeedMeasurement MeasureProcessorSpeed(int clocks, Machine& machine = ThisMachine());

}  // namespace tavo
