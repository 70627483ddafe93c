// The progress bar of a run as text. No input or output here.

#pragma once

#include <cstdint>
#include <string>

namespace tavo {

struct Progress {
    uint64_t frames = 0;
    double fraction = -1.0;  // 0 to 1; negative when the duration is unknown
    double seconds = 0.0;    // since the start
    double fps = 0.0;        // recently
    double waiting = 0.0;    // seconds since the last frame came
};

// One line of at most 79 characters: bar, part, frames, speed, time left; or that nothing comes any
// more.
std::wstring ProgressLine(const Progress& progress);

}  // namespace tavo
