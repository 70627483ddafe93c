// The frame window and the user's hands.
#include "tests/pages/support/page_frame.h"

namespace tavo_test {

namespace {

constexpr RECT kPlace = {10, 20, 410, 270};

std::string AnsiTextOf(HWND window) {
    char text[400] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}

BOOL CALLBACK CountOwn(HWND window, LPARAM count) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    *reinterpret_cast<int*>(count) += process == GetCurrentProcessId();
    return TRUE;
}

}  // namespace

PageFrame::PageFrame(REFCLSID clsid, int left) : page(TheModule().Create<IPropertyPage>(clsid)) {
    EXPECT_TRUE(page);
    window_ = CreateWindowExW(WS_EX_NOACTIVATE, L"STATIC", L"frame", WS_POPUP, left, 0, 420, 280,
                              nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    EXPECT_NE(window_, nullptr);
    // Not activated: without a window manager that costs seconds when the window goes.
    ShowWindow(window_, SW_SHOWNA);
}

PageFrame::~PageFrame() {
    if (page) {
        if (Dialog()) {
            EXPECT_EQ(Close(), S_OK);
        }
        page->SetPageSite(nullptr);
        page->SetObjects(0, nullptr);
        page.Reset();
    }
    DestroyWindow(window_);
    EXPECT_EQ(site.references, 0);
}

HRESULT PageFrame::Connect(IUnknown* object) { return page->SetObjects(1, &object); }

HRESULT PageFrame::Open() {
    page->SetPageSite(&site);
    return page->Activate(window_, &kPlace, FALSE);
}

std::string PageFrame::Text(int id) const { return AnsiTextOf(Control(id)); }

std::string PageFrame::Selected(int id) const {
    const LRESULT index = SendMessageA(Control(id), CB_GETCURSEL, 0, 0);
    if (index == CB_ERR) return "(none)";
    char text[80] = {};
    SendMessageA(Control(id), CB_GETLBTEXT, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(text));
    // The closed list shows the same.
    EXPECT_EQ(AnsiTextOf(Control(id)), text);
    return text;
}

INT_PTR PageFrame::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    const auto procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(Dialog(), DWLP_DLGPROC));
    return procedure(Dialog(), message, wParam, lParam);
}

void Pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

int OwnWindows() {
    int count = 0;
    EnumChildWindows(GetDesktopWindow(), CountOwn, reinterpret_cast<LPARAM>(&count));
    for (HWND at = nullptr; (at = FindWindowExW(HWND_MESSAGE, at, nullptr, nullptr)) != nullptr;)
        CountOwn(at, reinterpret_cast<LPARAM>(&count));
    return count;
}

void PumpFor(DWORD milliseconds) {
    const DWORD start = GetTickCount();
    for (;;) {
        Pump();
        const DWORD passed = GetTickCount() - start;
        if (passed >= milliseconds) return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds - passed, QS_ALLINPUT);
    }
}

void Type(HWND edit, const char* text) {
    SendMessageA(edit, EM_SETSEL, 0, -1);
    if (!*text) PostMessageA(edit, WM_CHAR, VK_BACK, 0);
    for (const char* c = text; *c; ++c) PostMessageA(edit, WM_CHAR, static_cast<WPARAM>(*c), 0);
    Pump();
}

void Click(HWND button) {
    RECT rect = {};
    GetClientRect(button, &rect);
    const LPARAM middle = MAKELPARAM(rect.right / 2, rect.bottom / 2);
    PostMessageW(button, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    PostMessageW(button, WM_LBUTTONUP, 0, middle);
    Pump();
}

void PressKey(HWND control, WPARAM key) {
    PostMessageW(control, WM_KEYDOWN, key, 0);
    PostMessageW(control, WM_KEYUP, key, 0);
    Pump();
}

void ChooseWithMouse(HWND list, int index) {
    SendMessageW(list, CB_SHOWDROPDOWN, TRUE, 0);
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    ASSERT_TRUE(GetComboBoxInfo(list, &info));
    RECT item = {};
    SendMessageW(info.hwndList, LB_GETITEMRECT, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(&item));
    const LPARAM place = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
    PostMessageW(info.hwndList, WM_MOUSEMOVE, 0, place);
    PostMessageW(info.hwndList, WM_LBUTTONDOWN, MK_LBUTTON, place);
    PostMessageW(info.hwndList, WM_LBUTTONUP, 0, place);
    Pump();
}

}  // namespace tavo_test
