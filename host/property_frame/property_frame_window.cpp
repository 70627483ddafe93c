// The layout and the messages of the frame's window.

#include "host/property_frame/property_frame.h"

#include <commctrl.h>

#include <algorithm>

#include "host/property_frame/property_frame_ids.h"

namespace tavo {
namespace {

constexpr int kButtons[] = {IDOK, IDCANCEL, IDC_FRAME_APPLY};

SIZE SizeOf(const RECT& rect) { return {rect.right - rect.left, rect.bottom - rect.top}; }

RECT PlaceWithin(HWND parent, HWND child) {
    RECT rect = {};
    GetWindowRect(child, &rect);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

}  // namespace

INT_PTR CALLBACK PropertyFrame::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        reinterpret_cast<PropertyFrame*>(lParam)->window_ = window;
        return FALSE;  // Open sets the focus
    }
    auto* const frame = reinterpret_cast<PropertyFrame*>(GetWindowLongPtrW(window, DWLP_USER));
    return frame != nullptr ? frame->OnMessage(message, wParam, lParam) : FALSE;
}

INT_PTR PropertyFrame::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND: OnButton(LOWORD(wParam)); return TRUE;
        case WM_CLOSE: Close(); return TRUE;
        case WM_NOTIFY: {
            const auto& notice = *reinterpret_cast<const NMHDR*>(lParam);
            if (notice.idFrom != IDC_FRAME_TABS || notice.code != TCN_SELCHANGE) return FALSE;
            const int chosen = TabCtrl_GetCurSel(notice.hwndFrom);
            if (chosen >= 0) ShowPage(static_cast<size_t>(chosen));
            return TRUE;
        }
        case WM_DESTROY:
            SetWindowLongPtrW(window_, DWLP_USER, 0);
            window_ = nullptr;
            ReleasePages();
            return TRUE;
        default: return FALSE;
    }
}

// The buttons can be pressed while a page shows a message box.
void PropertyFrame::OnButton(int id) {
    switch (id) {
        case IDOK:
            if (!applying_ && ApplyChanges()) Close();
            break;
        case IDC_FRAME_APPLY:
            if (!applying_) ApplyChanges();
            break;
        case IDCANCEL: Close(); break;
        default: break;
    }
}

void PropertyFrame::Arrange(POINT place) {
    const HWND tabs = GetDlgItem(window_, IDC_FRAME_TABS);
    SIZE largest = {};
    for (size_t i = 0; i < pages_.size(); ++i) {
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = pages_[i].title.data();
        SendMessageW(tabs, TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item));
        largest.cx = std::max(largest.cx, pages_[i].size.cx);
        largest.cy = std::max(largest.cy, pages_[i].size.cy);
    }
    RECT area = PlaceWithin(window_, tabs);
    TabCtrl_AdjustRect(tabs, FALSE, &area);
    const SIZE room = SizeOf(area);
    const SIZE growth = {std::max(0L, largest.cx - room.cx), std::max(0L, largest.cy - room.cy)};
    MoveControl(IDC_FRAME_TABS, {}, growth);
    for (const int button : kButtons) MoveControl(button, growth, {});
    SetWindowPos(GetDlgItem(window_, IDC_FRAME_PLACE), nullptr, area.left, area.top,
                 room.cx + growth.cx, room.cy + growth.cy, SWP_NOZORDER | SWP_NOACTIVATE);
    RECT frame = {};
    GetWindowRect(window_, &frame);
    const SIZE size = SizeOf(frame);
    SetWindowPos(window_, nullptr, place.x, place.y, size.cx + growth.cx, size.cy + growth.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void PropertyFrame::MoveControl(int id, SIZE by, SIZE growth) {
    const HWND control = GetDlgItem(window_, id);
    const RECT rect = PlaceWithin(window_, control);
    const SIZE size = SizeOf(rect);
    SetWindowPos(control, nullptr, rect.left + by.cx, rect.top + by.cy, size.cx + growth.cx,
                 size.cy + growth.cy, SWP_NOZORDER | SWP_NOACTIVATE);
}

// A disabled button would keep the focus, and keys would be lost.
void PropertyFrame::EnableApply(bool enabled) {
    const HWND button = GetDlgItem(window_, IDC_FRAME_APPLY);
    if (!enabled && GetFocus() == button) {
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(window_, IDOK)),
                     TRUE);
    }
    EnableWindow(button, enabled);
}

}  // namespace tavo
