#include "host/graph/setting_lookup.h"

#include <algorithm>

namespace tavo {
namespace {

constexpr SettingName kShortMethodNames[] = {
    {L"nearest-auto", VantrelMethodNearestAuto}, {L"bilinear-auto", VantrelMethodBilinearAuto},
    {L"nearest", VantrelMethodNearest},          {L"nearest-mmx", VantrelMethodNearestMmx},
    {L"nearest-sse", VantrelMethodNearestSse},   {L"bilinear", VantrelMethodBilinear},
    {L"bilinear-mmx", VantrelMethodBilinearMmx}, {L"bilinear-sse", VantrelMethodBilinearSse},
};

// Another code for the same pictures.
constexpr SettingName kShortFormatNames[] = {
    {L"I420", VantrelFormatIyuv},
};

// The names are ASCII; other letters are compared as they are.
wchar_t Lower(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool SameText(std::wstring_view a, std::wstring_view b) {
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

std::span<const SettingName> ShortNamesFor(std::span<const SettingName> names) {
    if (names.data() == kScaleMethodNames) return kShortMethodNames;
    if (names.data() == kPixelFormatNames) return kShortFormatNames;
    return {};
}

}  // namespace

std::span<const SettingName> MethodNames() { return kScaleMethodNames; }
std::span<const SettingName> FormatNames() { return kPixelFormatNames; }
std::span<const SettingName> TypeNames() { return kVideoTypeNames; }

std::optional<int> FindSetting(std::span<const SettingName> names, std::wstring_view name) {
    for (const SettingName& entry : names) {
        if (SameText(entry.name, name) || std::to_wstring(entry.code) == name) return entry.code;
    }
    for (const SettingName& entry : ShortNamesFor(names)) {
        if (SameText(entry.name, name)) return entry.code;
    }
    return std::nullopt;
}

std::wstring_view SettingText(std::span<const SettingName> names, int code) {
    for (const SettingName& entry : names) {
        if (entry.code == code) return entry.name;
    }
    return {};
}

std::wstring_view ShortName(std::span<const SettingName> names, int code) {
    return SettingText(ShortNamesFor(names), code);
}

std::wstring ListSettings(std::span<const SettingName> names) {
    std::wstring text;
    for (const SettingName& entry : names) {
        if (!text.empty()) text += L", ";
        text += L'"';
        text += entry.name;
        text += L'"';
    }
    return text;
}

}  // namespace tavo
