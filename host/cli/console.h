// Output to the console, or to the file or pipe in its place, as UTF-8.

#pragma once

#include <string_view>

namespace tavo {

void PrintOut(std::wstring_view text);
void PrintError(std::wstring_view text);

// True when standard error is a terminal, where a line can be written over.
bool ErrorIsTerminal();

}  // namespace tavo
