// The three lists of setting names.

#include "host/graph/settings_names.h"

#include <algorithm>

namespace tavo {
namespace {

// clang-format off
constexpr SettingName kMethods[] = {
    {L"AUTO", 0},
    {L"Nearest Neighbor AUTO", 1},
    {L"Bi-Linear AUTO", 2},
    {L"Nearest Neighbor", 5},
    {L"Nearest Neighbor MMX", 6},
    {L"Nearest Neighbor SSE", 7},
    {L"Bi-Linear", 10},
    {L"Bi-Linear MMX", 11},
    {L"Bi-Linear SSE", 12},
};

constexpr SettingName kShortMethods[] = {
    {L"nearest-auto", 1},
    {L"bilinear-auto", 2},
    {L"nearest", 5},
    {L"nearest-mmx", 6},
    {L"nearest-sse", 7},
    {L"bilinear", 10},
    {L"bilinear-mmx", 11},
    {L"bilinear-sse", 12},
};

constexpr SettingName kFormats[] = {
    {L"AUTO", 0},
    {L"YV12", 1},
    {L"IYUV", 2},
    {L"YVU9", 3},
    {L"YUY2", 4},
    {L"YUYV", 5},
    {L"YVYU", 6},
    {L"UYVY", 7},
    {L"RGB24", 8},
    {L"RGB555", 9},
    {L"RGB565", 10},
};

// Another code for the same pictures.
constexpr SettingName kShortFormats[] = {
    {L"I420", 2},
};

constexpr SettingName kTypes[] = {
    {L"AUTO", 0},
    {L"MPEG1", 1},
    {L"MPEG2", 2},
};
// clang-format on

// The names are ASCII; other letters are compared as they are.
wchar_t Lower(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool SameText(std::wstring_view a, std::wstring_view b) {
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

std::span<const SettingName> ShortNamesFor(std::span<const SettingName> names) {
    if (names.data() == kMethods) return kShortMethods;
    if (names.data() == kFormats) return kShortFormats;
    return {};
}

}  // namespace

std::span<const SettingName> MethodNames() { return kMethods; }
std::span<const SettingName> FormatNames() { return kFormats; }
std::span<const SettingName> TypeNames() { return kTypes; }

std::optional<int> FindSetting(std::span<const SettingName> names, std::wstring_view name) {
    for (const SettingName& entry : names) {
        if (SameText(entry.name, name)) return entry.code;
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
