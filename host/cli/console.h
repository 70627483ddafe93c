// Prints to the console, or as UTF-8 to a file or pipe in its place.

#pragma once

#include <string_view>

namespace tavo {

void PrintOut(std::wstring_view text);
void PrintError(std::wstring_view text);

// Whether standard error is a terminal, where a line can be overwritten.
bool ErrorIsTerminal();

}  // namespace tavo
