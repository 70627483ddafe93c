// Room for the texts of a dialog whose font is wider than the one it was drawn with.

#pragma once

#include <windows.h>

// Widens left-aligned labels and check boxes to the right until their text fits. Nothing becomes
// narrower, and what fits already stays as it is.
void FitTexts(HWND dialog);
