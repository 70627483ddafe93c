#include "host/graph/wine.h"

#include <windows.h>

namespace tavo {

bool RunsUnderWine() {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
}

}  // namespace tavo
