// Overwrites a line on a terminal, appends lines elsewhere.

#include "host/cli/progress_display.h"

#include "host/cli/console.h"
#include "host/cli/progress_text.h"

namespace tavo {
namespace {

constexpr DWORD kTerminalMs = 200;
constexpr DWORD kLogMs = 5000;

}  // namespace

ProgressDisplay::ProgressDisplay() : terminal_(ErrorIsTerminal()) {}

DWORD ProgressDisplay::IntervalMs() const { return terminal_ ? kTerminalMs : kLogMs; }

void ProgressDisplay::Update(const RunPosition& position) {
    Progress progress;
    progress.frames = position.frames;
    progress.fraction = position.fraction;
    progress.seconds = position.seconds;
    const double step = progress.seconds - lastSeconds_;
    if (step > 0) progress.fps = static_cast<double>(progress.frames - lastFrames_) / step;
    if (progress.frames != lastFrames_) frameSeconds_ = progress.seconds;
    progress.waiting = progress.seconds - frameSeconds_;
    lastFrames_ = progress.frames;
    lastSeconds_ = progress.seconds;
    Show(ProgressLine(progress));
}

void ProgressDisplay::End() {
    if (terminal_ && width_ > 0) PrintError(L"\r" + std::wstring(width_, L' ') + L"\r");
}

void ProgressDisplay::Show(std::wstring line) {
    if (!terminal_) return PrintError(line + L"\n");
    const size_t length = line.size();
    if (length < width_) line.append(width_ - length, L' ');
    width_ = length;
    PrintError(L"\r" + line);
}

}  // namespace tavo
