// Finding settings by their names, which are those of the property page, or by shorter ones.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "settings/setting_names.h"

namespace tavo {

std::span<const SettingName> MethodNames();
std::span<const SettingName> FormatNames();
std::span<const SettingName> TypeNames();

// Also by a short name, or by its code. Upper and lower case are the same.
std::optional<int> FindSetting(std::span<const SettingName> names, std::wstring_view name);

// The name of a code; empty for a code without one.
std::wstring_view SettingText(std::span<const SettingName> names, int code);

// Another name that FindSetting knows; empty for a code without one.
std::wstring_view ShortName(std::span<const SettingName> names, int code);

// All names in quotes, with commas between.
std::wstring ListSettings(std::span<const SettingName> names);

}  // namespace tavo
