// The results, for programs. Times are nanoseconds per picture.

#include "bench/compare/floors.h"
#include "bench/compare/reports.h"

namespace tavo::bench {
namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        if (static_cast<unsigned char>(c) >= ' ') quoted += c;
    }
    return quoted + '"';
}

std::string Number(double value) { return value > 0 ? Format("%.6g", value) : "null"; }

template <typename Items, typename Text>
std::string List(const Items& items, Text text) {
    std::string list = "[";
    for (const auto& item : items) {
        if (list.size() > 1) list += ", ";
        list += text(item);
    }
    return list + ']';
}

std::string CaseText(const Run& run, const CaseResult& result) {
    const Case& work = result.work;
    const Sizes& sizes = work.sizes;
    std::string text = Format(
        "\n    {\"family\": \"%s\", \"method\": \"%s\", \"axes\": \"%s\", "
        "\"source\": [%d, %d], \"destination\": [%d, %d]",
        work.Info().name, NameOf(work.method), NameOf(work.Mode()), sizes.srcWidth, sizes.srcHeight,
        sizes.dstWidth, sizes.dstHeight);
    for (const Build build : kAllBuilds) {
        if (result.ours[build] <= 0) continue;
        text +=
            Format(",\n     \"%s\": {\"time\": %s, \"ratio\": %s, \"timeToMemory\": %s}",
                   kBuildNames[build], Number(result.ours[build]).c_str(),
                   Number(result.Ratio(build)).c_str(), Number(result.TimeToMemory(build)).c_str());
    }
    return text + Format(",\n     \"memory\": %s, \"peers\": ", Number(result.memory).c_str()) +
           List(result.peers,
                [&](const PeerTime& time) {
                    return "{\"peer\": " + Quoted(run.peerNames[time.peer]) +
                           ", \"setting\": " + Quoted(time.setting) +
                           ", \"time\": " + Number(time.nanoseconds) + "}";
                }) +
           "}";
}

std::string CheckText(const Check& check) {
    return Format(
               "\n    {\"build\": \"%s\", \"pictures\": \"%s\", \"demand\": %s, \"%s\": %g, "
               "\"measured\": %s, ",
               kBuildNames[check.build], NameOf(check.caches), Quoted(check.subject).c_str(),
               check.isAtLeast ? "ratioAtLeast" : "timeToMemoryAtMost", check.floor,
               Number(check.value).c_str()) +
           Format("\"reached\": %s, \"worst\": %s}", check.IsReached() ? "true" : "false",
                  Quoted(check.worst).c_str());
}

std::string ResultsText(const Run& run, const Results& results) {
    const auto isBilinear = [](const Case& work) { return work.method == Method::Bilinear; };
    return "{\"bilinearMeanRatio\": " +
           List(kAllBuilds,
                [&](Build build) {
                    return Format("{\"build\": \"%s\", \"ratio\": %s}", kBuildNames[build],
                                  Number(results.MeanRatio(build, isBilinear)).c_str());
                }) +
           ",\n  \"cases\": " +
           List(results.cases, [&](const CaseResult& result) { return CaseText(run, result); }) +
           "}";
}

std::string CostText(const FrameCost& cost) {
    std::string text = Format("\n    {\"format\": \"%s\", \"sizes\": \"%s\"", cost.format,
                              TextOf(cost.sizes).c_str());
    for (const Build build : kAllBuilds) {
        text += Format(", \"%s\": %s", kBuildNames[build], Number(cost.nanoseconds[build]).c_str());
    }
    return text + '}';
}

}  // namespace

std::string JsonReport(const Run& run) {
    return "{\n  \"processor\": " + Quoted(run.processor) +
           ",\n  \"operations\": " + Quoted(run.operations) +
           Format(",\n  \"rounds\": %d,\n  \"peers\": ", run.rounds) + List(run.peerNames, Quoted) +
           ",\n  \"checks\": " + List(CheckFloors(run), CheckText) +
           ",\n  \"frameCosts\": " + List(run.costs, CostText) +
           ",\n  \"cold\": " + ResultsText(run, run.cold) +
           ",\n  \"hot\": " + ResultsText(run, run.hot) + "\n}\n";
}

}  // namespace tavo::bench
