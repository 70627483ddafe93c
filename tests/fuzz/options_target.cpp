// The bytes are the arguments of vantrel, with a zero after each. Bytes from 128 on are characters
// that no option knows. Options that are accepted must be ones that can be run.

#include "host/cli/options.h"

#include <vector>

#include "host/graph/setting_lookup.h"
#include "tests/fuzz/fuzz_input.h"

using tavo::Options;
using tavo::SettingName;

namespace tavo_test {
namespace {

std::vector<std::wstring> ArgumentsIn(FuzzBytes bytes) {
    std::vector<std::wstring> arguments(1);
    for (const uint8_t byte : bytes) {
        if (byte != 0) {
            arguments.back() += static_cast<wchar_t>(byte < 128 ? byte : byte + 0x3a0);
        } else {
            arguments.emplace_back();
        }
    }
    if (arguments.back().empty()) arguments.pop_back();
    return arguments;
}

bool IsCodeOf(std::span<const SettingName> names, int code) {
    return std::ranges::any_of(names, [&](const SettingName& name) { return name.code == code; });
}

void CheckAccepted(const Options& options) {
    const bool isSide = options.width >= 0 && options.width <= 65535 && options.height >= 0 &&
                        options.height <= 65535;
    Require(isSide && (!options.fit || options.width > 0 || options.height > 0));
    Require(!options.fit || !options.sized);
    Require(options.fps == 0.0 || (options.fps >= 0.01 && options.fps <= 100000.0));
    Require(IsCodeOf(tavo::MethodNames(), options.method));
    Require(IsCodeOf(tavo::FormatNames(), options.format));
    Require(IsCodeOf(tavo::TypeNames(), options.type));
    if (options.NeedsNoFiles()) return;
    const bool several = !options.inputs.empty();
    Require(several == !options.outputFolder.empty() && !(several && options.ToScreen()));
    Require(options.input.empty() == several);
    Require(options.output.empty() == (several || options.ToScreen()));
    Require(!several || options.log.empty());
    Require(!(options.play && options.pages) && !(options.asIs && options.fps > 0));
    Require(!options.ToScreen() || !(options.dryRun || options.json || !options.log.empty()));
    Require(options.section.start >= 0 && options.section.duration > 0);
    Require(!options.ToScreen() || options.section.IsAll());
    Require(!options.registered || options.module.empty());
}

}  // namespace

void FuzzOptions(FuzzBytes bytes) {
    const std::vector<std::wstring> arguments = ArgumentsIn(bytes);
    const std::vector<std::wstring_view> views(arguments.begin(), arguments.end());
    const tavo::ParsedOptions parsed = tavo::ParseOptions(views);
    if (parsed.error.empty()) CheckAccepted(parsed.options);
}

}  // namespace tavo_test
