// AMGetWideString: a copy of a string for a COM caller.

#pragma once

#include "dshow/platform.h"

// Copies pSource into task memory, which the caller frees. E_POINTER without ppReturn,
// E_INVALIDARG without pSource, E_OUTOFMEMORY; *ppReturn is null on failure.
STDAPI AMGetWideString(LPCWSTR pSource, LPWSTR* ppReturn);
