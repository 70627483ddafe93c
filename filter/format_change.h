// An output type that takes the place of another one while frames flow.

#pragma once

#include "streams.h"

#include <memory>

#include "picture/conversion.h"
#include "regulator/time_regulator.h"

// Everything that changes with the output type, made before anything changes. Exchanged with what
// the filter has, it holds the former type, to be exchanged again if the sink refuses after all.
struct FormatChange {
    CMediaType type;     // the filter's
    CMediaType pinType;  // the output pin's; the same
    tavo::Picture picture;
    std::unique_ptr<tavo::Conversion> conversion;
    tavo::TimeRegulator regulator;  // as it was: its kept picture comes back with its conversion
    bool isMade = false;            // the filter has it, and it goes with a sample
};
