// The loop of a run: events of the graph, the user's wish to stop, and progress.

#include "host/graph/graph_run.h"

#include <algorithm>
#include <chrono>

#include "host/cli/progress_text.h"
#include "host/graph/error_text.h"
#include "host/graph/graph_events.h"

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD kTerminalMs = 200;
constexpr DWORD kLogMs = 5000;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class ProgressDisplay {
  public:
    ProgressDisplay(const VideoGraph& graph, bool enabled)
        : graph_(graph), enabled_(enabled), terminal_(ErrorIsTerminal()) {}

    DWORD Interval() const { return !enabled_ ? INFINITE : terminal_ ? kTerminalMs : kLogMs; }

    void Update() {
        if (!enabled_) return;
        Progress progress;
        progress.frames = graph_.sink->Count();
        progress.seconds = SecondsSince(start_);
        const double step = progress.seconds - lastSeconds_;
        if (step > 0) progress.fps = static_cast<double>(progress.frames - lastFrames_) / step;
        lastFrames_ = progress.frames;
        lastSeconds_ = progress.seconds;
        if (graph_.counter != nullptr && graph_.duration > 0) {
            const REFERENCE_TIME position = graph_.counter->Read().position;
            if (position >= 0) {
                progress.fraction =
                    static_cast<double>(position) / static_cast<double>(graph_.duration);
            }
        }
        Show(ProgressLine(progress));
    }

    void End() {
        if (enabled_ && terminal_ && width_ > 0) {
            PrintError(L"\r" + std::wstring(width_, L' ') + L"\r");
        }
    }

  private:
    void Show(std::wstring line) {
        if (!terminal_) return PrintError(line + L"\n");
        const size_t length = line.size();
        if (length < width_) line.append(width_ - length, L' ');
        width_ = length;
        PrintError(L"\r" + line);
    }

    const VideoGraph& graph_;
    const bool enabled_;
    const bool terminal_;
    const Clock::time_point start_ = Clock::now();
    uint64_t lastFrames_ = 0;
    double lastSeconds_ = 0.0;
    size_t width_ = 0;
};

// Returns when the stream is over, aborted, or the user wants to stop.
Ending WaitForEnd(IMediaEvent& events, StopRequest& stop, ProgressDisplay& display,
                  HRESULT& reason) {
    OAEVENT event = 0;
    reason = events.GetEventHandle(&event);
    if (FAILED(reason)) return Ending::Aborted;
    const HANDLE handles[] = {reinterpret_cast<HANDLE>(event), stop.Event()};
    const DWORD count = stop.Event() != nullptr ? 2 : 1;
    for (;;) {
        const DWORD woken = WaitForMultipleObjects(count, handles, FALSE, display.Interval());
        if (woken == WAIT_FAILED) {
            reason = HRESULT_FROM_WIN32(GetLastError());
            return Ending::Aborted;
        }
        if (woken == WAIT_OBJECT_0 + 1) return Ending::None;
        const Ending ending = TakeEvents(events, reason);
        if (ending != Ending::None) return ending;
        if (woken == WAIT_TIMEOUT) display.Update();
    }
}

std::wstring FileError(const std::filesystem::path& output, const CAviSink::Result& file) {
    const std::wstring name = L"\"" + output.wstring() + L"\"";
    if (file.typeChanged) {
        return L"the stream changed its format after " + std::to_wstring(file.frames) +
               L" frames, which an AVI file cannot";
    }
    if (file.io == IoResult::Ok) return {};
    return name + L" cannot be written after " + std::to_wstring(file.frames) + L" frames: " +
           IoText(file.io);
}

// The filter's own failure says more than what its source makes of it: an end of the stream, or an
// error in general.
std::wstring FailureOf(const VideoGraph& graph, HRESULT reason) {
    if (graph.counter != nullptr) {
        const CFrameCounter::Counts counts = graph.counter->Read();
        if (FAILED(counts.failure)) {
            return L"the filter failed after " + std::to_wstring(counts.frames) + L" frames: " +
                   ErrorText(counts.failure);
        }
    }
    if (FAILED(reason)) return L"the run failed: " + ErrorText(reason);
    return {};
}

// Runs until the end; the graph is stopped again when this returns.
void RunToEnd(VideoGraph& graph, StopRequest& stop, bool showProgress, RunResult& result) {
    const auto control = graph.builder.As<IMediaControl>(IID_IMediaControl);
    const auto events = graph.builder.As<IMediaEvent>(IID_IMediaEvent);
    const auto media = graph.builder.As<IMediaFilter>(IID_IMediaFilter);
    if (!control || !events || !media) {
        result.error = L"the graph cannot be run: " + ErrorText(E_NOINTERFACE);
        return;
    }
    // Without a clock nobody waits for the time of a frame.
    media->SetSyncSource(nullptr);

    ProgressDisplay display(graph, showProgress);
    const auto start = Clock::now();
    HRESULT reason = control->Run();
    if (SUCCEEDED(reason)) {
        const Ending ending = WaitForEnd(*events.Get(), stop, display, reason);
        result.stopped = ending == Ending::None;
        if (ending != Ending::Aborted) reason = S_OK;
    }
    result.seconds = SecondsSince(start);
    result.figures = ReadFigures(*graph.settings.Get());
    control->Stop();
    // After the stop: who aborts the run does so from inside a frame, before that frame has failed.
    if (!result.stopped) result.error = FailureOf(graph, reason);
    display.End();
}

}  // namespace

RunResult RunGraph(VideoGraph& graph, const Options& options, StopRequest& stop) {
    RunResult result;
    const std::filesystem::path output = options.output;
    // The frames of a fixed rate follow each other as they are.
    const bool asTheyCome = options.asIs || options.fps > 0;
    const auto timing = asTheyCome ? CAviSink::Timing::FrameForFrame : CAviSink::Timing::Kept;
    const IoResult opened = graph.sink->OpenFile(output, {timing, graph.shown});
    if (opened == IoResult::Ok) {
        RunToEnd(graph, stop, !options.quiet, result);
    } else {
        result.error = L"\"" + output.wstring() + L"\" cannot be created: " + IoText(opened);
    }
    result.file = graph.sink->FinishFile();
    if (graph.counter != nullptr) result.input = graph.counter->Read();
    if (opened == IoResult::Ok) {
        const std::wstring error = FileError(output, result.file);
        if (!error.empty()) result.error = error;
        const bool atEnd = result.error.empty() && !result.stopped;
        result.gaveNoFrame = atEnd && result.file.frames == 0;
        std::error_code ignored;
        if ((!result.error.empty() || result.gaveNoFrame) && result.file.frames == 0) {
            std::filesystem::remove(output, ignored);
        }
    }
    return result;
}

}  // namespace tavo
