// Runs a graph to its end, reports progress, and collects the results.

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/filters/avi_sink_filter.h"
#include "host/filters/frame_counter_filter.h"
#include "host/graph/filter_figures.h"
#include "host/graph/run_options.h"
#include "host/graph/stop_request.h"
#include "host/graph/video_graph.h"

namespace tavo {

// The progress of a run.
struct RunPosition {
    uint64_t frames = 0;     // that came out
    double fraction = -1.0;  // of the duration; negative when that is unknown
    double seconds = 0.0;    // since the start
};

// Shows progress, on the thread that runs the graph.
class RunDisplay {
  public:
    // Between two updates.
    virtual DWORD IntervalMs() const = 0;
    virtual void Update(const RunPosition& position) = 0;
    // The graph is stopped.
    virtual void End() = 0;

  protected:
    ~RunDisplay() = default;
};

struct RunResult {
    std::wstring error;        // one line; empty when all is well
    bool stopped = false;      // by the user
    bool gaveNoFrame = false;  // it ran to its end without a frame
    std::wstring logError;     // the log is incomplete; one line
    CAviSink::Result file;
    std::optional<CFrameCounter::Counts> input;
    double seconds = 0.0;

    FilterFigures figures;  // read while the filter was streaming
};

// Creates the output file, runs the graph, stops it and finishes the file. A failed run that wrote
// no frame leaves neither file nor log. `display` may be null.
RunResult RunGraph(VideoGraph& graph, const RunOptions& options, StopRequest& stop,
                   RunDisplay* display);

}  // namespace tavo
