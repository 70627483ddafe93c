#include "tests/pages/support/timer_calls.h"

#include "tests/filter/support/filter_rig.h"

namespace tavo_test {

TimerCalls* TimerCalls::current = nullptr;

TimerCalls::TimerCalls()
    : patch_(TheModule().handle(), "user32.dll", "SetTimer", reinterpret_cast<ULONG_PTR>(Note)) {
    current = this;
}

TimerCalls::~TimerCalls() { current = nullptr; }

UINT_PTR WINAPI TimerCalls::Note(HWND window, UINT_PTR timer, UINT milliseconds, TIMERPROC proc) {
    current->seen_.push_back({window, timer, milliseconds});
    return SetTimer(window, timer, milliseconds, proc);
}

}  // namespace tavo_test
