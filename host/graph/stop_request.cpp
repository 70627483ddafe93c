// A console control handler.

#include "host/graph/stop_request.h"

#include <atomic>

namespace tavo {
namespace {

// The handler runs on a thread of the system and gets no context argument.
std::atomic<HANDLE> stopEvent = nullptr;
std::atomic<HANDLE> doneEvent = nullptr;
std::atomic<int> requests = 0;

// The system ends the program when the handler returns, or after about this time.
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

}  // namespace

StopRequest::StopRequest() {
    requests = 0;
    doneEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    // A parent process may have disabled Ctrl-C.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(HandleControl, TRUE);
}

StopRequest::~StopRequest() {
    SetConsoleCtrlHandler(HandleControl, FALSE);
    // The handles stay open: a handler may still be using them.
    if (doneEvent != nullptr) SetEvent(doneEvent);
}

HANDLE StopRequest::Event() const { return stopEvent; }

bool StopRequest::IsSet() const {
    return stopEvent != nullptr && WaitForSingleObject(stopEvent, 0) == WAIT_OBJECT_0;
}

}  // namespace tavo
