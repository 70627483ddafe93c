// The floors as data.

#include "bench/compare/floors.h"

namespace tavo::bench {
namespace {

struct Floor {
    Method method;
    AxisMode mode;
    FamilyGroup group;
    double ratio;         // to the best peer; 0: not asked for
    double timeToMemory;  // 0: not asked for
    double ssse3Ratio;    // with SSSE3 at most; 0: not asked for
};

using enum FamilyGroup;
constexpr Floor kFloors[] = {
    {Method::Bilinear, AxisMode::Both, Planar, 2, 0, 1.7},
    {Method::Bilinear, AxisMode::Both, Packed422, 2.5, 0, 1.3},
    {Method::Bilinear, AxisMode::Both, Rgb24, 3, 0, 2.3},
    {Method::Bilinear, AxisMode::Both, Rgb16, 2.5, 0, 0},
    {Method::Bilinear, AxisMode::Width, Planar, 2.5, 0, 0},
    {Method::Bilinear, AxisMode::Width, Packed422, 3, 0, 0},
    {Method::Bilinear, AxisMode::Width, Rgb24, 3.5, 0, 0},
    {Method::Bilinear, AxisMode::Width, Rgb16, 2.5, 0, 0},
    {Method::Bilinear, AxisMode::Height, Planar, 0.95, 1.1, 0},
    {Method::Bilinear, AxisMode::Height, Packed422, 0.95, 1.1, 0},
    {Method::Bilinear, AxisMode::Height, Rgb24, 0.95, 1.1, 0},
    {Method::Bilinear, AxisMode::Height, Rgb16, 2, 0, 0},
    {Method::Nearest, AxisMode::Both, Planar, 2.4, 0, 0},
    {Method::Nearest, AxisMode::Both, Packed422, 4, 0, 0},
    {Method::Nearest, AxisMode::Both, Rgb24, 2.4, 0, 0},
    {Method::Nearest, AxisMode::Both, Rgb16, 1.1, 0, 0},
    {Method::Nearest, AxisMode::Width, Planar, 2.4, 0, 0},
    {Method::Nearest, AxisMode::Width, Packed422, 4, 0, 0},
    {Method::Nearest, AxisMode::Width, Rgb24, 2.4, 0, 0},
    {Method::Nearest, AxisMode::Width, Rgb16, 1.1, 0, 0},
    {Method::Nearest, AxisMode::Height, Planar, 0, 1.1, 0},
    {Method::Nearest, AxisMode::Height, Packed422, 0, 1.1, 0},
    {Method::Nearest, AxisMode::Height, Rgb24, 0, 1.1, 0},
    {Method::Nearest, AxisMode::Height, Rgb16, 0, 1.1, 0},
    {Method::Copy, AxisMode::Copy, Planar, 0, 1.1, 0},
    {Method::Copy, AxisMode::Copy, Packed422, 0, 1.1, 0},
    {Method::Copy, AxisMode::Copy, Rgb24, 0, 1.1, 0},
    {Method::Copy, AxisMode::Copy, Rgb16, 0, 1.1, 0},
};

// What is aimed at beyond the floors.
constexpr double kMeanRatio[] = {3, 2.5};  // 64 and 32 bits
constexpr double kTimeToMemory = 1.25;     // on both axes

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
        AddWorst(checks, results, {subject, build, true, ratio, 0, {}}, choose,
                 [build](const CaseResult& result) { return result.Ratio(build); });
    }
    if (timeToMemory > 0) {
        AddWorst(checks, results, {subject, build, false, timeToMemory, 0, {}}, choose,
                 [build](const CaseResult& result) { return result.TimeToMemory(build); });
    }
}

void AddAims(std::vector<Check>& checks, const Results& results, Build build) {
    const auto isBilinear = [](const Case& work) { return work.method == Method::Bilinear; };
    const double mean = results.MeanRatio(build, isBilinear);
    if (mean > 0) {
        checks.push_back({"aim: mean of all bilinear", build, true, kMeanRatio[build], mean, {}});
    }
    AddWorst(
        checks, results, {"aim: bilinear both", build, false, kTimeToMemory, 0, {}},
        [](const Case& work) {
            return work.method == Method::Bilinear && work.Mode() == AxisMode::Both;
        },
        [build](const CaseResult& result) { return result.TimeToMemory(build); });
}

}  // namespace

std::vector<Check> CheckFloors(const Results& results) {
    std::vector<Check> checks;
    for (const Build build : {Build64, Build32}) {
        for (const Floor& floor : kFloors) {
            AddFloor(checks, results, floor, build, floor.ratio, floor.timeToMemory);
        }
    }
    for (const Build build : {Ssse3Build64, Ssse3Build32}) {
        for (const Floor& floor : kFloors) {
            AddFloor(checks, results, floor, build, floor.ssse3Ratio, 0);
        }
    }
    for (const Build build : {Build64, Build32}) AddAims(checks, results, build);
    return checks;
}

}  // namespace tavo::bench
