// The names of the filter's settings as its property page spells them, and their codes.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavo {

struct SettingName {
    const wchar_t* name;
    int code;
};

std::span<const SettingName> MethodNames();
std::span<const SettingName> FormatNames();
std::span<const SettingName> TypeNames();

// Also by a short name. Upper and lower case are the same.
std::optional<int> FindSetting(std::span<const SettingName> names, std::wstring_view name);

// The name of a code; empty for a code without one.
std::wstring_view SettingText(std::span<const SettingName> names, int code);

// All names in quotes, with commas between.
std::wstring ListSettings(std::span<const SettingName> names);

}  // namespace tavo
