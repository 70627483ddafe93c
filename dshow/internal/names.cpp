// Copies of names.

#include "dshow/internal/names.h"

#include <algorithm>
#include <cwchar>
#include <new>

namespace tavo::dshow {

WCHAR* CopyName(const WCHAR* source) {
    if (!source) return nullptr;
    const size_t length = std::wcslen(source) + 1;
    WCHAR* copy = new (std::nothrow) WCHAR[length];
    if (copy) std::copy_n(source, length, copy);
    return copy;
}

void CutName(WCHAR* target, size_t capacity, const WCHAR* source) {
    size_t length = 0;
    if (source) {
        while (length + 1 < capacity && source[length]) ++length;
        std::copy_n(source, length, target);
    }
    target[length] = L'\0';
}

}  // namespace tavo::dshow
