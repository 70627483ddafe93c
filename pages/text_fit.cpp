#include "pages/text_fit.h"

namespace {

enum class Kind { Label, CheckBox, Other };

Kind KindOf(HWND control) {
    wchar_t name[16] = L"";
    GetClassNameW(control, name, 16);
    const LONG style = GetWindowLongW(control, GWL_STYLE);
    if (lstrcmpiW(name, L"Static") == 0 && (style & SS_TYPEMASK) == SS_LEFT) return Kind::Label;
    const bool isButton = lstrcmpiW(name, L"Button") == 0;
    return isButton && (style & BS_TYPEMASK) == BS_AUTOCHECKBOX ? Kind::CheckBox : Kind::Other;
}

// Pixels from left to right; the box is about as wide as a line is high.
int NeededWidth(HWND control, Kind kind) {
    wchar_t text[80] = L"";
    const int length = GetWindowTextW(control, text, 80);
    const HDC dc = GetDC(control);
    if (!dc) return 0;
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ former = font ? SelectObject(dc, font) : nullptr;
    SIZE size = {};
    TEXTMETRICW metrics = {};
    GetTextExtentPoint32W(dc, text, length, &size);
    GetTextMetricsW(dc, &metrics);
    if (former) SelectObject(dc, former);
    ReleaseDC(control, dc);
    return size.cx + (kind == Kind::CheckBox ? metrics.tmHeight + metrics.tmAveCharWidth : 0);
}

BOOL CALLBACK FitText(HWND control, LPARAM) {
    const Kind kind = KindOf(control);
    if (kind == Kind::Other) return TRUE;
    RECT rect = {};
    GetWindowRect(control, &rect);
    const int needed = NeededWidth(control, kind);
    if (needed > rect.right - rect.left) {
        SetWindowPos(control, nullptr, 0, 0, needed, rect.bottom - rect.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    return TRUE;
}

}  // namespace

void FitTexts(HWND dialog) { EnumChildWindows(dialog, FitText, 0); }
