// The longer video header, for builds without Windows.
#pragma once

#include "dshow/platform.h"

struct VIDEOINFOHEADER2 {
    RECT rcSource, rcTarget;
    DWORD dwBitRate, dwBitErrorRate;
    REFERENCE_TIME AvgTimePerFrame;
    DWORD dwInterlaceFlags, dwCopyProtectFlags, dwPictAspectRatioX, dwPictAspectRatioY;
    DWORD dwControlFlags, dwReserved2;
    BITMAPINFOHEADER bmiHeader;
};
static_assert(sizeof(VIDEOINFOHEADER2) == 112);
