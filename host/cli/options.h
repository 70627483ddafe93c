// The command line of vantrel.

#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/graph/run_options.h"

namespace tavo {

struct Options : RunOptions {
    std::wstring module;  // empty: the one beside the program
    bool sized = false;   // by --size
    bool overwrite = false;
    bool registered = false;
    bool graph = false;
    bool quiet = false;
    bool cpu = false;  // tell what the processor is, and nothing else
    bool help = false;
    bool version = false;
};

struct ParsedOptions {
    Options options;
    std::wstring error;  // one line without a full stop; empty when all is well
};

// `arguments` are those behind the program's name. An option's value may follow it or stand behind
// an equals sign; "--" ends the options. -h and /? are --help; it and --version need no files.
ParsedOptions ParseOptions(std::span<const std::wstring_view> arguments);

}  // namespace tavo
