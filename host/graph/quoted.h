// Names of files and options as messages have them.

#pragma once

#include <string>
#include <string_view>

namespace tavo {

inline std::wstring Quoted(std::wstring_view text) { return L"\"" + std::wstring(text) + L"\""; }

}  // namespace tavo
