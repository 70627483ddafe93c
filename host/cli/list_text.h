// What --list prints.

#pragma once

#include <string>
#include <vector>

namespace tavo {

// Formats, methods and types, by what the options accept.
std::wstring SettingsListText();

// A heading and a line for each name.
std::wstring NameListText(const std::wstring& heading, const std::vector<std::wstring>& names);

}  // namespace tavo
