// Copies of names, for the inside of this library.

#pragma once

#include "dshow/platform.h"

namespace tavo::dshow {

// A copy made with new[]; null for a null source and without memory.
WCHAR* CopyName(const WCHAR* source);

// Into an array of N characters, cut to what fits; empty for a null source.
void CutName(WCHAR* target, size_t capacity, const WCHAR* source);
template <size_t N>
void CutName(WCHAR (&target)[N], const WCHAR* source) {
    CutName(target, N, source);
}

}  // namespace tavo::dshow
