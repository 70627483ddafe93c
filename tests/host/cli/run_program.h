// Runs vantrel.exe as a user would, and captures its output.

#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavo_test {

struct Output {
    DWORD exitCode = 0;
    std::string out;  // UTF-8
    std::string error;
};

inline bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// A started program. The destructor kills it.
class RunningProgram {
  public:
    RunningProgram(const std::filesystem::path& program,
                   const std::vector<std::wstring>& arguments);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    bool Started() const { return process_ != nullptr; }
    bool HasEnded() const;
    DWORD Id() const { return GetProcessId(process_); }
    // The identifier of the thread that it began with.
    DWORD FirstThread() const { return firstThread_; }

    // Waits up to `seconds`; the default suits very slow machines. Exit code 9999 when the program
    // did not end.
    Output Wait(int seconds = 300);

  private:
    HANDLE process_ = nullptr;
    DWORD firstThread_ = 0;
    std::filesystem::path outFile_;
    std::filesystem::path errorFile_;
};

// The program under test, in the folder bin of the build.
std::filesystem::path VantrelPath();
std::filesystem::path ModulePath();

Output RunVantrel(const std::vector<std::wstring>& arguments);

// Gives this program a console that it shares with the programs it starts from now on, and lets it
// ignore Ctrl-C.
bool ShareConsole();
// For all programs that share the console.
bool PressCtrlC();

}  // namespace tavo_test
