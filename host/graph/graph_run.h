// Runs a graph to its end, tells how far it is, and collects what there is to say about it.

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

// How far a run is.
struct RunPosition {
    uint64_t frames = 0;     // that came out so far
    double fraction = -1.0;  // of the movie, from 0 on; negative when its length is not known
    double seconds = 0.0;    // since the start
};

// Shows how far a run is, on the thread that runs the graph.
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
    bool gaveNoFrame = false;  // it ran to its end without one
    CAviSink::Result file;
    std::optional<CFrameCounter::Counts> input;
    double seconds = 0.0;

    FilterFigures figures;  // taken while the filter was still streaming
};

// Opens the output file (from here on what was in it is gone), runs the graph, stops it and
// finishes the file. A failed run that wrote no frame leaves no file. `display` may be null.
RunResult RunGraph(VideoGraph& graph, const RunOptions& options, StopRequest& stop,
                   RunDisplay* display);

}  // namespace tavo
