// The members of the object that --json prints for a run.

#pragma once

#include "host/cli/json_text.h"
#include "host/graph/graph_run.h"
#include "host/graph/run_plan.h"
#include "host/graph/video_graph.h"

namespace tavo {

void AddGraphFacts(JsonObject& facts, const VideoGraph& graph);
void AddRunFacts(JsonObject& facts, const RunResult& result);
void AddPlanFacts(JsonObject& facts, const RunPlan& plan);

}  // namespace tavo
