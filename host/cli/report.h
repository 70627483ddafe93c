// What the user gets to know of a job: text for people, or a line of JSON.

#pragma once

#include <string>

#include "host/cli/json_text.h"
#include "host/cli/options.h"

namespace tavo {

// Of a failure outside a job. Prints one line, with `json` another on standard output, and returns
// `code`.
int ReportError(const std::wstring& error, int code, bool json);

// On standard output, or with --json on standard error.
void PrintText(const Options& options, const std::wstring& text);

class Report {
  public:
    // Of the job that has these options, which outlive it.
    explicit Report(const Options& options);

    // What --json adds. Other text goes to standard error then.
    JsonObject& Facts() { return facts_; }
    void Print(const std::wstring& text) { PrintText(options_, text); }
    // Without a full stop.
    void Warn(const std::wstring& text);

    // The last call. Prints the error, if any, and the line of JSON. Returns `code`.
    int Finish(int code, const std::wstring& error = {});

  private:
    std::wstring Named(const std::wstring& error) const;

    const Options& options_;
    JsonObject facts_;
    std::wstring warning_;
};

}  // namespace tavo
