// The floors as data.

#include "bench/compare/floors.h"

#include <algorithm>

namespace tavo::bench {
namespace {

// Of hot pictures. 0: not asked for.
struct Floor {
    Method method;
    AxisMode mode;
    FamilyGroup group;
    double ratio;         // to the best peer
    double timeToMemory;  // with AVX2 too
    double avx2Ratio;     // with AVX2 at most
    double ssse3Ratio;
};

using enum FamilyGroup;
constexpr Floor kFloors[] = {
    {Method::Bilinear, AxisMode::Both, Planar, 2, 0, 2.5, 1.7},
    {Method::Bilinear, AxisMode::Both, Packed422, 2.5, 0, 3, 2},
    {Method::Bilinear, AxisMode::Both, Rgb24, 3, 0, 3.2, 2.3},
    {Method::Bilinear, AxisMode::Both, Rgb16, 2.5, 0, 3.5, 0},
    {Method::Bilinear, AxisMode::Width, Planar, 2.5, 0, 0, 0},
    {Method::Bilinear, AxisMode::Width, Packed422, 3, 0, 3.3, 2.2},
    {Method::Bilinear, AxisMode::Width, Rgb24, 3.5, 0, 0, 0},
    {Method::Bilinear, AxisMode::Width, Rgb16, 2.5, 0, 0, 0},
    {Method::Bilinear, AxisMode::Height, Planar, 0.95, 1.1, 0, 0},
    {Method::Bilinear, AxisMode::Height, Packed422, 0.95, 1.1, 0, 0},
    {Method::Bilinear, AxisMode::Height, Rgb24, 0.95, 1.1, 0, 0},
    {Method::Bilinear, AxisMode::Height, Rgb16, 2, 0, 0, 0},
    {Method::Nearest, AxisMode::Both, Planar, 2.4, 0, 0, 0},
    {Method::Nearest, AxisMode::Both, Packed422, 4, 0, 0, 0},
    {Method::Nearest, AxisMode::Both, Rgb24, 2.4, 0, 0, 0},
    {Method::Nearest, AxisMode::Both, Rgb16, 1.1, 0, 0, 0},
    {Method::Nearest, AxisMode::Width, Planar, 2.4, 0, 0, 0},
    {Method::Nearest, AxisMode::Width, Packed422, 4, 0, 0, 0},
    {Method::Nearest, AxisMode::Width, Rgb24, 2.4, 0, 0, 0},
    {Method::Nearest, AxisMode::Width, Rgb16, 1.1, 0, 1.1, 0},
    {Method::Nearest, AxisMode::Height, Planar, 0, 1.1, 0, 0},
    {Method::Nearest, AxisMode::Height, Packed422, 0, 1.1, 0, 0},
    {Method::Nearest, AxisMode::Height, Rgb24, 0, 1.1, 0, 0},
    {Method::Nearest, AxisMode::Height, Rgb16, 0, 1.1, 0, 0},
    {Method::Copy, AxisMode::Copy, Planar, 0, 1.1, 0, 0},
    {Method::Copy, AxisMode::Copy, Packed422, 0, 1.1, 0, 0},
    {Method::Copy, AxisMode::Copy, Rgb24, 0, 1.1, 0, 0},
    {Method::Copy, AxisMode::Copy, Rgb16, 0, 1.1, 0, 0},
};

// Geometric means of the ratios of all bilinear cases.
struct MeanFloor {
    Caches caches;
    Build build;
    double ratio;
};
constexpr MeanFloor kMeanFloors[] = {
    {Caches::Cold, Build64, 3.8},      {Caches::Cold, Avx2Build64, 3.4},
    {Caches::Cold, Ssse3Build64, 2.6}, {Caches::Hot, Build64, 4.3},
    {Caches::Hot, Build32, 4.0},       {Caches::Hot, Avx2Build64, 3.6},
    {Caches::Hot, Avx2Build32, 3.4},
};

// Bilinear on both axes, from and to 1080 rows, cold.
constexpr double kTimeToMemory = 1.5;

const char* NameOf(FamilyGroup group) {
    switch (group) {
        case Planar: return "planar";
        case Packed422: return "YUY2, UYVY";
        case Rgb24: return "RGB24";
        case Rgb16: break;
    }
    return "RGB555, RGB565";
}

// The worst of the cases chosen; nothing where none was measured.
template <typename Choose, typename Value>
void AddWorst(std::vector<Check>& checks, const Results& results, Check check, Choose choose,
              Value value) {
    check.value = 0;
    for (const CaseResult& result : results.cases) {
        const double measured = choose(result.work) ? value(result) : 0;
        if (measured <= 0) continue;
        const bool isWorse = check.isAtLeast ? measured < check.value : measured > check.value;
        if (check.value > 0 && !isWorse) continue;
        check.value = measured;
        check.worst = TextOf(result.work);
    }
    if (check.value > 0) checks.push_back(check);
}

void AddFloor(std::vector<Check>& checks, const Results& results, const Floor& floor, Build build,
              double ratio, double timeToMemory) {
    const auto choose = [&floor](const Case& work) {
        return work.method == floor.method && work.Mode() == floor.mode &&
               work.Info().group == floor.group;
    };
    std::string subject = NameOf(floor.method);
    if (floor.mode != AxisMode::Copy) subject += std::string(" ") + NameOf(floor.mode);
    subject += std::string(", ") + NameOf(floor.group);
    if (ratio > 0) {
        AddWorst(checks, results, {results.caches, subject, build, true, ratio, 0, {}}, choose,
                 [build](const CaseResult& result) { return result.Ratio(build); });
    }
    if (timeToMemory > 0) {
        AddWorst(checks, results, {results.caches, subject, build, false, timeToMemory, 0, {}},
                 choose, [build](const CaseResult& result) { return result.TimeToMemory(build); });
    }
}

bool IsBilinear(const Case& work) { return work.method == Method::Bilinear; }

bool IsFullHd(const Case& work) {
    return IsBilinear(work) && work.Mode() == AxisMode::Both &&
           std::max(work.sizes.srcHeight, work.sizes.dstHeight) == 1080;
}

void AddMean(std::vector<Check>& checks, const Results& results, const MeanFloor& floor) {
    if (results.caches != floor.caches) return;
    const double mean = results.MeanRatio(floor.build, IsBilinear);
    if (mean <= 0) return;
    checks.push_back(
        {floor.caches, "mean of all bilinear", floor.build, true, floor.ratio, mean, {}});
}

void AddHotFloors(std::vector<Check>& checks, const Results& hot) {
    for (const Build build : kAllBuilds) {
        for (const Floor& floor : kFloors) {
            const bool isSsse3 = build == Ssse3Build64 || build == Ssse3Build32;
            const bool isAvx2 = build == Avx2Build64 || build == Avx2Build32;
            const double ratio = isSsse3  ? floor.ssse3Ratio
                                 : isAvx2 ? floor.avx2Ratio
                                          : floor.ratio;
            AddFloor(checks, hot, floor, build, ratio, isSsse3 ? 0 : floor.timeToMemory);
        }
    }
}

}  // namespace

std::vector<Check> CheckFloors(const Run& run) {
    std::vector<Check> checks;
    for (const Results* results : {&run.cold, &run.hot}) {
        for (const MeanFloor& floor : kMeanFloors) AddMean(checks, *results, floor);
    }
    AddWorst(checks, run.cold,
             {Caches::Cold, "bilinear both, 1080 rows", Build64, false, kTimeToMemory, 0, {}},
             IsFullHd, [](const CaseResult& result) { return result.TimeToMemory(Build64); });
    AddHotFloors(checks, run.hot);
    return checks;
}

}  // namespace tavo::bench
