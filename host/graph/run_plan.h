// What a run would do.

#pragma once

#include <string>
#include <vector>

#include "host/graph/output_estimate.h"
#include "host/graph/run_options.h"
#include "host/graph/video_graph.h"

namespace tavo {

struct RunPlan {
    std::vector<std::wstring> path;  // names of the filters, from the source to the sink
    uint32_t frameBytes = 0;         // of an output frame; 0 when it is unknown
    OutputEstimate output;
};

// Of a connected graph.
RunPlan PlanRun(const VideoGraph& graph, const RunOptions& options, const InputFile& input);

}  // namespace tavo
