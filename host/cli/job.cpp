// Builds the graph of a job and runs it, shows it, or tells what it would do.

#include "host/cli/job.h"

#include <string>

#include "host/avi/media_text.h"
#include "host/cli/exit_code.h"
#include "host/cli/output_check.h"
#include "host/cli/plan_text.h"
#include "host/cli/progress_display.h"
#include "host/cli/report.h"
#include "host/cli/run_facts.h"
#include "host/cli/statistics_text.h"
#include "host/cli/wildcard.h"
#include "host/graph/error_text.h"
#include "host/graph/graph_run.h"
#include "host/graph/graph_text.h"
#include "host/graph/input_file.h"
#include "host/graph/number_text.h"
#include "host/graph/playback.h"
#include "host/graph/published_graph.h"
#include "host/graph/run_plan.h"
#include "host/graph/video_graph.h"

namespace tavo {
namespace {

// Why nothing comes out.
std::wstring WhyNone(const Options& options, const InputFile& input) {
    if (options.section.IsAll()) return WhyNoFrames(input.Name(), input.facts);
    return L"no frame of " + input.Name() + L" starts in that section";
}

int Write(const Options& options, VideoGraph& graph, StopRequest& stop, const InputFile& input,
          Report& report) {
    ProgressDisplay display;
    const RunResult result = RunGraph(graph, options, stop, options.quiet ? nullptr : &display);
    const bool any = result.file.frames > 0;
    if (any && options.json) AddRunFacts(report.Facts(), result);
    if (any && !options.quiet && !options.json) report.Print(StatisticsText(graph, result));
    if (result.gaveNoFrame) {
        return report.Finish(kFailed, WhyNone(options, input));
    }
    if (input.IsTruncated() && !result.stopped) {
        report.Warn(input.Name() + L" is cut off; all whole frames were read");
    }
    if (result.file.soundIsCut) {
        const double blocks = static_cast<double>(result.file.soundBlocks);
        report.Warn(L"the sound is too far ahead of the video: it ends after " +
                    ClockText(blocks / result.file.sound.rate));
    }
    if (!result.error.empty()) return report.Finish(kFailed, result.error);
    if (!result.logError.empty()) return report.Finish(kFailed, result.logError);
    if (!result.stopped) return report.Finish(kDone);
    const uint64_t frames = result.file.frames + result.file.repeats;
    return report.Finish(kStopped, L"stopped after " + std::to_wstring(frames) + L" frames");
}

int Play(const Options& options, VideoGraph& graph, StopRequest& stop, Report& report) {
    const PlayResult result = PlayGraph(graph, stop, options.pages);
    if (!result.error.empty()) return report.Finish(kFailed, result.error);
    if (!options.quiet) report.Print(FiguresText(graph, result.figures));
    return result.stopped ? report.Finish(kStopped, L"stopped") : report.Finish(kDone);
}

// All that a run would find out before its first frame.
int Tell(const Options& options, const VideoGraph& graph, const InputFile& input, Report& report) {
    std::wstring error = CheckReplaceable(options.output);
    if (error.empty() && !options.log.empty()) error = CheckReplaceable(options.log);
    if (!error.empty()) return report.Finish(kFailed, error);
    const RunPlan plan = PlanRun(graph, options, input);
    if (options.json) AddPlanFacts(report.Facts(), plan);
    if (plan.output.frames == 0) return report.Finish(kFailed, WhyNone(options, input));
    if (!options.quiet && !options.json) report.Print(PlanText(graph, plan, options.output));
    return report.Finish(kDone);
}

}  // namespace

int RunJob(const Options& options, const FilterFactory& factory, StopRequest& stop) {
    Report report(options);
    InputFile input;
    std::wstring error = OpenInput(options.input, input);
    if (!error.empty() && HasWildcard(options.input)) {
        error += L"; wildcards want --output-folder";
    }
    if (error.empty() && !options.ToScreen()) error = CheckOutput(options);
    if (!error.empty()) return report.Finish(kFailed, error);

    const auto graph = BuildVideoGraph(options, factory, input, error);
    if (!graph) return report.Finish(kFailed, error);
    if (!graph->soundNote.empty()) report.Warn(graph->soundNote);
    if (options.json) AddGraphFacts(report.Facts(), *graph);
    if (options.graph) report.Print(GraphText(graph->builder.Get()));
    PublishedGraph published;
    const HRESULT hr = options.publish ? published.Register(graph->builder.Get()) : S_OK;
    if (FAILED(hr))
        return report.Finish(kFailed, L"the graph cannot be published: " + ErrorText(hr));
    if (stop.IsSet()) return report.Finish(kStopped, L"stopped before the first frame");

    if (options.dryRun) return Tell(options, *graph, input, report);
    return options.ToScreen() ? Play(options, *graph, stop, report)
                              : Write(options, *graph, stop, input, report);
}

}  // namespace tavo
