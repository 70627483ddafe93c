// Waits for events of the graph and for the user to stop it.

#include "host/graph/graph_run.h"

#include <chrono>
#include <memory>

#include "host/avi/file_store.h"
#include "host/graph/error_text.h"
#include "host/graph/frame_log.h"
#include "host/graph/graph_events.h"
#include "host/graph/quoted.h"

namespace tavo {
namespace {

// Runs a graph once, to its end.
class Runner {
  public:
    Runner(VideoGraph& graph, StopRequest& stop, RunDisplay* display)
        : graph_(graph), stop_(stop), display_(display) {}

    // The graph is stopped when this returns.
    void RunToEnd(RunResult& result) {
        const auto control = graph_.builder.As<IMediaControl>(IID_IMediaControl);
        const auto events = graph_.builder.As<IMediaEvent>(IID_IMediaEvent);
        const auto media = graph_.builder.As<IMediaFilter>(IID_IMediaFilter);
        if (!control || !events || !media) {
            result.error = L"the graph cannot be run: " + ErrorText(E_NOINTERFACE);
            return;
        }
        // Without a clock, frames are not delayed until their time.
        media->SetSyncSource(nullptr);

        start_ = Clock::now();
        HRESULT reason = control->Run();
        if (SUCCEEDED(reason)) {
            const Ending ending = WaitForEnd(*events, reason);
            result.stopped = ending == Ending::None;
            if (ending != Ending::Aborted) reason = S_OK;
        }
        result.seconds = Seconds();
        result.figures = ReadFigures(*graph_.settings);
        control->Stop();
        // After Stop: a sink that aborts the run does so while its frame is still being delivered.
        if (!result.stopped) result.error = FailureText(reason);
        if (display_ != nullptr) display_->End();
    }

  private:
    using Clock = std::chrono::steady_clock;

    // Returns when the stream is over, aborted, or the user wants to stop.
    Ending WaitForEnd(IMediaEvent& events, HRESULT& reason) {
        OAEVENT event = 0;
        reason = events.GetEventHandle(&event);
        if (FAILED(reason)) return Ending::Aborted;
        const HANDLE handles[] = {reinterpret_cast<HANDLE>(event), stop_.Event()};
        const DWORD count = stop_.Event() != nullptr ? 2 : 1;
        const DWORD interval = display_ != nullptr ? display_->IntervalMs() : INFINITE;
        for (;;) {
            const DWORD woken = WaitForMultipleObjects(count, handles, FALSE, interval);
            if (woken == WAIT_FAILED) {
                reason = HRESULT_FROM_WIN32(GetLastError());
                return Ending::Aborted;
            }
            if (woken == WAIT_OBJECT_0 + 1) return Ending::None;
            const Ending ending = DrainEvents(events, reason);
            if (ending != Ending::None) return ending;
            if (woken == WAIT_TIMEOUT) display_->Update(Position());
        }
    }

    RunPosition Position() const {
        RunPosition position;
        position.frames = graph_.sink->Count();
        position.seconds = Seconds();
        if (graph_.counter != nullptr && graph_.duration > 0) {
            const REFERENCE_TIME time = graph_.counter->Read().position;
            if (time >= 0) {
                position.fraction =
                    static_cast<double>(time) / static_cast<double>(graph_.duration);
            }
        }
        return position;
    }

    double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    // The failure of the filter says more than that of its source: an end of the stream, or a
    // general error.
    std::wstring FailureText(HRESULT reason) const {
        if (graph_.counter != nullptr) {
            const CFrameCounter::Counts counts = graph_.counter->Read();
            if (FAILED(counts.failure)) {
                return L"the filter failed after " + std::to_wstring(counts.frames) + L" frames: " +
                       ErrorText(counts.failure);
            }
        }
        if (FAILED(reason)) return L"the run failed: " + ErrorText(reason);
        return {};
    }

