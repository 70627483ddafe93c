// Child processes with their output in files.

#include "tests/host/cli/run_program.h"

#include <fstream>
#include <iterator>

namespace tavo_test {
namespace {

std::filesystem::path OwnFolder() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

// As the child's C runtime parses it.
std::wstring Quote(const std::wstring& argument) {
    std::wstring text = L"\"";
    size_t slashes = 0;
    for (const wchar_t c : argument) {
        slashes = c == L'\\' ? slashes + 1 : 0;
        if (c == L'"') text.append(slashes + 1, L'\\');
        text += c;
    }
    return text.append(slashes, L'\\') + L"\"";
}

HANDLE InheritableFile(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, &inherit,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

BOOL WINAPI IgnoreControl(DWORD) { return TRUE; }

std::filesystem::path ScratchFile(const wchar_t* kind) {
    static int number = 0;
    const std::wstring name = L"vantrel-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                              std::to_wstring(number++) + kind;
    return std::filesystem::temp_directory_path() / name;
}

}  // namespace

std::filesystem::path VantrelPath() {
    return OwnFolder().parent_path().parent_path() / L"bin" / L"vantrel.exe";
}

std::filesystem::path ModulePath() { return VantrelPath().parent_path() / L"TavoResample.ax"; }

RunningProgram::RunningProgram(const std::filesystem::path& program,
                               const std::vector<std::wstring>& arguments)
    : outFile_(ScratchFile(L".out")), errorFile_(ScratchFile(L".err")) {
    std::wstring line = Quote(program.wstring());
    for (const std::wstring& argument : arguments) line += L" " + Quote(argument);
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = InheritableFile(outFile_);
    start.hStdError = InheritableFile(errorFile_);
    PROCESS_INFORMATION info = {};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &start, &info)) {
        process_ = info.hProcess;
        firstThread_ = info.dwThreadId;
        CloseHandle(info.hThread);
    }
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
}

RunningProgram::~RunningProgram() {
    if (process_ != nullptr) {
        if (!HasEnded()) TerminateProcess(process_, 9999);
        WaitForSingleObject(process_, 10000);
        CloseHandle(process_);
    }
    std::error_code ignored;
    std::filesystem::remove(outFile_, ignored);
    std::filesystem::remove(errorFile_, ignored);
}

bool RunningProgram::HasEnded() const { return WaitForSingleObject(process_, 0) == WAIT_OBJECT_0; }

Output RunningProgram::Wait(int seconds) {
    Output output;
    output.exitCode = 9999;
    if (process_ == nullptr) return output;
    if (WaitForSingleObject(process_, static_cast<DWORD>(seconds) * 1000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process_, &output.exitCode);
    }
    output.out = ReadAll(outFile_);
    output.error = ReadAll(errorFile_);
    return output;
}

Output RunVantrel(const std::vector<std::wstring>& arguments) {
    return RunningProgram(VantrelPath(), arguments).Wait();
}

// The handler stays: the system may call it long after the other program has ended.
bool ShareConsole() {
    if (GetConsoleWindow() == nullptr) {
        FreeConsole();
        if (!AllocConsole()) return false;
    }
    static const bool isDeaf = SetConsoleCtrlHandler(IgnoreControl, TRUE);
    return isDeaf;
}

bool PressCtrlC() { return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0); }

}  // namespace tavo_test
