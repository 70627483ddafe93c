// Console output and the control handler.

#include "host/cli/console.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace tavo {
namespace {

// The handler runs on a thread of the system's own and has no argument to carry these.
std::atomic<HANDLE> stopEvent = nullptr;
std::atomic<HANDLE> doneEvent = nullptr;
std::atomic<int> requests = 0;

// The system ends the program soon after the handler returns, or after this long at the latest.
constexpr DWORD kClosingMs = 4500;

BOOL WINAPI HandleControl(DWORD kind) {
    const HANDLE stop = stopEvent;
    if (stop == nullptr || requests.fetch_add(1) > 0) return FALSE;
    SetEvent(stop);
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        WaitForSingleObject(doneEvent, kClosingMs);
    }
    return TRUE;
}

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

StopRequest::StopRequest() {
    requests = 0;
    doneEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    // A parent may have told its children to ignore Ctrl-C.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(HandleControl, TRUE);
}

StopRequest::~StopRequest() {
    SetConsoleCtrlHandler(HandleControl, FALSE);
    // The handles stay open: a handler may be at work with them this very moment.
    if (doneEvent != nullptr) SetEvent(doneEvent);
}

HANDLE StopRequest::Event() const { return stopEvent; }

bool StopRequest::IsSet() const {
    return stopEvent != nullptr && WaitForSingleObject(stopEvent, 0) == WAIT_OBJECT_0;
}

}  // namespace tavo
