// How tests wait for other threads: for what must happen, never for a time in which it should have.
//
//   ASSERT_TRUE(WaitUntil([&] { return frames >= 100; }));
#pragma once

#include <windows.h>

namespace tavo_test {

// Milliseconds that nothing takes, not even where many programs share one slow processor.
inline constexpr DWORD kPatience = 120'000;

// False if the condition does not come true within the patience.
template <typename Condition>
bool WaitUntil(Condition condition) {
    for (const ULONGLONG end = GetTickCount64() + kPatience; !condition(); Sleep(1)) {
        if (GetTickCount64() >= end) return false;
    }
    return true;
}

}  // namespace tavo_test
