// The table, for people.

#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "bench/compare/floors.h"
#include "bench/compare/reports.h"

namespace tavo::bench {
namespace {

// A dash for what was not measured.
std::string Number(double value, const char* format) {
    if (value <= 0) return "-";
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Microseconds(double nanoseconds) { return Number(nanoseconds / 1000, "%.1f"); }

std::string Means(const Results& results) {
    std::string text =
        Format("Times faster than the best peer, %s: geometric means\nmethod    axes     family ",
               NameOf(results.caches));
    for (const char* const name : kBuildNames) text += Format(" %12s", name);
    text += Format(" %12s\n", "memory limit");
    const auto line = [&](Method method, const char* mode, const char* family, auto choose) {
        std::string means;
        bool isMeasured = false;
        for (const Build build : kAllBuilds) {
            const double mean = results.MeanRatio(build, choose);
            means += Format(" %12s", Number(mean, "%.2f").c_str());
            isMeasured = isMeasured || mean > 0;
        }
        if (!isMeasured) return;
        const double limit = results.MeanMemoryRatio(choose);
        text += Format("%-9s %-8s %-7s", NameOf(method), mode, family) + means +
                Format(" %12s\n", Number(limit, "%.2f").c_str());
    };
    for (const Method method : {Method::Bilinear, Method::Nearest}) {
        for (const AxisMode mode : {AxisMode::Both, AxisMode::Width, AxisMode::Height}) {
            for (const FamilyInfo& info : kFamilies) {
                line(method, NameOf(mode), info.name, [&](const Case& work) {
                    return work.method == method && work.Mode() == mode &&
                           work.family == info.family;
                });
            }
        }
        line(method, "all", "all", [&](const Case& work) { return work.method == method; });
    }
    return text;
}

std::string Costs(const Run& run) {
    if (run.costs.empty()) return {};
    std::string text =
        "What a frame costs, bilinear, cold, and how many streams of 60 frames per second one core "
        "carries:\nmicroseconds, streams\n";
    text += Format("%-23s %-7s", "sizes", "format");
    for (const char* const name : kBuildNames) text += Format(" %14s", name);
    text += '\n';
    for (const FrameCost& cost : run.costs) {
        text += Format("%-23s %-7s", TextOf(cost.sizes).c_str(), cost.format);
        for (const double nanoseconds : cost.nanoseconds) {
            const double streams = nanoseconds > 0 ? std::floor(1e9 / 60 / nanoseconds) : 0;
            text += Format(" %9s %4s", Microseconds(nanoseconds).c_str(),
                           Number(streams, "%.0f").c_str());
        }
        text += '\n';
    }
    return text + '\n';
}

std::string Floors(const Run& run) {
    std::string text =
        "Floors: times faster than the best peer (x), or time as a multiple of the memory limit's\n"
        "(of memory); the worst of the cases decides\n"
        "build         pictures demand                             floor             measured\n";
    int reached = 0;
    const std::vector<Check> checks = CheckFloors(run);
    for (const Check& check : checks) {
        const std::string floor = check.isAtLeast ? Format(">= %.2f x", check.floor)
                                                  : Format("<= %.2f of memory", check.floor);
        text += Format("%-13s %-8s %-34s %-17s %8.3f  %-7s  %s\n", kBuildNames[check.build],
                       NameOf(check.caches), check.subject.c_str(), floor.c_str(), check.value,
                       check.IsReached() ? "reached" : "MISSED", check.worst.c_str());
        reached += check.IsReached();
    }
    return text + Format("%d of %zu reached\n", reached, checks.size());
}

std::string Cases(const Run& run, const Results& results) {
    std::string text = Format(
        "Microseconds per picture, %s; x: times faster than the best peer; mem: time as a multiple "
        "of the memory limit's\n",
        NameOf(results.caches));
    text += Format("%-7s %-9s %-7s %-23s", "family", "method", "axes", "sizes");
    for (const char* const name : kBuildNames) text += Format(" %12s", name);
    for (const std::string& peer : run.peerNames) {
        text += Format(" %9s", peer.substr(0, peer.find(' ')).c_str());
    }
    text += Format(" %9s %7s %7s %7s %7s  %s\n", "memory", "x 64", "x AVX2", "mem 64", "mem AV2",
                   "best peer");
    for (const CaseResult& result : results.cases) {
        const Case& work = result.work;
        text += Format("%-7s %-9s %-7s %-23s", work.Info().name, NameOf(work.method),
                       NameOf(work.Mode()), TextOf(work.sizes).c_str());
        for (const double ours : result.ours) text += Format(" %12s", Microseconds(ours).c_str());
        for (size_t i = 0; i < run.peerNames.size(); ++i) {
            const PeerTime* const time = result.BestOf(i);
            text += Format(" %9s", time ? Microseconds(time->nanoseconds).c_str() : "-");
        }
        const PeerTime* const best = result.Best();
        text += Format(" %9s %7s %7s %7s %7s  %s\n", Microseconds(result.memory).c_str(),
                       Number(result.Ratio(Build64), "%.2f").c_str(),
                       Number(result.Ratio(Avx2Build64), "%.2f").c_str(),
                       Number(result.TimeToMemory(Build64), "%.2f").c_str(),
                       Number(result.TimeToMemory(Avx2Build64), "%.2f").c_str(),
                       best ? (run.peerNames[best->peer] + ": " + best->setting).c_str() : "-");
    }
    return text;
}

}  // namespace

std::string Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string TextReport(const Run& run) {
    std::string peers;
    for (const std::string& name : run.peerNames) peers += (peers.empty() ? "" : ", ") + name;
    return run.processor +
           Format("\nMedians of %d rounds; one thread. Our kernels run on %s. Peers found: %s\n\n",
                  run.rounds, run.operations.c_str(), peers.empty() ? "none" : peers.c_str()) +
           Means(run.cold) + '\n' + Means(run.hot) + '\n' + Costs(run) + Floors(run) + '\n' +
           Cases(run, run.cold) + '\n' + Cases(run, run.hot);
}

}  // namespace tavo::bench
