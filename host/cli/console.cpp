// Terminals take UTF-16, files and pipes UTF-8.

#include "host/cli/console.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace tavo {
namespace {

void Print(DWORD stream, std::wstring_view text) {
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(handle, &mode)) {
        WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    const int wide = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), wide, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(std::max(length, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), wide, bytes.data(), length, nullptr, nullptr);
    WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

}  // namespace

void PrintOut(std::wstring_view text) { Print(STD_OUTPUT_HANDLE, text); }
void PrintError(std::wstring_view text) { Print(STD_ERROR_HANDLE, text); }

bool ErrorIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

}  // namespace tavo
