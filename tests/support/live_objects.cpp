// Process-wide counters of the test library's objects.
#include "tests/support/live_objects.h"

#include <array>
#include <atomic>

namespace tavo_test {
namespace {

std::array<std::atomic<long>, 4> g_live;

long Live(LiveKind kind) { return g_live[static_cast<size_t>(kind)].load(); }

}  // namespace

void CountLive(LiveKind kind, int change) { g_live[static_cast<size_t>(kind)] += change; }

LiveCounts CurrentLiveCounts() {
    return {Live(LiveKind::kFilter), Live(LiveKind::kAllocator), Live(LiveKind::kSample),
            Live(LiveKind::kEnumerator)};
}

std::ostream& operator<<(std::ostream& out, const LiveCounts& counts) {
    return out << "{filters " << counts.filters << ", allocators " << counts.allocators
               << ", samples " << counts.samples << ", enumerators " << counts.enumerators << "}";
}

}  // namespace tavo_test
