// A library under the name of one of the system's: makes a file beside itself when it is loaded.

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    wchar_t path[MAX_PATH] = L"";
    const DWORD length = GetModuleFileNameW(instance, path, MAX_PATH);
    if (length == 0 || length + 8 >= MAX_PATH) return TRUE;
    lstrcatW(path, L".loaded");
    CloseHandle(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    return TRUE;
}