    VideoGraph& graph_;
    StopRequest& stop_;
    RunDisplay* const display_;
    Clock::time_point start_;
};

std::wstring FileError(const std::filesystem::path& output, const CAviSink::Result& file) {
    if (file.typeChanged) {
        return L"the stream changed its format after " + std::to_wstring(file.frames) +
               L" frames, which an AVI file cannot";
    }
    if (file.soundChanged) {
        return L"the sound changed its format after " + std::to_wstring(file.frames) +
               L" frames, which an AVI file cannot; --no-sound leaves it out";
    }
    if (file.io == IoResult::Ok) return {};
    return Quoted(output.wstring()) + L" cannot be written after " + std::to_wstring(file.frames) +
           L" frames: " + IoText(file.io);
}

// The log of a run, if there is one.
class RunLog {
  public:
    explicit RunLog(VideoGraph& graph) : graph_(graph) {}
    // After an exception the graph may still run.
    ~RunLog() {
        if (!log_) return;
        const auto control = graph_.builder.As<IMediaControl>(IID_IMediaControl);
        if (control) control->Stop();
        Watch(nullptr);
    }
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    // Empty on success, else one line for the user.
    std::wstring Open(const std::wstring& path) {
        if (path.empty()) return {};
        if (graph_.counter == nullptr) {
            return L"there can be no log: the source does not connect with the frame counter";
        }
        const IoResult opened = file_.Create(path);
        if (opened != IoResult::Ok) return Quoted(path) + L" cannot be created: " + IoText(opened);
        log_ = std::make_unique<FrameLog>(file_, Now);
        Watch(log_.get());
        return {};
    }

    // The graph is stopped.
    std::wstring Close(const std::wstring& path) {
        if (!log_) return {};
        Watch(nullptr);
        IoResult written = log_->Finish();
        log_.reset();
        const IoResult closed = file_.Close();
        if (written == IoResult::Ok) written = closed;
        if (written == IoResult::Ok) return {};
        return Quoted(path) + L" is incomplete: " + IoText(written);
    }

  private:
    void Watch(FrameWatch* watch) {
        graph_.counter->SetWatch(watch);
        graph_.sink->SetWatch(watch);
    }

    static int64_t Now() {
        const auto time = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
    }

    VideoGraph& graph_;
    FileStore file_;
    std::unique_ptr<FrameLog> log_;
};

}  // namespace

RunResult RunGraph(VideoGraph& graph, const RunOptions& options, StopRequest& stop,
                   RunDisplay* display) {
    RunResult result;
    RunLog log(graph);
    result.error = log.Open(options.log);
    if (!result.error.empty()) return result;
    const std::filesystem::path output = options.output;
    // Frames of a fixed rate are written as they come.
    const bool asTheyCome = options.asIs || options.fps > 0;
    const auto timing = asTheyCome ? CAviSink::Timing::FrameForFrame : CAviSink::Timing::Kept;
    const IoResult opened = graph.sink->OpenFile(output, {timing, graph.displayAspect});
    if (opened == IoResult::Ok) {
        Runner(graph, stop, display).RunToEnd(result);
    } else {
        result.error = Quoted(output.wstring()) + L" cannot be created: " + IoText(opened);
    }
    result.file = graph.sink->FinishFile();
    result.logError = log.Close(options.log);
    if (graph.counter != nullptr) result.input = graph.counter->Read();
    if (opened == IoResult::Ok) {
        const std::wstring error = FileError(output, result.file);
        if (!error.empty()) result.error = error;
        const bool atEnd = result.error.empty() && !result.stopped;
        result.gaveNoFrame = atEnd && result.file.frames == 0;
    }
    if ((!result.error.empty() || result.gaveNoFrame) && result.file.frames == 0) {
        std::error_code ignored;
        if (opened == IoResult::Ok) std::filesystem::remove(output, ignored);
        if (!options.log.empty()) std::filesystem::remove(options.log, ignored);
    }
    return result;
}

}  // namespace tavo
