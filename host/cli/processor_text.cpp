// Describes a processor.

#include "host/cli/processor_text.h"

#include <string_view>

#include "cpu/cpu_level.h"
#include "cpu/hyper_threading.h"
#include "resample/kernel_table.h"

namespace tavo {
namespace {

using std::wstring;
using std::wstring_view;

// Names should be ASCII; a processor may return anything.
wstring Widen(const char* text) {
    wstring wide;
    for (; *text != 0; ++text) wide += *text > 0 ? static_cast<wchar_t>(*text) : L'?';
    return wide;
}

wstring Line(wstring_view title, wstring_view value) {
    constexpr size_t kTitleWidth = 18;
    wstring line(title);
    line.resize(kTitleWidth, L' ');
    return line.append(value) + L'\n';
}

wstring Number(int value) { return std::to_wstring(value); }

wstring FeaturesText(const ProcessorInfo& info) {
    const struct {
        bool has;
        const wchar_t* name;
    } features[] = {
        {info.hasMmx, L"MMX"},   {info.has3DNow, L"3DNow!"},
        {info.hasSse, L"SSE"},   {info.hasExt3DNow, L"extended 3DNow!"},
        {info.hasSse2, L"SSE2"}, {info.hasMonitor, L"MONITOR"},
        {info.hasSse3, L"SSE3"},
    };
    wstring text;
    for (const auto& feature : features) {
        if (!feature.has) continue;
        if (!text.empty()) text += L", ";
        text += feature.name;
    }
    return text.empty() ? L"none" : text;
}

wstring LevelText(int level) {
    switch (level) {
        case 1: return L"1 (MMX)";
        case 2: return L"2 (SSE)";
        case 3: return L"3 (MMX and 3DNow!)";
        case 4: return L"4 (MMX and extended 3DNow!)";
        default: return Number(level) + L" (portable code only)";
    }
}

wstring SpeedText(int speedClass) {
    return Number(speedClass) +
           (speedClass < 0 ? L" (AUTO: nearest neighbor)" : L" (AUTO: bi-linear)");
}

wstring CountText(const ProcessorInfo& info) {
    const wstring packages =
        info.physicalCount < 0 ? L"an unknown number of" : Number(info.physicalCount);
    return Number(info.logicalPerPackage) + L" logical in each of " + packages + L" physical; " +
           Widen(HyperThreadingText(info.hyperThreadingStatus));
}

}  // namespace

wstring ProcessorText(const ProcessorInfo& info, int level, int speedClass) {
    const wstring operations = Line(L"Row operations", Widen(InstructionSetName(WidestSet(level))));
    if (!info.identified) return Line(L"Processor", L"not identified") + operations;
    return Line(L"Processor", info.name[0] != 0 ? Widen(info.name) : L"without a name") +
           Line(L"Vendor", Widen(info.vendor)) +
           Line(L"Signature", L"family " + Number(info.family) + L", model " + Number(info.model) +
                                  L", stepping " + Number(info.stepping)) +
           Line(L"Features", FeaturesText(info)) +
           Line(L"Clock", info.clockMhz > 0 ? Number(info.clockMhz) + L" MHz" : L"not measured") +
           Line(L"Processors", CountText(info)) + Line(L"Level", LevelText(level)) +
           Line(L"Speed class", SpeedText(speedClass)) + operations;
}

wstring ThisProcessorText() {
    const int level = GetCpuLevel();
    return ProcessorText(GetProcessorInfo(), level, CpuSpeedClass());
}

}  // namespace tavo
