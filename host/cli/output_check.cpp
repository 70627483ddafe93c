// Looks at files, and changes none.

#include "host/cli/output_check.h"

#include <filesystem>

#include "host/avi/file_store.h"
#include "host/graph/error_text.h"
#include "host/graph/quoted.h"

namespace tavo {

namespace {

std::wstring CheckFile(const std::filesystem::path& output, const std::filesystem::path& input,
                       const wchar_t* kind, bool overwrite) {
    std::error_code ignored;
    const std::wstring out = Quoted(output.wstring());
    if (std::filesystem::is_directory(output, ignored)) return out + L" is a folder";
    if (std::filesystem::equivalent(input, output, ignored)) {
        return std::wstring(L"the input and the ") + kind + L" are the same file, " +
               Quoted(input.wstring());
    }
    const std::filesystem::path folder = output.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        return L"the folder of " + out + L" does not exist";
    }
    if (!overwrite && std::filesystem::exists(output, ignored)) {
        return out + L" is there already; --overwrite replaces it";
    }
    return {};
}

}  // namespace

std::wstring CheckOutput(const Options& options) {
    std::wstring error = CheckFile(options.output, options.input, L"output", options.overwrite);
    if (!error.empty() || options.log.empty()) return error;
    error = CheckFile(options.log, options.input, L"log", options.overwrite);
    std::error_code ignored;
    if (error.empty() && std::filesystem::equivalent(options.output, options.log, ignored)) {
        error = L"the output and the log are the same file, " + Quoted(options.log);
    }
    return error;
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
    if (error == ERROR_FILE_NOT_FOUND) return {};  // it will be created
    return Quoted(output) + L" cannot be replaced: " + SystemErrorText(error);
}

}  // namespace tavo
