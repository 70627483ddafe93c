// Formats the progress bar.

#include "host/cli/progress_text.h"

#include <algorithm>

#include "host/graph/number_text.h"

namespace tavo {
namespace {

constexpr int kBarWidth = 26;
// Slow decoders and slow disks take seconds for a frame.
constexpr double kLongWait = 15.0;

// Rounded down: 100 % is shown only at the end.
std::wstring PercentText(double fraction) {
    std::wstring text = std::to_wstring(static_cast<int>(fraction * 100.0)) + L"%";
    if (text.size() < 4) text.insert(0, 4 - text.size(), L' ');
    return text;
}

}  // namespace

std::wstring ProgressLine(const Progress& progress) {
    const std::wstring frame = L"frame " + std::to_wstring(progress.frames) + L"  ";
    if (progress.waiting >= kLongWait) {
        return frame + L"none came for " + ClockText(progress.waiting) + L"; Ctrl-C ends it here";
    }
    const std::wstring counts = frame + FixedText(progress.fps, 1) + L" fps";
    if (progress.fraction < 0) return counts + L"  " + ClockText(progress.seconds);

    const double fraction = std::clamp(progress.fraction, 0.0, 1.0);
    const int filled = static_cast<int>(fraction * kBarWidth);
    std::wstring line = L"[" + std::wstring(static_cast<size_t>(filled), L'#') +
                        std::wstring(static_cast<size_t>(kBarWidth - filled), L'.') + L"] " +
                        PercentText(fraction) + L"  " + counts;
    if (fraction > 0.001) {
        line += L"  " + ClockText(progress.seconds * (1.0 - fraction) / fraction) + L" left";
    }
    return line;
}

}  // namespace tavo
