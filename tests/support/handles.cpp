// Where the platform does not count, new handles do: they fill the gaps below first, so how high
// many of them reach tells how many were in use.
#include "tests/support/handles.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace tavo_test {

namespace {

constexpr size_t kMany = 1024;
constexpr ULONG_PTR kStep = 4;  // from one handle to the next

}  // namespace

int HandlesInUse() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0) {
        return static_cast<int>(count);
    }
    std::vector<HANDLE> made(kMany);
    for (HANDLE& handle : made) handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const auto highest = reinterpret_cast<ULONG_PTR>(*std::max_element(made.begin(), made.end()));
    for (const HANDLE handle : made) CloseHandle(handle);
    return static_cast<int>(highest / kStep) - static_cast<int>(kMany);
}

}  // namespace tavo_test
