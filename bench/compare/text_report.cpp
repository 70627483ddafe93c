// The table, for people.

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
        "Times faster than the best peer: geometric means\n"
        "method    axes     family   64-bit  32-bit\n";
    const auto line = [&](Method method, const char* mode, const char* family, auto choose) {
        const double mean64 = results.MeanRatio(Build64, choose);
        const double mean32 = results.MeanRatio(Build32, choose);
        if (mean64 <= 0 && mean32 <= 0) return;
        text += Format("%-9s %-8s %-7s %7s %7s\n", NameOf(method), mode, family,
                       Number(mean64, "%.2f").c_str(), Number(mean32, "%.2f").c_str());
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

std::string Floors(const Results& results) {
    std::string text =
        "Floors: times faster than the best peer (x), or time as a multiple of the memory limit's\n"
        "(of memory); the worst of the cases decides\n"
        "build         demand                             floor             measured\n";
    int reached = 0;
    const std::vector<Check> checks = CheckFloors(results);
    for (const Check& check : checks) {
        const std::string floor = check.isAtLeast ? Format(">= %.2f x", check.floor)
                                                  : Format("<= %.2f of memory", check.floor);
        text += Format("%-13s %-34s %-17s %8.3f  %-7s  %s\n", kBuildNames[check.build],
                       check.subject.c_str(), floor.c_str(), check.value,
                       check.IsReached() ? "reached" : "MISSED", check.worst.c_str());
        reached += check.IsReached();
    }
    return text + Format("%d of %zu reached\n", reached, checks.size());
}

std::string Cases(const Results& results) {
    std::string text =
        "Microseconds per picture; x: times faster than the best peer; mem: time as a multiple of "
        "the memory limit's\n";
    text += Format("%-7s %-9s %-7s %-23s %9s %9s", "family", "method", "axes", "sizes", "64-bit",
                   "32-bit");
    for (const std::string& peer : results.peerNames) {
        text += Format(" %9s", peer.substr(0, peer.find(' ')).c_str());
    }
    text += Format(" %9s %7s %7s %7s %7s  %s\n", "memory", "x 64", "x 32", "mem 64", "mem 32",
                   "best peer");
    for (const CaseResult& result : results.cases) {
        const Case& work = result.work;
        text += Format("%-7s %-9s %-7s %-23s %9s %9s", work.Info().name, NameOf(work.method),
                       NameOf(work.Mode()), TextOf(work.sizes).c_str(),
                       Microseconds(result.ours[Build64]).c_str(),
                       Microseconds(result.ours[Build32]).c_str());
        for (size_t i = 0; i < results.peerNames.size(); ++i) {
            const PeerTime* const time = result.BestOf(i);
            text += Format(" %9s", time ? Microseconds(time->nanoseconds).c_str() : "-");
        }
        const PeerTime* const best = result.Best();
        text += Format(" %9s %7s %7s %7s %7s  %s\n", Microseconds(result.memory).c_str(),
                       Number(result.Ratio(Build64), "%.2f").c_str(),
                       Number(result.Ratio(Build32), "%.2f").c_str(),
                       Number(result.TimeToMemory(Build64), "%.2f").c_str(),
                       Number(result.TimeToMemory(Build32), "%.2f").c_str(),
                       best ? (results.peerNames[best->peer] + ": " + best->setting).c_str() : "-");
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

std::string TextReport(const Results& results) {
    std::string peers;
    for (const std::string& name : results.peerNames) peers += (peers.empty() ? "" : ", ") + name;
    return results.processor +
           Format("\nMedians of %d rounds; one thread. Our kernels run on %s. Peers found: %s\n\n",
                  results.rounds, results.operations.c_str(),
                  peers.empty() ? "none" : peers.c_str()) +
           Means(results) + '\n' + Floors(results) + '\n' + Cases(results);
}

}  // namespace tavo::bench
