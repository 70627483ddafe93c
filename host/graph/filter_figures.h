// What the filter measures while it runs.

#pragma once

#include "settings/vantrel_settings.h"

namespace tavo {

struct FilterFigures {
    double moduleMs = 0.0;
    double systemFps = 0.0;
    double generateFps = 0.0;
    double frameRate = 0.0;
};

// The filter loses them when the graph stops.
FilterFigures ReadFigures(IVantrelSettings& settings);

}  // namespace tavo
