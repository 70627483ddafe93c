// The stand-ins. Each asks whether it is to fail, and counts what it gives.
#include "tests/filter/support/failing_imports.h"

#include <mmsystem.h>
#include <objbase.h>

#include <cstdlib>
#include <cstring>

namespace tavo_test {

namespace {

struct Refusals {
    int allowed = 0;
    int refused = 0;
    Refuse refuse = Refuse::AllLater;
};

// The thread that refuses itself; others are served.
std::atomic<DWORD> g_thread = 0;
Refusals g_refusals;
char g_names[400];
std::map<std::string, long> g_allRefused;

}  // namespace

FailingImports* FailingImports::current = nullptr;

// The functions that the module gets instead of the platform's.
struct StandIns {
    static bool Fails(const char* function) {
        return FailingImports::current->RefuseNext(function);
    }
    static void Count(const char* maker, long change) {
        FailingImports::current->Count(maker, change);
    }
    // A failure of the platform's own gives nothing either.
    template <typename T>
    static T Made(const char* maker, T object) {
        if (object) Count(maker, 1);
        return object;
    }

    static void* Malloc(size_t size) {
        return Fails("malloc") ? nullptr : Made("malloc", std::malloc(size));
    }
    static void* Calloc(size_t count, size_t size) {
        return Fails("calloc") ? nullptr : Made("malloc", std::calloc(count, size));
    }
    static void* Realloc(void* block, size_t size) {
        if (Fails("realloc")) return nullptr;
        void* const grown = std::realloc(block, size);
        if (!block) Made("malloc", grown);
        return grown;
    }
    static void Free(void* block) {
        if (block) Count("malloc", -1);
        std::free(block);
    }

    static void* WINAPI TaskAlloc(SIZE_T size) {
        return Fails("CoTaskMemAlloc") ? nullptr : CoTaskMemAlloc(size);
    }
    static HRESULT WINAPI CreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid,
                                         void** object) {
        *object = nullptr;
        if (Fails("CoCreateInstance")) return E_OUTOFMEMORY;
        return CoCreateInstance(clsid, outer, context, iid, object);
    }
    static HRESULT WINAPI Initialize(void* reserved) {
        if (Fails("CoInitialize")) return E_OUTOFMEMORY;
        const HRESULT result = CoInitialize(reserved);
        if (SUCCEEDED(result)) Count("CoInitialize", 1);
        return result;
    }
    static void WINAPI Uninitialize() {
        Count("CoInitialize", -1);
        CoUninitialize();
    }

