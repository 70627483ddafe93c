// Measures kernels and, in turn with each call, a plain move of the same bytes: every source byte
// read once, every destination byte written once. The ratio of the two holds on a busy machine too.
//   MB/s      source and destination bytes per second, from the median call
//   copyMB/s  the same for the plain move
//   ofCopy    kernel speed as a part of the plain move's

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

#include "bench/memory_limit.h"
#include "bench/scaling.h"
#include "bench/stopwatch.h"
#include "bench/workloads.h"
#include "cpu/cpu_level.h"
#include "resample/kernel_table.h"

namespace tavo::bench {
namespace {

using Clock = std::chrono::steady_clock;

const char* VariantName(bool isCopy, int slot) {
    switch (slot) {
        case SlotNearest: return isCopy ? "Portable" : "Nearest";
        case SlotNearestMmx: return isCopy ? "Mmx" : "NearestMmx";
        case SlotNearestSse: return "NearestSse";
        case SlotBilinear: return "Bilinear";
        case SlotBilinearMmx: return "BilinearMmx";
        default: return "BilinearSse";
    }
}

double SecondsBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

void Measure(benchmark::State& state, const FamilyInfo& family, const Sizes& sizes,
             KernelEntry entry) {
    const Scaling scaling(family, sizes);
    if (!scaling.IsReady()) {
        state.SkipWithError("out of memory");
        return;
    }
    MemoryLimit limit(family, sizes);
    std::vector<double> kernelSeconds, moveSeconds;
    for (auto _ : state) {
        const auto start = Clock::now();
        scaling.Run(entry);
        benchmark::ClobberMemory();
        const auto scaled = Clock::now();
        limit.Run();
        benchmark::ClobberMemory();
        const auto moved = Clock::now();
        state.SetIterationTime(SecondsBetween(start, scaled));
        kernelSeconds.push_back(SecondsBetween(start, scaled));
        moveSeconds.push_back(SecondsBetween(scaled, moved));
    }
    const double megaBytes = static_cast<double>(scaling.Bytes()) / 1e6;
    const double kernel = Median(kernelSeconds);
    const double move = Median(moveSeconds);
    state.counters["MB/s"] = megaBytes / kernel;
    state.counters["copyMB/s"] = megaBytes / move;
    state.counters["ofCopy"] = move / kernel;
}

// True when an earlier constant slot of the row holds the same kernel.
bool IsRepeated(int row, int slot) {
    for (int earlier = SlotNearest; earlier < slot; ++earlier) {
        if (KernelTable[row][earlier].scale == KernelTable[row][slot].scale) return true;
    }
    return false;
}

std::string SizesOf(const Sizes& sizes) {
    return std::to_string(sizes.srcWidth) + 'x' + std::to_string(sizes.srcHeight) + '>' +
           std::to_string(sizes.dstWidth) + 'x' + std::to_string(sizes.dstHeight);
}

void Register(const FamilyInfo& family, const Sizes& sizes) {
    const int32_t row = family.RowFor(sizes);
    const std::string prefix = std::string(family.name) + '/' + NameOf(sizes.Mode()) + '/';
    for (int slot = SlotNearest; slot < kKernelSlots; ++slot) {
        const KernelEntry entry = KernelTable[row][slot];
        if (!entry.scale || IsRepeated(row, slot)) continue;
        const std::string name =
            prefix + VariantName(family.IsCopy(row), slot) + '/' + SizesOf(sizes);
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&family, &sizes, entry](benchmark::State& state) {
                                         Measure(state, family, sizes, entry);
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace
}  // namespace tavo::bench

int main(int argc, char** argv) {
    tavo::FillKernelTable();
    benchmark::AddCustomContext("processor level", std::to_string(tavo::GetCpuLevel()));
    for (const tavo::bench::FamilyInfo& family : tavo::bench::kFamilies) {
        for (const tavo::bench::Sizes& sizes : tavo::bench::kWorkloads) {
            tavo::bench::Register(family, sizes);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
