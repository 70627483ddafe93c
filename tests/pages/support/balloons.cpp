#include "tests/pages/support/balloons.h"

#include <commctrl.h>

namespace tavo_test {

namespace {

BOOL CALLBACK Visit(HWND window, LPARAM found) {
    wchar_t name[40] = {};
    GetClassNameW(window, name, 40);
    if (lstrcmpiW(name, TOOLTIPS_CLASSW) != 0 || !IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

}  // namespace

HWND Balloon() {
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), Visit, reinterpret_cast<LPARAM>(&found));
    return found;
}

// What its only tool says.
std::wstring BalloonText() {
    const HWND balloon = Balloon();
    if (!balloon) return L"";
    wchar_t text[200] = {};
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.lpszText = text;
    if (!SendMessageW(balloon, TTM_ENUMTOOLSW, 0, reinterpret_cast<LPARAM>(&tool))) return L"";
    tool.lpszText = text;
    SendMessageW(balloon, TTM_GETTEXTW, 200, reinterpret_cast<LPARAM>(&tool));
    return text;
}

}  // namespace tavo_test
