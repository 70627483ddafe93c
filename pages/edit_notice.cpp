#include "pages/edit_notice.h"

#include <commctrl.h>

void EditNotice::Show(HWND edit, const wchar_t* text) {
    Hide();
    balloon_ = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_BALLOON,
                               0, 0, 0, 0, edit, nullptr, nullptr, nullptr);
    if (!balloon_) return;
    wchar_t shown[80] = L"";
    lstrcpynW(shown, text, 80);
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.uFlags = TTF_TRACK;
    tool.hwnd = edit;
    tool.lpszText = shown;
    const auto parameter = reinterpret_cast<LPARAM>(&tool);
    SendMessageW(balloon_, TTM_ADDTOOLW, 0, parameter);
    RECT place = {};
    GetWindowRect(edit, &place);
    SendMessageW(balloon_, TTM_TRACKPOSITION, 0,
                 MAKELPARAM((place.left + place.right) / 2, place.bottom));
    SendMessageW(balloon_, TTM_TRACKACTIVATE, TRUE, parameter);
}

void EditNotice::Hide() {
    // DestroyWindow fails on another thread than the balloon's, which then closes it.
    if (balloon_ && IsWindow(balloon_) && !DestroyWindow(balloon_)) {
        PostMessageW(balloon_, WM_CLOSE, 0, 0);
    }
    balloon_ = nullptr;
}
