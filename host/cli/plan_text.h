// What --dry-run prints, several lines.

#pragma once

#include <string>

#include "host/graph/run_plan.h"

namespace tavo {

std::wstring PlanText(const VideoGraph& graph, const RunPlan& plan, const std::wstring& output);

}  // namespace tavo
