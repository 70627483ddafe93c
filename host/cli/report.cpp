// Standard output gets what was asked for, standard error the rest.

#include "host/cli/report.h"

#include "host/cli/console.h"

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

Report::Report(const Options& options) : options_(options) {
    facts_.Text(L"input", options.input);
    if (!options.ToScreen()) facts_.Text(L"output", options.output);
    if (options.dryRun) facts_.Flag(L"dryRun", true);
}

void Report::Print(const std::wstring& text) { options_.json ? PrintError(text) : PrintOut(text); }

void Report::Warn(const std::wstring& text) {
    PrintErrorLine(L"warning: " + text);
    warning_ = text;
}

int Report::Finish(int code, const std::wstring& error) {
    if (!error.empty()) PrintErrorLine(error);
    if (!options_.json) return code;
    if (!warning_.empty()) facts_.Text(L"warning", warning_);
    AddEnding(facts_, code, error);
    PrintOut(facts_.Line() + L"\n");
    return code;
}

}  // namespace tavo
