// Wine gives a window manager two seconds to take notice of each window that goes, and where tests
// run there is none. For as long as it lives, the windows of one program do without.
//
//   const UnmanagedWindows unmanaged(L"vantrel.exe");  // before it starts
#pragma once

#include <windows.h>

#include <string>

namespace tavo_test {

class UnmanagedWindows {
  public:
    explicit UnmanagedWindows(const std::wstring& program)
        : path_(L"Software\\Wine\\AppDefaults\\" + program + L"\\X11 Driver") {
        const HMODULE system = GetModuleHandleW(L"ntdll.dll");
        if (!system || !GetProcAddress(system, "wine_get_version")) return;
        HKEY key = nullptr;
        // Even if nobody takes it back, it does not outlive the session.
        if (RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                            KEY_SET_VALUE, nullptr, &key, nullptr) != ERROR_SUCCESS)
            return;
        const wchar_t no[] = L"N";
        RegSetValueExW(key, kName, 0, REG_SZ, reinterpret_cast<const BYTE*>(no), sizeof no);
        RegCloseKey(key);
        isSet_ = true;
    }
    ~UnmanagedWindows() {
        if (isSet_) RegDeleteKeyValueW(HKEY_CURRENT_USER, path_.c_str(), kName);
    }
    UnmanagedWindows(const UnmanagedWindows&) = delete;
    UnmanagedWindows& operator=(const UnmanagedWindows&) = delete;

  private:
    static constexpr const wchar_t* kName = L"Managed";

    const std::wstring path_;
    bool isSet_ = false;
};

}  // namespace tavo_test
