// kernel_check: compares every kernel of the dispatch table, on every instruction set, with an
// oracle that shares nothing with the engine.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "resample/kernel_table.h"
#include "tests/kernel_check/bench.h"
#include "tests/kernel_check/walk.h"
#include "tests/resample/support/held_memory.h"

namespace {

using namespace tavo;
using namespace tavo::test;

constexpr char kUsage[] =
    "Usage: kernel_check [--seed N] [--filter TEXT] [--list] [--quick] [--share N]\n"
    "                    [--small-memory] [--bench]\n"
    "  --seed N       other data and other sizes where they are random; 1 unless given\n"
    "  --filter TEXT  only what --list shows with TEXT in its line\n"
    "  --list         show what would be checked\n"
    "  --quick        fewer sizes\n"
    "  --share N      one of N cases, for emulators\n"
    "  --small-memory as if kernels on other threads held all shared work memory\n"
    "  --bench        measure instead of checking\n";

enum class Action { Check, List, Bench };

struct Options {
    WalkOptions walk{{false, 1}, ""};
    Action action = Action::Check;
    bool smallMemory = false;
};

template <typename Number>
bool ParseNumber(const char* text, Number& number) {
    char* end = nullptr;
    number = static_cast<Number>(std::strtoull(text, &end, 10));
    return *end == '\0' && end != text;
}

bool Parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argument, "--seed") == 0 && hasValue) {
            if (!ParseNumber(argv[++i], options.walk.effort.seed)) return false;
        } else if (std::strcmp(argument, "--filter") == 0 && hasValue) {
            options.walk.filter = argv[++i];
        } else if (std::strcmp(argument, "--quick") == 0) {
            options.walk.effort.quick = true;
        } else if (std::strcmp(argument, "--share") == 0 && hasValue) {
            if (!ParseNumber(argv[++i], options.walk.effort.share)) return false;
            if (options.walk.effort.share == 0) return false;
        } else if (std::strcmp(argument, "--small-memory") == 0) {
            options.smallMemory = true;
        } else if (std::strcmp(argument, "--list") == 0) {
            options.action = Action::List;
        } else if (std::strcmp(argument, "--bench") == 0) {
            options.action = Action::Bench;
        } else {
            return false;
        }
    }
    return true;
}

template <typename Row>
void ListRow(const Row& row, const std::string& filter) {
    for (const Backend& backend : RunnableBackends()) {
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            const std::string label = LabelOf(row, slot, backend);
            if (CoversSlot(backend, slot) && Matches(label, filter)) std::puts(label.c_str());
        }
    }
}

int List(const WalkOptions& options) {
    for (const CopyRow& row : kCopyRows) ListRow(row, options.filter);
    for (const ScaleRow& row : kScaleRows) ListRow(row, options.filter);
    return 0;
}

int Check(const WalkOptions& options) {
    std::printf("kernel_check, seed %llu%s\n", static_cast<unsigned long long>(options.effort.seed),
                options.effort.quick ? ", quick" : "");
    Tally tally;
    for (const CopyRow& row : kCopyRows) WalkCopyRow(row, options, tally);
    for (const ScaleRow& row : kScaleRows) WalkScaleRow(row, options, tally);
    std::printf("%llu passed, %llu failed\n", static_cast<unsigned long long>(tally.Passed()),
                static_cast<unsigned long long>(tally.Failed()));
    if (tally.Passed() + tally.Failed() == 0) {
        std::fprintf(stderr, "Nothing matches the filter\n");
        return 2;
    }
    return tally.Failed() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!Parse(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    FillKernelTable();
    std::optional<HeldMemory> held;
    if (options.smallMemory) held.emplace();
    switch (options.action) {
        case Action::List: return List(options.walk);
        case Action::Bench: return Bench(options.walk.filter);
        case Action::Check: break;
    }
    return Check(options.walk);
}