    static HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* security, WINBOOL manual, WINBOOL set,
                                   const wchar_t* name) {
        if (Fails("CreateEventW")) return nullptr;
        return Made("handle", CreateEventW(security, manual, set, name));
    }
    static HANDLE WINAPI MakeThread(SECURITY_ATTRIBUTES* security, SIZE_T stack,
                                    LPTHREAD_START_ROUTINE start, void* parameter, DWORD flags,
                                    DWORD* id) {
        if (Fails("CreateThread")) return nullptr;
        return Made("handle", CreateThread(security, stack, start, parameter, flags, id));
    }
    static WINBOOL WINAPI Close(HANDLE handle) {
        Count("handle", -1);
        return CloseHandle(handle);
    }
    static void WINAPI MakeSection(CRITICAL_SECTION* section) {
        Count("InitializeCriticalSection", 1);
        InitializeCriticalSection(section);
    }
    static void WINAPI DropSection(CRITICAL_SECTION* section) {
        Count("InitializeCriticalSection", -1);
        DeleteCriticalSection(section);
    }

    static MMRESULT WINAPI BeginPeriod(UINT period) {
        if (Fails("timeBeginPeriod")) return TIMERR_NOCANDO;
        Count("timeBeginPeriod", 1);
        return timeBeginPeriod(period);
    }
    static MMRESULT WINAPI EndPeriod(UINT period) {
        Count("timeBeginPeriod", -1);
        return timeEndPeriod(period);
    }
    static MMRESULT WINAPI GetCaps(TIMECAPS* caps, UINT size) {
        return Fails("timeGetDevCaps") ? TIMERR_STRUCT : timeGetDevCaps(caps, size);
    }

    static HWND WINAPI MakeDialog(HINSTANCE module, const wchar_t* name, HWND parent,
                                  DLGPROC procedure, LPARAM parameter) {
        if (Fails("CreateDialogParamW")) return nullptr;
        return CreateDialogParamW(module, name, parent, procedure, parameter);
    }
    static HWND WINAPI MakeWindow(DWORD extended, const wchar_t* name, const wchar_t* text,
                                  DWORD style, int x, int y, int width, int height, HWND parent,
                                  HMENU menu, HINSTANCE module, void* parameter) {
        if (Fails("CreateWindowExW")) return nullptr;
        return CreateWindowExW(extended, name, text, style, x, y, width, height, parent, menu,
                               module, parameter);
    }
    static HDC WINAPI TakeDc(HWND window) {
        return Fails("GetDC") ? nullptr : Made("GetDC", GetDC(window));
    }
    static int WINAPI DropDc(HWND window, HDC dc) {
        Count("GetDC", -1);
        return ReleaseDC(window, dc);
    }
    static HGDIOBJ WINAPI Select(HDC dc, HGDIOBJ object) {
        return Fails("SelectObject") ? nullptr : SelectObject(dc, object);
    }
    static UINT_PTR WINAPI MakeTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
        return Fails("SetTimer") ? 0 : SetTimer(window, id, period, procedure);
    }
    static int WINAPI LoadTextA(HINSTANCE module, UINT id, char* text, int capacity) {
        return Fails("LoadStringA") ? 0 : LoadStringA(module, id, text, capacity);
    }
    static int WINAPI LoadTextW(HINSTANCE module, UINT id, wchar_t* text, int capacity) {
        return Fails("LoadStringW") ? 0 : LoadStringW(module, id, text, capacity);
    }
    static WINBOOL WINAPI SetItemText(HWND dialog, int id, const char* text) {
        return Fails("SetDlgItemTextA") ? FALSE : SetDlgItemTextA(dialog, id, text);
    }
    static WINBOOL WINAPI SetItemInt(HWND dialog, int id, UINT value, WINBOOL isSigned) {
        return Fails("SetDlgItemInt") ? FALSE : SetDlgItemInt(dialog, id, value, isSigned);
    }
    // A list without memory for an item.
    static LRESULT WINAPI SendA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == CB_ADDSTRING && Fails("CB_ADDSTRING")) return CB_ERRSPACE;
        return SendMessageA(window, message, wParam, lParam);
    }
    static int WINAPI Box(HWND, const wchar_t*, const wchar_t*, UINT) {
        return Fails("MessageBoxW") ? 0 : IDOK;
    }

    static WINBOOL WINAPI Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        return Fails("PostMessageW") ? FALSE : PostMessageW(window, message, wParam, lParam);
    }

    static LSTATUS WINAPI CreateKey(HKEY parent, const wchar_t* name, DWORD reserved,
                                    wchar_t* class_, DWORD options, REGSAM access,
                                    const SECURITY_ATTRIBUTES* security, HKEY* key, DWORD* made) {
        if (Fails("RegCreateKeyExW")) return ERROR_NO_SYSTEM_RESOURCES;
        const LSTATUS status =
            RegCreateKeyExW(parent, name, reserved, class_, options, access,
                            const_cast<SECURITY_ATTRIBUTES*>(security), key, made);
        if (status == ERROR_SUCCESS) Count("RegCreateKeyExW", 1);
        return status;
    }
    static LSTATUS WINAPI CloseKey(HKEY key) {
        Count("RegCreateKeyExW", -1);
        return RegCloseKey(key);
    }
    static LSTATUS WINAPI SetValue(HKEY key, const wchar_t* name, DWORD reserved, DWORD type,
                                   const BYTE* data, DWORD size) {
        if (Fails("RegSetValueExW")) return ERROR_NO_SYSTEM_RESOURCES;
        return RegSetValueExW(key, name, reserved, type, data, size);
    }
    static DWORD WINAPI FileName(HMODULE module, wchar_t* name, DWORD size) {
        if (!Fails("GetModuleFileNameW")) return GetModuleFileNameW(module, name, size);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
};

