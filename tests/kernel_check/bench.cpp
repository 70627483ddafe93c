// Each kernel runs for a while on one picture; the fastest of several runs counts.

#include "tests/kernel_check/bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>

#include "resample/kernel_table.h"
#include "tests/kernel_check/walk.h"
#include "tests/resample/support/engine_map.h"

namespace tavo::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::chrono::milliseconds kRunTime{8};
constexpr int kRuns = 3;

Sizes SizesOf(Axis axis) {
    switch (axis) {
        case Axis::Copy: return {kWidth, kHeight, kWidth, kHeight};
        case Axis::Vertical: return {kWidth, kHeight, kWidth, 720};
        case Axis::H720: return {720, kHeight, 480, kHeight};
        case Axis::H640: return {640, kHeight, 480, kHeight};
        case Axis::Horizontal: return {kWidth, kHeight, 1280, kHeight};
        case Axis::Both: return {kWidth, kHeight, 1280, 720};
    }
    return {};
}

// Nanoseconds of one call.
template <typename Call>
double Measure(Call call) {
    call();
    double best = 0;
    for (int run = 0; run < kRuns; ++run) {
        const Clock::time_point start = Clock::now();
        Clock::duration spent{};
        int calls = 0;
        do {
            call();
            ++calls;
            spent = Clock::now() - start;
        } while (spent < kRunTime);
        const double each = std::chrono::duration<double, std::nano>(spent).count() / calls;
        best = run == 0 ? each : std::min(best, each);
    }
    return best;
}

void Print(const std::string& label, double nanoseconds, double bytes) {
    std::printf("%-92s %11.0f ns/frame %8.0f MB/s\n", label.c_str(), nanoseconds,
                bytes / nanoseconds * 1000);
    std::fflush(stdout);
}

void BenchScaleRow(const ScaleRow& row, const Backend& backend, const std::string& filter) {
    const CasePlan plan{row.axis, SizesOf(row.axis), MapKind::OfSizes, Pattern::Random, 1};
    const Sizes& sizes = plan.sizes;
    const size_t size = static_cast<size_t>(StrideOf(row.format, sizes.dstWidth)) *
                        static_cast<size_t>(sizes.dstHeight);
    Source source{row.format, 0, 0, {}};
    std::optional<EngineMap> xMap, yMap;
    std::vector<uint8_t> dst(size + 8);
    for (int slot = 3; slot < kKernelSlots; ++slot) {
        const std::string label = LabelOf(row, slot, backend);
        if (!CoversSlot(backend, slot) || !Matches(label, filter)) continue;
        if (source.bytes.empty()) {
            source = MakeSource(row.format, plan);
            const Maps maps = MakeMaps(plan);
            xMap.emplace(maps.x);
            yMap.emplace(maps.y);
        }
        const ScaleKernel kernel = KernelTable[row.row][slot].scale;
        const double each = Measure([&] {
            kernel(dst.data(), source.bytes.data(), sizes.dstWidth, sizes.dstHeight, sizes.srcWidth,
                   sizes.srcHeight, xMap->Record(), yMap->Record());
        });
        Print(label, each, static_cast<double>(size));
    }
}

void BenchCopyRow(const CopyRow& row, const Backend& backend, const std::string& filter) {
    const int bytesPerPixel = BytesPerPixel(row.formats[0]);
    const size_t size = static_cast<size_t>(StrideOf(row.formats[0], kWidth)) * kHeight;
    const std::vector<uint8_t> source(size + 8, 1);
    std::vector<uint8_t> dst(size + 8);
    for (int slot : {3, 4}) {
        const std::string label = LabelOf(row, slot, backend);
        if (!Matches(label, filter)) continue;
        const CopyKernel kernel = KernelTable[row.row][slot].copy;
        const double each =
            Measure([&] { kernel(dst.data(), source.data(), kWidth, kHeight, bytesPerPixel * 8); });
        Print(label, each, static_cast<double>(size));
    }
}

}  // namespace

int Bench(const std::string& filter) {
    for (const Backend& backend : RunnableBackends()) {
        if (backend.isLevel) continue;
        Activate(backend);
        for (const CopyRow& row : kCopyRows) BenchCopyRow(row, backend, filter);
        for (const ScaleRow& row : kScaleRows) BenchScaleRow(row, backend, filter);
    }
    return 0;
}

}  // namespace tavo::test
