// How tests wait for other threads: for what must happen, never for a time in which it should have.
//
//   ASSERT_TRUE(WaitUntil([&] { return frames >= 100; }));
#pragma once

#include <windows.h>

namespace tavo_test {

// Milliseconds that nothing takes, not even where many programs share one slow processor.
inline constexpr DWORD kPatience = 120'000;

// False if the condition does not come true within the patience. It is looked at each `pause`
// milliseconds.
template <typename Condition>
bool WaitUntil(Condition condition, DWORD pause = 1) {
    for (const ULONGLONG end = GetTickCount64() + kPatience; !condition(); Sleep(pause)) {
        if (GetTickCount64() >= end) return false;
    }
    return true;
}

}  // namespace tavo_test
