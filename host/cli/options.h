// The command line of vantrel.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/graph/run_options.h"

namespace tavo {

struct Options : RunOptions {
    // Several inputs, perhaps with wildcards, and the folder of their outputs. Then `input` and
    // `output` are empty, and else these.
    std::vector<std::wstring> inputs;
    std::wstring outputFolder;
    bool oneOfSeveral = false;  // the job of one of those inputs
    std::wstring module;        // empty: the module beside the program
    bool sized = false;         // by --size
    bool overwrite = false;
    bool dryRun = false;  // tell what would be done
    bool json = false;    // statistics for programs
    bool registered = false;
    bool graph = false;
    bool quiet = false;
    bool publish = false;  // the graph, to other programs
    bool cpu = false;      // describe the processor and exit
    bool list = false;     // list what the options accept, and the decoders, and exit
    bool help = false;
    bool version = false;

    bool NeedsNoFiles() const { return help || version || cpu || list; }
};

struct ParsedOptions {
    Options options;
    std::wstring error;  // one line without a full stop; empty on success
};

// `arguments` are those after the program's name. A value may follow its option, or an equals sign.
// "--" ends the options. -h and /? mean --help; it, --version, --cpu
// and --list need no files.
ParsedOptions ParseOptions(std::span<const std::wstring_view> arguments);

// All options, with their other names.
std::vector<std::wstring_view> OptionNames();

}  // namespace tavo
