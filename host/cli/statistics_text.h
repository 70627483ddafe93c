// The statistics at the end of a run, several lines.

#pragma once

#include <string>

#include "host/graph/filter_figures.h"
#include "host/graph/graph_run.h"
#include "host/graph/video_graph.h"

namespace tavo {

std::wstring StatisticsText(const VideoGraph& graph, const RunResult& result);

// Parts of it: the types of both ends, and what is worth knowing of the picture.
std::wstring TypeLines(const VideoGraph& graph);
std::wstring PictureNotes(const VideoGraph& graph);

// For a video that was only played.
std::wstring FiguresText(const VideoGraph& graph, const FilterFigures& figures);

}  // namespace tavo
