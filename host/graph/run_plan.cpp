// Reads the plan off the graph.

#include "host/graph/run_plan.h"

#include <algorithm>

#include "host/filters/video_type.h"
#include "host/graph/graph_pins.h"
#include "host/graph/movie_section.h"

namespace tavo {
namespace {

// Graphs have no cycles; with one, this must still end.
constexpr size_t kLongestPath = 64;

std::vector<std::wstring> PathTo(ComPtr<IBaseFilter> filter) {
    std::vector<std::wstring> names;
    while (filter && names.size() < kLongestPath) {
        names.push_back(NameOf(filter.Get()));
        ComPtr<IPin> peer;
        for (const ComPtr<IPin>& pin : PinsOf(filter.Get(), PINDIR_INPUT)) {
            peer = PeerOf(pin.Get());
            if (peer) break;
        }
        filter = peer ? FilterOf(peer.Get()) : ComPtr<IBaseFilter>();
    }
    std::ranges::reverse(names);
    return names;
}

}  // namespace

RunPlan PlanRun(const VideoGraph& graph, const RunOptions& options, const InputFile& input) {
    RunPlan plan;
    plan.path = PathTo(graph.sinkFilter);
    if (const auto type = ReadVideoType(graph.outputType)) {
        plan.frameBytes = FrameSize(type->video).value_or(0);
    }
    EstimateFacts facts;
    facts.duration = graph.duration;
    facts.frameDuration = FrameDurationOf(graph.inputType);
    if (input.movie) facts.inputFrames = CountFrames(*input.movie, options.section);
    facts.fps = options.fps;
    facts.frameBytes = plan.frameBytes;
    if (graph.sound.IsKnown()) facts.soundBytesPerSecond = graph.sound.BytesPerSecond();
    plan.output = EstimateOutput(facts);
    return plan;
}

}  // namespace tavo
