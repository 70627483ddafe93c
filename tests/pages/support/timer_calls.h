// Notes the timers that the module sets, for as long as it lives; one at a time.
//
//   TimerCalls timers;
//   ASSERT_EQ(frame.Open(), S_OK);
//   EXPECT_EQ(timers.seen(), (std::vector<TimerCall>{{frame.Dialog(), 3, 1000}}));
#pragma once

#include <windows.h>

#include <vector>

#include "tests/filter/support/module_imports.h"

namespace tavo_test {

struct TimerCall {
    HWND window;
    UINT_PTR timer;
    UINT milliseconds;

    bool operator==(const TimerCall&) const = default;
};

class TimerCalls {
  public:
    TimerCalls();
    ~TimerCalls();
    TimerCalls(const TimerCalls&) = delete;
    TimerCalls& operator=(const TimerCalls&) = delete;

    const std::vector<TimerCall>& seen() const { return seen_; }

  private:
    static UINT_PTR WINAPI Note(HWND window, UINT_PTR timer, UINT milliseconds, TIMERPROC proc);

    static TimerCalls* current;
    std::vector<TimerCall> seen_;
    const ImportPatch patch_;
};

}  // namespace tavo_test
