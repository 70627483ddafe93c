// Plays a graph in its renderer's window, with or without the filter's property pages beside it.

#pragma once

#include "host/graph/player.h"
#include "host/graph/stop_request.h"
#include "host/graph/video_graph.h"

namespace tavo {

// The calling thread is in a single-threaded apartment. Without pages the video plays once; with
// pages it repeats until they or the window are closed. The graph is stopped when this returns.
PlayResult PlayGraph(VideoGraph& graph, StopRequest& stop, bool withPages);

}  // namespace tavo
