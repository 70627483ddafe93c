// vantrel: scales a video file with the filter Mira Vantrel and writes it as an AVI, or plays it.

#include <windows.h>

#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "host/avi/media_text.h"
#include "host/cli/console.h"
#include "host/cli/list_text.h"
#include "host/cli/options.h"
#include "host/cli/processor_text.h"
#include "host/cli/progress_display.h"
#include "host/cli/statistics_text.h"
#include "host/cli/usage_text.h"
#include "host/graph/decoder_list.h"
#include "host/graph/error_text.h"
#include "host/graph/filter_factory.h"
#include "host/graph/graph_run.h"
#include "host/graph/graph_text.h"
#include "host/graph/input_file.h"
#include "host/graph/playback.h"
#include "host/graph/quoted.h"
#include "host/graph/stop_request.h"
#include "host/graph/video_graph.h"

namespace tavo {
namespace {

enum ExitCode { kDone = 0, kFailed = 1, kWrongCommandLine = 2, kStopped = 3 };

int ReportError(const std::wstring& error, int code) {
    PrintError(L"vantrel: " + error + L"\n");
    return code;
}

// Checks the output before anything is done.
std::wstring CheckOutput(const Options& options) {
    const std::filesystem::path output = options.output;
    const std::filesystem::path input = options.input;
    std::error_code ignored;
    const std::wstring out = Quoted(output.wstring());
    if (std::filesystem::is_directory(output, ignored)) return out + L" is a folder";
    if (std::filesystem::equivalent(input, output, ignored)) {
        return L"the input and the output are the same file, " + Quoted(input.wstring());
    }
    const std::filesystem::path folder = output.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        return L"the folder of " + out + L" does not exist";
    }
    if (!options.overwrite && std::filesystem::exists(output, ignored)) {
        return out + L" is there already; --overwrite replaces it";
    }
    return {};
}

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

int List() {
    const DecoderList found = FindDecoders();
    PrintOut(SettingsListText() +
             NameListText(L"Filters of this system that read files", found.splitters) +
             NameListText(L"Filters of this system that decode video", found.decoders));
    if (SUCCEEDED(found.result)) return kDone;
    return ReportError(L"the filters of this system cannot be listed: " + ErrorText(found.result),
                       kFailed);
}

int Scale(const Options& options) {
    InputFile input;
    std::wstring error = OpenInput(options.input, input);
    if (error.empty() && !options.ToScreen()) error = CheckOutput(options);
    if (!error.empty()) return ReportError(error, kFailed);

    FilterFactory factory;
    if (options.registered) {
        error = factory.UseRegistered();
    } else {
        error = factory.UseModule(options.module.empty() ? ProgramFolder() / L"TavoResample.ax"
                                                         : std::filesystem::path(options.module));
    }
    if (!error.empty()) return ReportError(error, kFailed);

    if (options.pages) {
        const HRESULT hr = factory.RegisterPages();
        if (FAILED(hr))
            return ReportError(L"the property pages are missing: " + ErrorText(hr), kFailed);
    }

    StopRequest stop;
    const auto graph = BuildVideoGraph(options, factory, input, error);
    if (!graph) return ReportError(error, kFailed);
    if (options.graph) PrintOut(GraphText(graph->builder.Get()));
    if (stop.IsSet()) return ReportError(L"stopped before the first frame", kStopped);

    return options.ToScreen() ? Play(options, *graph, stop) : Write(options, *graph, stop, input);
}

int Run(const std::vector<std::wstring_view>& arguments) {
    const ParsedOptions parsed = ParseOptions(arguments);
    if (!parsed.error.empty()) {
        return ReportError(parsed.error + L"; try --help", kWrongCommandLine);
    }
    if (parsed.options.help) return PrintOut(UsageText()), kDone;
    if (parsed.options.version) return PrintOut(L"vantrel " TAVO_VERSION L"\n"), kDone;

    if (parsed.options.cpu) return PrintOut(ThisProcessorText()), kDone;

    // Windows, and objects that show them, need a single-threaded apartment.
    const HRESULT hr = CoInitializeEx(
        nullptr, parsed.options.ToScreen() ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED);
    if (FAILED(hr)) return ReportError(L"COM is not available: " + ErrorText(hr), kFailed);
    const int code = parsed.options.list ? List() : Scale(parsed.options);
    CoUninitialize();
    return code;
}

}  // namespace
}  // namespace tavo

int wmain(int count, wchar_t** values) {
    try {
        return tavo::Run(std::vector<std::wstring_view>(values + 1, values + count));
    } catch (const std::bad_alloc&) {
        return tavo::ReportError(L"out of memory", tavo::kFailed);
    } catch (const std::exception&) {
        return tavo::ReportError(L"an unexpected error of the C++ library", tavo::kFailed);
    }
}
