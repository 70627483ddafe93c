// What the user asks of a run.

#pragma once

#include <string>

#include "host/filters/time_section.h"

namespace tavo {

inline constexpr int kMaxSide = 65535;

struct RunOptions {
    std::wstring input;
    std::wstring output;
    std::wstring log;  // a CSV file; empty: none
    int width = 0;     // 0: as the source
    int height = 0;
    bool fit = false;  // width and height are a box to fit in; 0: no limit, not for both
    int method = 0;    // codes of the filter's settings
    int format = 0;
    int type = 0;
    double fps = 0.0;      // 0: the time regulator is off
    TimeSection section;   // what is taken of the input
    bool asIs = false;     // one frame each, whatever their times
    bool noSound = false;  // leave the sound out
    bool play = false;     // in a window; there is no output
    bool pages = false;    // the same, beside the property pages

    bool ToScreen() const { return play || pages; }
};

}  // namespace tavo
