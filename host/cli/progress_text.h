// The texts that a run prints: the progress bar and the statistics. No input or output here.

#pragma once

#include <cstdint>
#include <string>

namespace tavo {

struct Progress {
    uint64_t frames = 0;
    double fraction = -1.0;  // of the whole, 0 to 1; negative when the length is not known
    double seconds = 0.0;    // since the start
    double fps = 0.0;        // lately
};

// One line of at most 79 characters: bar, part, frames, speed, time left.
std::wstring ProgressLine(const Progress& progress);

// "1:02:03", "2:03", "0:03"; rounded to seconds.
std::wstring ClockText(double seconds);

// "1.23 GB", "45.6 MB", "789 bytes"; powers of 1000.
std::wstring BytesText(uint64_t bytes);

// At most three decimals, without zeros at the end: "29.97", "25".
std::wstring NumberText(double value);

}  // namespace tavo
