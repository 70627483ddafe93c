// Builds the graph of a job and runs it, shows it, or tells what it would do.

#include "host/cli/job.h"

#include <string>

#include "host/avi/media_text.h"
#include "host/cli/console.h"
#include "host/cli/exit_code.h"
#include "host/cli/output_check.h"
#include "host/cli/plan_text.h"
#include "host/cli/progress_display.h"
#include "host/cli/report.h"
#include "host/cli/statistics_text.h"
#include "host/graph/graph_run.h"
#include "host/graph/graph_text.h"
#include "host/graph/input_file.h"
#include "host/graph/playback.h"
#include "host/graph/run_plan.h"
#include "host/graph/video_graph.h"

namespace tavo {
namespace {

int Write(const Options& options, VideoGraph& graph, StopRequest& stop, const InputFile& input) {
    ProgressDisplay display;
    const RunResult result = RunGraph(graph, options, stop, options.quiet ? nullptr : &display);
    if (!options.quiet && result.file.frames > 0) PrintOut(StatisticsText(graph, result));
    if (result.gaveNoFrame) {
        return ReportError(WhyNoFrames(input.Name(), input.facts), kFailed);
    }
    if (input.IsTruncated() && !result.stopped) {
        PrintError(L"vantrel: warning: " + input.Name() +
                   L" is cut off; all whole frames were read\n");
    }
    if (!result.error.empty()) return ReportError(result.error, kFailed);
    if (result.stopped) {
        const uint64_t frames = result.file.frames + result.file.repeats;
        return ReportError(L"stopped after " + std::to_wstring(frames) + L" frames", kStopped);
    }
    return kDone;
}

int Play(const Options& options, VideoGraph& graph, StopRequest& stop) {
    const PlayResult result = PlayGraph(graph, stop, options.pages);
    if (!options.quiet && result.error.empty()) PrintOut(FiguresText(graph, result.figures));
    if (!result.error.empty()) return ReportError(result.error, kFailed);
    return result.stopped ? ReportError(L"stopped", kStopped) : kDone;
}

// All that a run would find out before its first frame.
int Tell(const Options& options, const VideoGraph& graph, const InputFile& input) {
    const std::wstring error = CheckReplaceable(options.output);
    if (!error.empty()) return ReportError(error, kFailed);
    const RunPlan plan = PlanRun(graph, options, input);
    if (!options.quiet) PrintOut(PlanText(graph, plan, options.output));
    return kDone;
}

}  // namespace

int RunJob(const Options& options, const FilterFactory& factory, StopRequest& stop) {
    InputFile input;
    std::wstring error = OpenInput(options.input, input);
    if (error.empty() && !options.ToScreen()) error = CheckOutput(options);
    if (!error.empty()) return ReportError(error, kFailed);

    const auto graph = BuildVideoGraph(options, factory, input, error);
    if (!graph) return ReportError(error, kFailed);
    if (options.graph) PrintOut(GraphText(graph->builder.Get()));
    if (stop.IsSet()) return ReportError(L"stopped before the first frame", kStopped);

    if (options.dryRun) return Tell(options, *graph, input);
    return options.ToScreen() ? Play(options, *graph, stop) : Write(options, *graph, stop, input);
}

}  // namespace tavo
