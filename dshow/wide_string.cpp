// AMGetWideString.

#include "dshow/wide_string.h"

#include <cwchar>

#include "dshow/helpers.h"

STDAPI AMGetWideString(LPCWSTR pSource, LPWSTR* ppReturn) {
    CheckPointer(ppReturn, E_POINTER);
    *ppReturn = nullptr;
    CheckPointer(pSource, E_INVALIDARG);
    const size_t length = std::wcslen(pSource) + 1;
    auto* copy = static_cast<WCHAR*>(CoTaskMemAlloc(length * sizeof(WCHAR)));
    CheckPointer(copy, E_OUTOFMEMORY);
    std::wmemcpy(copy, pSource, length);
    *ppReturn = copy;
    return NOERROR;
}
