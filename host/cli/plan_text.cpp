// Formats the plan.

#include "host/cli/plan_text.h"

#include "host/avi/frame_rate.h"
#include "host/cli/statistics_text.h"
#include "host/graph/number_text.h"
#include "host/graph/quoted.h"

namespace tavo {
namespace {

std::wstring PathText(const RunPlan& plan) {
    std::wstring text;
    for (const std::wstring& name : plan.path) text += (text.empty() ? L"" : L" -> ") + name;
    return text;
}

std::wstring DurationText(int64_t duration) {
    if (duration <= 0) return L"unknown";
    return NumberText(static_cast<double>(duration) / kUnitsPerSecond) + L" s";
}

std::wstring FileText(const RunPlan& plan) {
    std::wstring text;
    if (plan.output.bytes) text += L", about " + BytesText(*plan.output.bytes);
    if (plan.output.frames) text += L", about " + std::to_wstring(*plan.output.frames) + L" frames";
    if (plan.frameBytes > 0) text += L" of " + std::to_wstring(plan.frameBytes) + L" bytes";
    return plan.output.frames ? text : L", of unknown length; frames" + text;
}

}  // namespace

std::wstring PlanText(const VideoGraph& graph, const RunPlan& plan, const std::wstring& output) {
    return TypeLines(graph) + L"Duration   " + DurationText(graph.duration) + L"\nPath       " +
           PathText(plan) + L"\nFile       " + Quoted(output) + FileText(plan) + L"\n" +
           PictureNotes(graph) + L"Note       nothing was written\n";
}

}  // namespace tavo
