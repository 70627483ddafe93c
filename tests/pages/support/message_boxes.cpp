// A box runs a message loop of its own; a timer of the thread finds it there.
#include "tests/pages/support/message_boxes.h"

#include "tests/pages/support/dialog_measure.h"

namespace tavo_test {

namespace {

constexpr UINT kLookMs = 20;

BOOL CALLBACK ReadChild(HWND child, LPARAM target) {
    auto& box = *reinterpret_cast<SeenBox*>(target);
    if (!IsWindowVisible(child)) return TRUE;
    if (ClassOf(child) == L"BUTTON") box.buttons.push_back(GetDlgCtrlID(child));
    if (ClassOf(child) != L"STATIC") return TRUE;
    if ((GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) {
        box.icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
    } else {
        box.text += TextOf(child);
    }
    return TRUE;
}

}  // namespace

MessageBoxes* MessageBoxes::current = nullptr;

MessageBoxes::MessageBoxes() : timer_(SetTimer(nullptr, 0, kLookMs, Look)) { current = this; }

MessageBoxes::~MessageBoxes() {
    KillTimer(nullptr, timer_);
    current = nullptr;
}

void CALLBACK MessageBoxes::Look(HWND, UINT, UINT_PTR, DWORD) {
    if (!current) return;
    EnumThreadWindows(GetCurrentThreadId(), Visit, reinterpret_cast<LPARAM>(current));
}

BOOL CALLBACK MessageBoxes::Visit(HWND window, LPARAM pointer) {
    auto& self = *reinterpret_cast<MessageBoxes*>(pointer);
    if (ClassOf(window) != L"#32770" || !IsWindowVisible(window) || window == self.last_) {
        return TRUE;
    }
    self.last_ = window;
    SeenBox box = {TextOf(window), {}, {}, nullptr, GetWindow(window, GW_OWNER)};
    EnumChildWindows(window, ReadChild, reinterpret_cast<LPARAM>(&box));
    self.seen_.push_back(box);
    if (self.onBox) self.onBox();
    for (const int button : box.buttons) PostMessageW(GetDlgItem(window, button), BM_CLICK, 0, 0);
    return FALSE;
}

}  // namespace tavo_test
