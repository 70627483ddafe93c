// Runs jobs, and counts how they end.

#include "host/cli/batch.h"

#include <new>

#include "host/cli/exit_code.h"
#include "host/cli/input_list.h"
#include "host/cli/job.h"
#include "host/cli/report.h"
#include "host/graph/quoted.h"

namespace tavo {
namespace {

struct Counts {
    size_t done = 0;
    size_t failed = 0;
    bool stopped = false;
};

std::wstring SummaryText(size_t files, const Counts& counts) {
    std::wstring text = std::to_wstring(files) + L" files: " + std::to_wstring(counts.done) +
                        L" done, " + std::to_wstring(counts.failed) + L" failed";
    const size_t left = files - counts.done - counts.failed;
    if (left > 0) text += L", " + std::to_wstring(left) + L" stopped or not begun";
    return text + L"\n";
}

// Memory that one input lacks may suffice for the next one.
int RunOne(const Options& options, const FilterFactory& factory, StopRequest& stop) {
    try {
        return RunJob(options, factory, stop);
    } catch (const std::bad_alloc&) {
        return ReportError(Quoted(options.input) + L": out of memory", kFailed, options.json);
    }
}

}  // namespace

int RunBatch(const Options& options, const FilterFactory& factory, StopRequest& stop) {
    InputList list;
    const std::wstring error = ListInputs(options.inputs, options.outputFolder, list);
    if (!error.empty()) return ReportError(error, kFailed, options.json);
    Counts counts;
    Options one = options;
    one.oneOfSeveral = list.inputs.size() > 1;
    for (size_t n = 0; n < list.inputs.size() && !counts.stopped; ++n) {
        one.input = list.inputs[n];
        one.output = list.outputs[n];
        const int code = RunOne(one, factory, stop);
        counts.done += code == kDone;
        counts.failed += code == kFailed;
        counts.stopped = code == kStopped;
    }
    if (one.oneOfSeveral && !options.quiet) {
        PrintText(options, L"\n" + SummaryText(list.inputs.size(), counts));
    }
    if (counts.stopped) return kStopped;
    return counts.failed > 0 ? kFailed : kDone;
}

}  // namespace tavo
