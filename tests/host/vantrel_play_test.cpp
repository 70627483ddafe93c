// Playing in a window and beside the property pages: how each of them ends. Needs a display.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>

#include "tests/host/movie_files.h"
#include "tests/host/run_program.h"

namespace tavo {
namespace {

using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::RunningProgram;
using tavo_test::RunVantrel;
using tavo_test::VantrelPath;
using tavo_test::WriteMovie;

constexpr int kWidthEdit = 1001;
constexpr int kSystemFps = 1016;

struct WindowSearch {
    DWORD process;
    bool dialog;  // else the window of the video
    HWND found;
};

BOOL CALLBACK Visit(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<WindowSearch*>(target);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[20] = {};
    wchar_t text[60] = {};
    GetClassNameW(window, name, 20);
    GetWindowTextW(window, text, 60);
    const bool isDialog = std::wstring_view(name) == L"#32770";
    const bool fits = search.dialog ? isDialog : !isDialog && text == std::wstring(L"Mira Vantrel");
    if (process != search.process || !IsWindowVisible(window) || !fits) return TRUE;
    search.found = window;
    return FALSE;
}

template <typename Condition>
bool WaitFor(Condition condition, int seconds = 30) {
    for (int i = 0; i < seconds * 20; ++i, Sleep(50)) {
        if (condition()) return true;
    }
    return false;
}

HWND FindOf(const RunningProgram& program, bool dialog) {
    WindowSearch search = {program.Id(), dialog, nullptr};
    WaitFor([&] {
        EnumWindows(Visit, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr || program.HasEnded();
    });
    return search.found;
}

BOOL CALLBACK FindControl(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<std::pair<int, HWND>*>(target);
    if (GetDlgCtrlID(window) == search.first) search.second = window;
    return TRUE;
}

std::string TextWithin(HWND frame, int id) {
    std::pair<int, HWND> search = {id, nullptr};
    EnumChildWindows(frame, FindControl, reinterpret_cast<LPARAM>(&search));
    char text[40] = {};
    // Texts of another process's controls come only by message.
    SendMessageA(search.second, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

BOOL WINAPI IgnoreControl(DWORD) { return TRUE; }

class VantrelPlay : public tavo_test::MovieTest {
  protected:
    // `count` frames of RGB24, 25 a second.
    std::wstring Movie(uint32_t count) {
        const VideoFormat video = {PixelFormat::RGB24, 0, 160, 120};
        WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, count), {25, 1});
        return Path(L"in.avi");
    }

    static void ExpectGoodEnd(const Output& run) {
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        EXPECT_EQ(run.error, "");
        EXPECT_NE(run.out.find("Filter "), std::string::npos) << run.out;
    }

    // For as long as it lives, Ctrl-C reaches the programs of this console but not this one.
    class Console {
      public:
        Console() {
            if (GetConsoleWindow() == nullptr) {
                FreeConsole();
                EXPECT_TRUE(AllocConsole()) << GetLastError();
            }
            SetConsoleCtrlHandler(IgnoreControl, TRUE);
        }
        ~Console() { SetConsoleCtrlHandler(IgnoreControl, FALSE); }
        Console(const Console&) = delete;
        Console& operator=(const Console&) = delete;

        static void PressCtrlC() { EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)); }
    };
};

TEST_F(VantrelPlay, EndsWithTheVideo) {
    const DWORD start = GetTickCount();
    const Output run = RunVantrel({L"--play", Movie(50), L"--size", L"80x60"});
    ExpectGoodEnd(run);
    EXPECT_GE(GetTickCount() - start, 1800u) << "at the video's own speed";
    EXPECT_NE(run.out.find("160 x 120"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("80 x 60"), std::string::npos) << run.out;
}

TEST_F(VantrelPlay, QuietSaysNothing) {
    const Output run = RunVantrel({L"--play", Movie(3), L"--quiet"});
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_EQ(run.out + run.error, "");
}

TEST_F(VantrelPlay, EndsWhenItsWindowIsClosed) {
    RunningProgram program(VantrelPath(), {L"--play", Movie(1500)});
    const HWND window = FindOf(program, false);
    ASSERT_NE(window, nullptr);
    PostMessageW(window, WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait(20));
}

TEST_F(VantrelPlay, EndsWithCtrlC) {
    const Console console;
    RunningProgram program(VantrelPath(), {L"--play", Movie(1500)});
    ASSERT_NE(FindOf(program, false), nullptr);
    Console::PressCtrlC();
    const Output run = program.Wait(20);
    EXPECT_EQ(run.exitCode, 3u);
    EXPECT_NE(run.error.find("stopped"), std::string::npos) << run.error;
}

TEST_F(VantrelPlay, WhatCannotBeShownIsAnError) {
    const VideoFormat video = {PixelFormat::YVU9, FourCc('Y', 'V', 'U', '9'), 64, 48};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    const Output run = RunVantrel({L"--play", Path(L"in.avi"), L"--format", L"YVU9"});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_NE(run.error.find("vantrel: nothing on this system"), std::string::npos) << run.error;
    EXPECT_EQ(RunVantrel({L"--play", Path(L"none.avi")}).exitCode, 1u);
}

TEST_F(VantrelPlay, PagesShowTheFilterWhileTheVideoRepeats) {
    // Less than a second of video.
    RunningProgram program(VantrelPath(), {L"--pages", Movie(20), L"--size", L"96x0"});
    const HWND frame = FindOf(program, true);
    ASSERT_NE(frame, nullptr);
    EXPECT_NE(FindOf(program, false), nullptr);
    EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, kWidthEdit) == "96"; }, 5));
    Sleep(3000);
    EXPECT_FALSE(program.HasEnded());
    EXPECT_TRUE(WaitFor([&] { return std::atof(TextWithin(frame, kSystemFps).c_str()) > 0; }, 5));
    PostMessageW(frame, WM_COMMAND, IDCANCEL, 0);
    ExpectGoodEnd(program.Wait(20));
}

TEST_F(VantrelPlay, PagesEndWhenTheVideoIsClosed) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(1500)});
    ASSERT_NE(FindOf(program, true), nullptr);
    PostMessageW(FindOf(program, false), WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait(20));
}

TEST_F(VantrelPlay, PagesEndWithCtrlC) {
    const Console console;
    RunningProgram program(VantrelPath(), {L"--pages", Movie(1500)});
    ASSERT_NE(FindOf(program, true), nullptr);
    Console::PressCtrlC();
    EXPECT_EQ(program.Wait(20).exitCode, 3u);
}

}  // namespace
}  // namespace tavo
