// What the user gets to know of failures.

#pragma once

#include <string>

namespace tavo {

// Prints one line, and returns `code`.
int ReportError(const std::wstring& error, int code);

}  // namespace tavo
