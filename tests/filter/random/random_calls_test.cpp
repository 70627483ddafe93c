// Random sequences of calls on the module, each from a seed of its own:
//
//   TAVO_SEED=4711 random_calls_test.exe      this sequence alone, with all its calls told
//   TAVO_ROUNDS=100 random_calls_test.exe     a hundred times as many as by default
//
// Needs a display.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/filter/random/sequence.h"
#include "tests/filter/random/step_watch.h"
#include "tests/support/rounds.h"
#include "tests/support/task_memory.h"
#include "tests/support/unmanaged_windows.h"

using namespace tavo_test;

namespace {

constexpr int kActs = 60;
// A long run tells each time how far it has come.
constexpr int kTold = 500;

// Before the first window.
const UnmanagedWindows g_unmanaged(L"random_calls_test.exe");

// What the module and the platform make once, with the first of everything.
void WarmUp(FailingImports& imports) {
    {
        const ComPtr<IBaseFilter> filter = CreateFilter();
        PageFrame frame(CLSID_TimeRegulatorPropertyPage);
        frame.Connect(filter.Get());
        frame.Open();
    }
    imports.StartCounting();
}

void Tell() {
    const Sequence::Totals& totals = Sequence::totals;
    std::printf(
        "  %ld sequences, %ld calls, %ld of them with something refused (%s)\n"
        "  %ld connections, %ld frames, %ld pages\n",
        totals.sequences, totals.calls, totals.callsRefused,
        FailingImports::AllRefusedText().c_str(), totals.connections, totals.samples, totals.pages);
    std::fflush(stdout);
}

TEST(RandomCalls, FromManySeeds) {
    const ComApartment com;
    const StepWatch watch;
    ASSERT_TRUE(TheModule().loaded());
    FailingImports imports;
    WarmUp(imports);
    const LiveCounts before = CurrentLiveCounts();
    const char* const only = std::getenv("TAVO_SEED");
    const unsigned first = only ? static_cast<unsigned>(std::strtoul(only, nullptr, 10)) : 1;
    const int sequences = only ? 1 : Rounds(200);
    for (int i = 0; i < sequences && !HasFailure(); ++i) {
        {
            Sequence sequence(first + static_cast<unsigned>(i), imports, only != nullptr);
            sequence.Run(kActs);
        }
        if (i % kTold == kTold - 1 && i + 1 < sequences) Tell();
        EXPECT_EQ(CurrentLiveCounts(), before) << "TAVO_SEED=" << first + static_cast<unsigned>(i);
    }
    Tell();
    if (only || HasFailure()) return;
    const Sequence::Totals& totals = Sequence::totals;
    // A sequence that is refused everything tests nothing.
    EXPECT_GT(totals.connections, sequences / 2);
    EXPECT_GT(totals.samples, 3 * sequences);
    EXPECT_GT(totals.callsRefused, sequences / 2);
}

}  // namespace
