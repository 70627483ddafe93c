// The module's own import of SetTimer is what is exchanged: nobody else's calls are seen.
#include "tests/pages/support/timer_calls.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/filter/support/filter_rig.h"

namespace tavo_test {

namespace {

// Where the module keeps the address of a function that it imports by name; null if it does not.
ULONG_PTR* FindImport(HMODULE module, const char* library, const char* function) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* from =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; from->Name; ++from) {
        if (lstrcmpiA(reinterpret_cast<const char*>(base + from->Name), library) != 0) continue;
        const auto* name = reinterpret_cast<const ULONG_PTR*>(base + from->OriginalFirstThunk);
        auto* address = reinterpret_cast<ULONG_PTR*>(base + from->FirstThunk);
        for (; *name; ++name, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL(*name)) continue;
            const auto* import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *name);
            if (std::strcmp(import->Name, function) == 0) return address;
        }
    }
    return nullptr;
}

void Exchange(ULONG_PTR target) {
    ULONG_PTR* const place = FindImport(TheModule().handle(), "user32.dll", "SetTimer");
    ASSERT_NE(place, nullptr);
    DWORD before = 0;
    ASSERT_TRUE(VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before));
    *place = target;
    VirtualProtect(place, sizeof *place, before, &before);
}

}  // namespace

TimerCalls* TimerCalls::current = nullptr;

TimerCalls::TimerCalls() {
    current = this;
    Exchange(reinterpret_cast<ULONG_PTR>(Note));
}

TimerCalls::~TimerCalls() {
    Exchange(reinterpret_cast<ULONG_PTR>(SetTimer));
    current = nullptr;
}

UINT_PTR WINAPI TimerCalls::Note(HWND window, UINT_PTR timer, UINT milliseconds, TIMERPROC proc) {
    current->seen_.push_back({window, timer, milliseconds});
    return SetTimer(window, timer, milliseconds, proc);
}

}  // namespace tavo_test
