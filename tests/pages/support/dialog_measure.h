// Places and texts of controls, as a window shows them.

#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tavo_test {

// How wide the text of a control is, with the box before it where there is one.
LONG TextWidth(HWND control);

// What a dialog unit is in the font of a dialog: the mean width of the letters, and the height.
SIZE BaseUnits(HWND dialog);
RECT InPixels(SIZE units, int x, int y, int width, int height);

// Left, top, width and height in the parent.
RECT PlaceOf(HWND window, HWND parent);
std::vector<LONG> Numbers(const RECT& place);

// The name of a window's class, in capitals.
std::wstring ClassOf(HWND window);
std::wstring TextOf(HWND window);

}  // namespace tavo_test
