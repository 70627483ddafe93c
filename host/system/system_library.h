// The system's libraries, loaded from the system's folder. By its bare name a library is looked for
// beside the program first, where anybody may have put one, as in a folder of downloads.

#pragma once

#include <windows.h>

namespace tavo {

// It stays loaded, and is what everybody gets from now on who asks for it by its bare name. Null
// where the system has none.
HMODULE LoadSystemLibrary(const wchar_t* name);

// Null where either is missing.
template <typename Function>
Function SystemFunction(const wchar_t* library, const char* name) {
    const HMODULE module = LoadSystemLibrary(library);
    if (module == nullptr) return nullptr;
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace tavo
