// Runs a graph to its end, shows how far it is, and collects what there is to say about it.

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/cli/console.h"
#include "host/filters/avi_sink_filter.h"
#include "host/filters/frame_counter_filter.h"
#include "host/graph/video_graph.h"

namespace tavo {

// The filter's own figures.
struct FilterFigures {
    double moduleMs = 0.0;
    double systemFps = 0.0;
    double generateFps = 0.0;
    double frameRate = 0.0;
};

FilterFigures ReadFigures(IVantrelSettings& settings);

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
// finishes the file. A failed run that wrote no frame leaves no file.
RunResult RunGraph(VideoGraph& graph, const Options& options, StopRequest& stop);

// What is printed at the end: several lines.
std::wstring StatisticsText(const VideoGraph& graph, const RunResult& result);

// The same for a video that was only played.
std::wstring FiguresText(const VideoGraph& graph, const FilterFigures& figures);

}  // namespace tavo
