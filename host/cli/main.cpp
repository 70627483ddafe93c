// vantrel: scales a video file with the filter Mira Vantrel and writes it as an AVI, or plays it.

#include <windows.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/cli/batch.h"
#include "host/cli/console.h"
#include "host/cli/exit_code.h"
#include "host/cli/job.h"
#include "host/cli/list_text.h"
#include "host/cli/options.h"
#include "host/cli/processor_text.h"
#include "host/cli/report.h"
#include "host/cli/usage_text.h"
#include "host/graph/decoder_list.h"
#include "host/graph/error_text.h"
#include "host/graph/filter_factory.h"
#include "host/graph/stop_request.h"

namespace tavo {
namespace {

int List() {
    const DecoderList found = FindDecoders();
    PrintOut(SettingsListText() +
             NameListText(L"Filters of this system that read files", found.splitters) +
             NameListText(L"Filters of this system that decode video", found.decoders));
    if (SUCCEEDED(found.result)) return kDone;
    return ReportError(L"the filters of this system cannot be listed: " + ErrorText(found.result),
                       kFailed, false);
}

std::wstring LoadFilter(const Options& options, FilterFactory& factory) {
    std::wstring error;
    if (options.registered) {
        error = factory.UseRegistered();
    } else {
        error = factory.UseModule(options.module.empty() ? ProgramFolder() / L"TavoResample.ax"
                                                         : std::filesystem::path(options.module));
    }
    if (!error.empty() || !options.pages) return error;
    const HRESULT hr = factory.RegisterPages();
    return FAILED(hr) ? L"the property pages are missing: " + ErrorText(hr) : std::wstring();
}

int Scale(const Options& options) {
    FilterFactory factory;
    const std::wstring error = LoadFilter(options, factory);
    if (!error.empty()) return ReportError(error, kFailed, options.json);
    StopRequest stop;
    return options.inputs.empty() ? RunJob(options, factory, stop)
                                  : RunBatch(options, factory, stop);
}

int Run(const std::vector<std::wstring_view>& arguments) {
    const ParsedOptions parsed = ParseOptions(arguments);
    if (!parsed.error.empty()) {
        const bool json = std::ranges::find(arguments, L"--json") != arguments.end();
        return ReportError(parsed.error + L"; try --help", kWrongCommandLine, json);
    }
    if (parsed.options.help) return PrintOut(UsageText()), kDone;
    if (parsed.options.version) return PrintOut(L"vantrel " TAVO_VERSION L"\n"), kDone;

    if (parsed.options.cpu) return PrintOut(ThisProcessorText()), kDone;

    // Windows, and objects that show them, need a single-threaded apartment.
    const HRESULT hr = CoInitializeEx(
        nullptr, parsed.options.ToScreen() ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED);
    if (FAILED(hr))
        return ReportError(L"COM is not available: " + ErrorText(hr), kFailed, parsed.options.json);
    const int code = parsed.options.list ? List() : Scale(parsed.options);
    CoUninitialize();
    return code;
}

int RunSafely(const std::span<wchar_t* const> arguments) {
    try {
        return Run({arguments.begin(), arguments.end()});
    } catch (const std::bad_alloc&) {
        return ReportError(L"out of memory", kFailed, false);
    } catch (const std::exception&) {
        return ReportError(L"an unexpected error of the C++ library", kFailed, false);
    }
}

}  // namespace
}  // namespace tavo

// Wildcards in arguments are for this program to expand, and not for the C runtime.
extern "C" {
int _dowildcard = 0;
}

int wmain(int count, wchar_t** values) {
    // Under Wine, Ctrl-C interrupts the first thread, which hangs if it was allocating memory. So
    // all work is done on another one.
    int code = tavo::kFailed;
    try {
        std::thread worker([&] { code = tavo::RunSafely({values + 1, values + count}); });
        worker.join();
    } catch (const std::exception&) {
        return tavo::ReportError(L"a thread cannot be started", tavo::kFailed, false);
    }
    return code;
}
