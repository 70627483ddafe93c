// Standard output gets what was asked for, standard error the rest.

#include "host/cli/report.h"

#include "host/cli/console.h"
#include "host/graph/quoted.h"

namespace tavo {
namespace {

void PrintErrorLine(const std::wstring& text) { PrintError(L"vantrel: " + text + L"\n"); }

void AddEnding(JsonObject& facts, int code, const std::wstring& error) {
    facts.Number(L"exitCode", code);
    if (!error.empty()) facts.Text(L"error", error);
}

}  // namespace

int ReportError(const std::wstring& error, int code, bool json) {
    PrintErrorLine(error);
    if (!json) return code;
    JsonObject facts;
    AddEnding(facts, code, error);
    PrintOut(facts.Line() + L"\n");
    return code;
}

void PrintText(const Options& options, const std::wstring& text) {
    options.json ? PrintError(text) : PrintOut(text);
}

Report::Report(const Options& options) : options_(options) {
    facts_.Text(L"input", options.input);
    if (!options.ToScreen()) facts_.Text(L"output", options.output);
    if (options.dryRun) facts_.Flag(L"dryRun", true);
    if (options.oneOfSeveral && !options.quiet) {
        Print(L"\n" + options.input + L" -> " + options.output + L"\n");
    }
}

void Report::Warn(const std::wstring& text) {
    PrintErrorLine(L"warning: " + text);
    warning_ += (warning_.empty() ? L"" : L"; ") + text;
}

// Of several inputs, the one that is meant.
std::wstring Report::Named(const std::wstring& error) const {
    const std::wstring name = Quoted(options_.input);
    const bool isNamed = !options_.oneOfSeveral || error.find(name) != std::wstring::npos;
    return isNamed ? error : name + L": " + error;
}

int Report::Finish(int code, const std::wstring& error) {
    if (!error.empty()) PrintErrorLine(Named(error));
    if (!options_.json) return code;
    if (!warning_.empty()) facts_.Text(L"warning", warning_);
    AddEnding(facts_, code, error);
    PrintOut(facts_.Line() + L"\n");
    return code;
}

}  // namespace tavo
