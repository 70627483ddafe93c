// Parses the command line; each option is a row of a table.

#include "host/cli/options.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "host/cli/time_value.h"
#include "host/cli/wildcard.h"
#include "host/graph/quoted.h"
#include "host/graph/setting_lookup.h"

namespace tavo {
namespace {

using std::wstring;
using std::wstring_view;

// The filter counts hundredths of a frame per second. A frame lasts at least 100 ns.
constexpr double kMinFps = 0.01;
constexpr double kMaxFps = 100000.0;

// Other characters become one that no number contains.
std::string Narrow(wstring_view text) {
    std::string narrow;
    for (const wchar_t c : text) narrow += c > 0 && c < 128 ? static_cast<char>(c) : '?';
    return narrow;
}

template <typename Number>
std::optional<Number> ParseNumber(wstring_view text) {
    const std::string narrow = Narrow(text);
    Number value{};
    const char* end = narrow.data() + narrow.size();
    const auto [stop, error] = std::from_chars(narrow.data(), end, value);
    return error == std::errc{} && stop == end ? std::optional(value) : std::nullopt;
}

std::optional<int> ParseSide(wstring_view text) {
    const std::optional<int> value = ParseNumber<int>(text);
    return value && *value >= 0 && *value <= kMaxSide ? value : std::nullopt;
}

bool ParseSides(Options& options, wstring_view value) {
    const size_t cross = value.find_first_of(L"xX");
    if (cross == wstring_view::npos) return false;
    const auto width = ParseSide(value.substr(0, cross));
    const auto height = ParseSide(value.substr(cross + 1));
    if (!width || !height) return false;
    options.width = *width;
    options.height = *height;
    return true;
}

// --size and --fit exclude each other: the second one is an error.
wstring SetSize(Options& options, wstring_view value) {
    if (options.fit) return L"--size and --fit exclude each other";
    if (ParseSides(options, value)) {
        options.sized = true;
        return {};
    }
    return L"--size wants WIDTHxHEIGHT, each from 0 (as the source) to 65535, and not " +
           Quoted(value);
}

wstring SetFit(Options& options, wstring_view value) {
    if (options.sized) return L"--size and --fit exclude each other";
    if (ParseSides(options, value) && (options.width > 0 || options.height > 0)) {
        options.fit = true;
        return {};
    }
    return L"--fit wants WIDTHxHEIGHT, each from 1 to 65535, or 0 for one that does not matter, "
           L"and not " +
           Quoted(value);
}

// A decimal number, or a fraction such as 30000/1001.
wstring SetFps(Options& options, wstring_view value) {
    const size_t slash = value.find(L'/');
    std::optional<double> fps = ParseNumber<double>(value.substr(0, slash));
    if (slash != wstring_view::npos && fps) {
        const auto divisor = ParseNumber<double>(value.substr(slash + 1));
        fps = divisor && *divisor > 0 ? std::optional(*fps / *divisor) : std::nullopt;
    }
    // Also refuses NaN.
    if (!fps || !(*fps >= kMinFps && *fps <= kMaxFps)) {
        return L"--fps wants frames per second from 0.01 to 100000, and not " + Quoted(value);
    }
    options.fps = *fps;
    return {};
}

wstring SetStart(Options& options, wstring_view value) {
    const std::optional<int64_t> time = ParseTime(value);
    if (!time) return L"--start wants seconds or H:MM:SS.fff, and not " + Quoted(value);
    options.section.start = *time;
    return {};
}

wstring SetDuration(Options& options, wstring_view value) {
    const std::optional<int64_t> time = ParseTime(value);
    if (!time || *time == 0) {
        return L"--duration wants seconds or H:MM:SS.fff, above 0, and not " + Quoted(value);
    }
    options.section.duration = *time;
    return {};
}

wstring SetNamed(int& target, std::span<const SettingName> names, const wchar_t* option,
                 wstring_view value) {
    const std::optional<int> code = FindSetting(names, value);
    if (!code) {
        return wstring(option) + L" knows no " + Quoted(value) + L", only " + ListSettings(names);
    }
    target = *code;
    return {};
}

// Path rules differ between builds, so this does not use them.
bool HasExtension(wstring_view file, wstring_view extension) {
    const size_t slash = file.find_last_of(L"/\\:");
    const wstring_view name = slash == wstring_view::npos ? file : file.substr(slash + 1);
    return name.size() > extension.size() &&
           std::ranges::equal(name.substr(name.size() - extension.size()), extension, {},
                              [](wchar_t c) { return c >= L'A' && c <= L'Z' ? c + 32 : c; });
}

wstring SetLog(Options& options, wstring_view value) {
    options.log = value;
    if (HasExtension(value, L".csv")) return {};
    return L"--log wants a file whose name ends with .csv, and not " + Quoted(value);
}

struct OptionRow {
    const wchar_t* name;
    // A flag, or a function that takes a value and returns an error or nothing.
    bool Options::*flag;
    wstring (*set)(Options&, wstring_view value);
};

const OptionRow kOptions[] = {
    {L"--size", nullptr, SetSize},
    {L"--fit", nullptr, SetFit},
    {L"--method", nullptr,
     [](Options& o, wstring_view v) { return SetNamed(o.method, MethodNames(), L"--method", v); }},
    {L"--format", nullptr,
     [](Options& o, wstring_view v) { return SetNamed(o.format, FormatNames(), L"--format", v); }},
    {L"--type", nullptr,
     [](Options& o, wstring_view v) { return SetNamed(o.type, TypeNames(), L"--type", v); }},
    {L"--fps", nullptr, SetFps},
    {L"--start", nullptr, SetStart},
    {L"--duration", nullptr, SetDuration},
    {L"--as-is", &Options::asIs, nullptr},
    {L"--no-sound", &Options::noSound, nullptr},
    {L"--output-folder", nullptr,
     [](Options& o, wstring_view v) {
         o.outputFolder = v;
         return v.empty() ? wstring(L"--output-folder wants the path of a folder") : wstring();
     }},
    {L"--log", nullptr, SetLog},
    {L"--json", &Options::json, nullptr},
    {L"--dry-run", &Options::dryRun, nullptr},
    {L"--overwrite", &Options::overwrite, nullptr},
    {L"--module", nullptr,
     [](Options& o, wstring_view v) {
         o.module = v;
         return v.empty() ? wstring(L"--module wants the path of a file") : wstring();
     }},
    {L"--registered", &Options::registered, nullptr},
    {L"--graph", &Options::graph, nullptr},
    {L"--publish", &Options::publish, nullptr},
    {L"--quiet", &Options::quiet, nullptr},
    {L"--play", &Options::play, nullptr},
    {L"--pages", &Options::pages, nullptr},
    {L"--cpu", &Options::cpu, nullptr},
    {L"--list", &Options::list, nullptr},
    {L"--help", &Options::help, nullptr},
    {L"-h", &Options::help, nullptr},
    {L"/?", &Options::help, nullptr},
    {L"--version", &Options::version, nullptr},
};

const OptionRow* FindOption(wstring_view name) {
    for (const OptionRow& row : kOptions) {
        if (name == row.name) return &row;
    }
    return nullptr;
}

// Parses the option at `next` and its value, and moves `next` past both.
wstring ParseOption(Options& options, std::span<const wstring_view> arguments, size_t& next) {
    const wstring_view argument = arguments[next++];
    const size_t equals = argument.find(L'=');
    const wstring_view name = argument.substr(0, equals);
    const OptionRow* row = FindOption(name);
    if (row == nullptr) return L"there is no option " + Quoted(name);
    if (row->flag != nullptr) {
        if (equals != wstring_view::npos) return wstring(name) + L" takes no value";
        options.*row->flag = true;
        return {};
    }
    if (equals != wstring_view::npos) return row->set(options, argument.substr(equals + 1));
    if (next >= arguments.size()) return wstring(name) + L" wants a value";
    return row->set(options, arguments[next++]);
}

wstring CheckFilesToWrite(const std::vector<wstring_view>& files) {
    if (files.empty()) return L"the names of the input and of the output file are missing";
    if (files.size() == 1) return L"the name of the output file is missing";
    if (files.size() > 2) {
        return L"one input and one output, but there is also " + Quoted(files[2]) +
               L"; several inputs want --output-folder";
    }
    return {};
}

wstring CheckFilesToPlay(const std::vector<wstring_view>& files) {
    if (files.empty()) return L"the name of the input file is missing";
    if (files.size() > 1) return L"one input and no output, but there is also " + Quoted(files[1]);
    return {};
}

// What makes no sense without an output file.
wstring CheckNothingIsWritten(const Options& options) {
    const struct {
        bool given;
        const wchar_t* name;
    } rows[] = {{options.dryRun, L"--dry-run"},
                {options.json, L"--json"},
                {!options.section.IsAll(), L"--start or --duration"},
                {options.noSound, L"--no-sound"},
                {!options.log.empty(), L"--log"},
                {!options.outputFolder.empty(), L"--output-folder"}};
    for (const auto& row : rows) {
        if (row.given) return wstring(row.name) + L" is for runs that write a file";
    }
    return {};
}

bool EndsWithSlash(wstring_view file) { return file.ends_with(L'/') || file.ends_with(L'\\'); }

// A last name that ends with a slash means a folder for the outputs.
void TakeFolder(Options& options, std::vector<wstring_view>& files) {
    if (!options.outputFolder.empty() || files.size() < 2 || !EndsWithSlash(files.back())) return;
    options.outputFolder = files.back();
    files.pop_back();
}

wstring CheckChoices(const Options& options) {
    if (options.registered && !options.module.empty()) {
        return L"--registered and --module exclude each other";
    }
    if (options.asIs && options.fps > 0) return L"--as-is and --fps exclude each other";
    return {};
}

wstring SetInputs(Options& options, const std::vector<wstring_view>& files) {
    if (files.empty()) return L"the name of the input file is missing";
    for (const wstring_view file : files) {
        if (file.empty()) return L"the name of a file is empty";
        if (HasWildcardInFolder(file)) {
            return L"only the last part of a name may have * and ?, and not " + Quoted(file);
        }
        options.inputs.emplace_back(file);
    }
    if (!options.log.empty()) return L"--log is for one output file, and not for a folder";
    return CheckChoices(options);
}

wstring SetFiles(Options& options, std::vector<wstring_view>& files) {
    if (options.help || options.version) return {};
    if (options.NeedsNoFiles()) return CheckNothingIsWritten(options);
    if (options.play && options.pages) return L"--play and --pages exclude each other";
    if (!options.ToScreen()) TakeFolder(options, files);
    if (!options.ToScreen() && !options.outputFolder.empty()) return SetInputs(options, files);
    const wstring error = options.ToScreen() ? CheckFilesToPlay(files) : CheckFilesToWrite(files);
    if (!error.empty()) return error;
    if (std::ranges::any_of(files, &wstring_view::empty)) return L"the name of a file is empty";
    const wstring choices = CheckChoices(options);
    if (!choices.empty()) return choices;
    options.input = files[0];
    if (options.ToScreen()) return CheckNothingIsWritten(options);
    options.output = files[1];
    if (HasExtension(options.output, L".avi")) return {};
    return L"the output is an AVI file: its name has to end with .avi, and not be " +
           Quoted(options.output);
}

}  // namespace

ParsedOptions ParseOptions(std::span<const wstring_view> arguments) {
    ParsedOptions parsed;
    std::vector<wstring_view> files;
    bool optionsEnded = false;
    for (size_t next = 0; next < arguments.size();) {
        const wstring_view argument = arguments[next];
        const bool isOption =
            !optionsEnded && ((argument.size() > 1 && argument[0] == L'-') || argument == L"/?");
        if (!isOption) {
            files.push_back(argument);
            ++next;
        } else if (argument == L"--") {
            optionsEnded = true;
            ++next;
        } else {
            parsed.error = ParseOption(parsed.options, arguments, next);
            if (!parsed.error.empty()) return parsed;
        }
    }
    parsed.error = SetFiles(parsed.options, files);
    return parsed;
}

std::vector<wstring_view> OptionNames() {
    std::vector<wstring_view> names;
    for (const OptionRow& row : kOptions) names.emplace_back(row.name);
    return names;
}

}  // namespace tavo
