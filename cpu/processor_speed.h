// Measuring the clock of the processor against the performance counter.

#pragma once

#include <cstdint>

#include "cpu/machine.h"

namespace tavo {

// All zero if nothing could be measured.
struct SpeedMeasurement {
    uint32_t cycles = 0;         // of the time-stamp counter, or of a loop of bit scans
    uint32_t microseconds = 0;   // in the meantime
    uint32_t rawMhz = 0;         // their quotient, truncated
    uint32_t normalisedMhz = 0;  // their quotient, rounded
};

// With clocks 0: by the time-stamp counter, or by bit scans where there is none. With 1 to 150: by
// bit scans that are said to take so many cycles each. With anything else: all zero.
//
// Deliberate: raises the calling thread to time-critical priority, for about a millisecond. Ends
// within two seconds even if no counter moves.
SpeedMeasurement MeasureProcessorSpeed(int clocks, Machine& machine = ThisMachine());

}  // namespace tavo
