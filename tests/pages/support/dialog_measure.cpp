#include "tests/pages/support/dialog_measure.h"

#include "pages/resource_ids.h"

namespace tavo_test {

LONG TextWidth(HWND control) {
    wchar_t text[80] = {};
    const int length = GetWindowTextW(control, text, 80);
    const HDC dc = GetDC(control);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ old = SelectObject(dc, font);
    SIZE size = {};
    TEXTMETRICW metrics = {};
    GetTextExtentPoint32W(dc, text, length, &size);
    GetTextMetricsW(dc, &metrics);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    const bool hasBox = GetDlgCtrlID(control) == IDC_ENABLE;
    return size.cx + (hasBox ? metrics.tmHeight + metrics.tmAveCharWidth : 0);
}

SIZE BaseUnits(HWND dialog) {
    const HDC dc = GetDC(dialog);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0));
    const HGDIOBJ old = SelectObject(dc, font);
    const wchar_t letters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    SIZE size = {};
    TEXTMETRICW metrics = {};
    GetTextExtentPoint32W(dc, letters, 52, &size);
    GetTextMetricsW(dc, &metrics);
    SelectObject(dc, old);
    ReleaseDC(dialog, dc);
    return {(size.cx / 26 + 1) / 2, metrics.tmHeight};
}

RECT InPixels(SIZE units, int x, int y, int width, int height) {
    return {MulDiv(x, units.cx, 4), MulDiv(y, units.cy, 8), MulDiv(width, units.cx, 4),
            MulDiv(height, units.cy, 8)};
}

RECT PlaceOf(HWND window, HWND parent) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    return {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
}

std::vector<LONG> Numbers(const RECT& place) {
    return {place.left, place.top, place.right, place.bottom};
}

std::wstring ClassOf(HWND window) {
    wchar_t name[40] = {};
    GetClassNameW(window, name, 40);
    return CharUpperW(name);
}

std::wstring TextOf(HWND window) {
    wchar_t text[200] = {};
    GetWindowTextW(window, text, 200);
    return text;
}

}  // namespace tavo_test
