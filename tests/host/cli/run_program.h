// Runs vantrel.exe as a user would, and keeps what it prints.

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

// A program that has been started. Whoever lets it go kills it.
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

    // Waits; exit code 9999 when it had to be killed after `seconds`: those of a machine on which
    // nothing is quick.
    Output Wait(int seconds = 300);

  private:
    HANDLE process_ = nullptr;
    std::filesystem::path outFile_;
    std::filesystem::path errorFile_;
};

// The program under test: in the folder bin of the build.
std::filesystem::path VantrelPath();
std::filesystem::path ModulePath();

Output RunVantrel(const std::vector<std::wstring>& arguments);

// Sees to it that this program has a console, which it shares with those that it starts from now
// on, and that it does not care for the Ctrl-C of that console any more.
bool ShareConsole();
// Reaches all that share the console.
bool PressCtrlC();

}  // namespace tavo_test
