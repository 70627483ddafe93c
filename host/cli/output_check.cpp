// Looks at files, and changes none.

#include "host/cli/output_check.h"

#include <filesystem>

#include "host/avi/file_store.h"
#include "host/graph/error_text.h"
#include "host/graph/quoted.h"

namespace tavo {

std::wstring CheckOutput(const Options& options) {
    const std::filesystem::path output = options.output;
    const std::filesystem::path input = options.input;
    std::error_code ignored;
    const std::wstring out = Quoted(output.wstring());
    if (std::filesystem::is_directory(output, ignored)) return out + L" is a folder";
    if (std::filesystem::equivalent(input, output, ignored)) {
        return L"the input and the output are the same file, " + Quoted(input.wstring());
    }
    const std::filesystem::path folder = output.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        return L"the folder of " + out + L" does not exist";
    }
    if (!options.overwrite && std::filesystem::exists(output, ignored)) {
        return out + L" is there already; --overwrite replaces it";
    }
    return {};
}

// Opened as for a run, but not emptied.
std::wstring CheckReplaceable(const std::wstring& output) {
    const HANDLE file = CreateFileW(output.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        return {};
    }
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) return {};
    return Quoted(output) + L" cannot be replaced: " + SystemErrorText(error);
}

}  // namespace tavo
