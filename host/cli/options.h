// The command line of vantrel.

#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tavo {

struct Options {
    std::wstring input;
    std::wstring output;
    std::wstring module;  // empty: the one beside the program
    int width = 0;        // 0 keeps the source's
    int height = 0;
    bool sized = false;  // by --size
    bool fit = false;    // width and height are a box for the picture; neither is 0
    int method = 0;      // codes of the filter's settings
    int format = 0;
    int type = 0;
    double fps = 0.0;   // 0: the time regulator is off
    bool asIs = false;  // frame for frame, whatever their times
    bool overwrite = false;
    bool registered = false;
    bool graph = false;
    bool quiet = false;
    bool play = false;   // in a window; there is no output
    bool pages = false;  // the same, with the filter's property pages
    bool cpu = false;    // tell what the processor is, and nothing else
    bool help = false;
    bool version = false;

    bool ToScreen() const { return play || pages; }
};

struct ParsedOptions {
    Options options;
    std::wstring error;  // one line without a full stop; empty when all is well
};

// `arguments` are those behind the program's name. An option's value may follow it or stand behind
// an equals sign; "--" ends the options. -h and /? are --help; it and --version need no files.
ParsedOptions ParseOptions(std::span<const std::wstring_view> arguments);

// What --help prints.
std::wstring UsageText();

}  // namespace tavo