// A module that does not import one of them cannot be refused it; malloc is used by all.
FailingImports::FailingImports(HMODULE module) {
    current = this;
    EXPECT_NE(FindImport(module, "msvcrt.dll", "malloc"), nullptr);
    const struct {
        const char* library;
        const char* function;
        ULONG_PTR target;
    } standIns[] = {
        {"msvcrt.dll", "malloc", AddressOf(StandIns::Malloc)},
        {"msvcrt.dll", "calloc", AddressOf(StandIns::Calloc)},
        {"msvcrt.dll", "realloc", AddressOf(StandIns::Realloc)},
        {"msvcrt.dll", "free", AddressOf(StandIns::Free)},
        {"ole32.dll", "CoTaskMemAlloc", AddressOf(StandIns::TaskAlloc)},
        {"ole32.dll", "CoCreateInstance", AddressOf(StandIns::CreateInstance)},
        {"ole32.dll", "CoInitialize", AddressOf(StandIns::Initialize)},
        {"ole32.dll", "CoUninitialize", AddressOf(StandIns::Uninitialize)},
        {"kernel32.dll", "CreateEventW", AddressOf(StandIns::MakeEvent)},
        {"kernel32.dll", "CreateThread", AddressOf(StandIns::MakeThread)},
        {"kernel32.dll", "CloseHandle", AddressOf(StandIns::Close)},
        {"kernel32.dll", "InitializeCriticalSection", AddressOf(StandIns::MakeSection)},
        {"kernel32.dll", "DeleteCriticalSection", AddressOf(StandIns::DropSection)},
        {"kernel32.dll", "GetModuleFileNameW", AddressOf(StandIns::FileName)},
        {"winmm.dll", "timeBeginPeriod", AddressOf(StandIns::BeginPeriod)},
        {"winmm.dll", "timeEndPeriod", AddressOf(StandIns::EndPeriod)},
        {"winmm.dll", "timeGetDevCaps", AddressOf(StandIns::GetCaps)},
        {"user32.dll", "CreateDialogParamW", AddressOf(StandIns::MakeDialog)},
        {"user32.dll", "CreateWindowExW", AddressOf(StandIns::MakeWindow)},
        {"user32.dll", "GetDC", AddressOf(StandIns::TakeDc)},
        {"user32.dll", "ReleaseDC", AddressOf(StandIns::DropDc)},
        {"user32.dll", "SetTimer", AddressOf(StandIns::MakeTimer)},
        {"user32.dll", "LoadStringA", AddressOf(StandIns::LoadTextA)},
        {"user32.dll", "LoadStringW", AddressOf(StandIns::LoadTextW)},
        {"user32.dll", "SetDlgItemTextA", AddressOf(StandIns::SetItemText)},
        {"user32.dll", "SetDlgItemInt", AddressOf(StandIns::SetItemInt)},
        {"user32.dll", "SendMessageA", AddressOf(StandIns::SendA)},
        {"user32.dll", "PostMessageW", AddressOf(StandIns::Post)},
        {"user32.dll", "MessageBoxW", AddressOf(StandIns::Box)},
        {"gdi32.dll", "SelectObject", AddressOf(StandIns::Select)},
        {"advapi32.dll", "RegCreateKeyExW", AddressOf(StandIns::CreateKey)},
        {"advapi32.dll", "RegCloseKey", AddressOf(StandIns::CloseKey)},
        {"advapi32.dll", "RegSetValueExW", AddressOf(StandIns::SetValue)},
    };
    for (const auto& standIn : standIns)
        Patch(module, standIn.library, standIn.function, standIn.target);
}

FailingImports::~FailingImports() {
    patches_.clear();
    current = nullptr;
}

void FailingImports::Patch(HMODULE module, const char* library, const char* function,
                           ULONG_PTR target) {
    if (!FindImport(module, library, function)) return;
    patches_.push_back(std::make_unique<ImportPatch>(module, library, function, target));
}

void FailingImports::Count(const char* maker, long change) {
    const std::lock_guard lock(mutex_);
    held_[maker] += change;
}

bool FailingImports::RefuseNext(const char* function) {
    if (g_thread != GetCurrentThreadId()) return false;
    if (g_refusals.allowed > 0) {
        --g_refusals.allowed;
        return false;
    }
    if (g_refusals.refuse == Refuse::OnlyNext && g_refusals.refused > 0) return false;
    ++g_refusals.refused;
    ++g_allRefused[function];
    if (std::strlen(g_names) + std::strlen(function) + 2 < sizeof g_names) {
        std::strcat(g_names, function);
        std::strcat(g_names, " ");
    }
    return true;
}

std::string FailingImports::Held() const {
    const std::lock_guard lock(mutex_);
    std::string text;
    for (const auto& [maker, count] : held_) {
        if (count) text += maker + " " + std::to_string(count) + ", ";
    }
    return text;
}

long FailingImports::Held(const std::string& maker) const {
    const std::lock_guard lock(mutex_);
    const auto found = held_.find(maker);
    return found == held_.end() ? 0 : found->second;
}

void FailingImports::StartCounting() {
    const std::lock_guard lock(mutex_);
    held_.clear();
}

const std::map<std::string, long>& FailingImports::AllRefused() { return g_allRefused; }

std::string FailingImports::AllRefusedText() {
    std::string text;
    for (const auto& [function, count] : g_allRefused) {
        text += (text.empty() ? "" : ", ") + function + " " + std::to_string(count);
    }
    return text;
}

FailingImports::Window::Window(FailingImports&, int allowed, Refuse refuse) {
    g_names[0] = '\0';
    g_refusals = {allowed, 0, refuse};
    g_thread = GetCurrentThreadId();
}

FailingImports::Window::~Window() { g_thread = 0; }

int FailingImports::Window::refused() const { return g_refusals.refused; }

std::string FailingImports::Window::names() const { return g_names; }

}  // namespace tavo_test
