// Playback in a window, and the ways to end it. Needs a display.

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/host/cli/program_windows.h"

namespace tavo {
namespace {

using tavo_test::FindVideo;
using tavo_test::GrayOf;
using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::PixelOf;
using tavo_test::PressCtrlC;
using tavo_test::RunningProgram;
using tavo_test::RunVantrel;
using tavo_test::ShareConsole;
using tavo_test::VantrelPath;
using tavo_test::WaitFor;
using tavo_test::WriteMovie;

class VantrelPlay : public tavo_test::PlayTest {};

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
    const HWND window = FindVideo(program);
    ASSERT_NE(window, nullptr);
    PostMessageW(window, WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPlay, EndsWithCtrlC) {
    ASSERT_TRUE(ShareConsole());
    RunningProgram program(VantrelPath(), {L"--play", Movie(1500)});
    ASSERT_NE(FindVideo(program), nullptr);
    EXPECT_TRUE(PressCtrlC());
    const Output run = program.Wait();
    EXPECT_EQ(run.exitCode, 3u);
    EXPECT_NE(run.error.find("stopped"), std::string::npos) << run.error;
}

void PressKey(HWND window, WPARAM key) {
    PostMessageW(window, WM_KEYDOWN, key, 1);
    PostMessageW(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

TEST_F(VantrelPlay, EndsWithEsc) {
    RunningProgram program(VantrelPath(), {L"--play", Movie(1500)});
    const HWND window = FindVideo(program);
    ASSERT_NE(window, nullptr);
    PressKey(window, VK_ESCAPE);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPlay, TheSpaceBarPauses) {
    RunningProgram program(VantrelPath(), {L"--play", GrayMovie(170, 1, 5)});
    const HWND window = FindVideo(program);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(WaitFor([&] { return GrayOf(window) > 2; }));
    PressKey(window, VK_SPACE);
    Sleep(600);
    const int held = GrayOf(window);
    EXPECT_GT(held, 0);
    Sleep(1500);
    EXPECT_EQ(GrayOf(window), held);
    PressKey(window, VK_SPACE);
    EXPECT_TRUE(WaitFor([&] { return GrayOf(window) > held + 1; }));
    PressKey(window, VK_ESCAPE);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPlay, ThePictureKeepsItsShape) {
    RunningProgram program(VantrelPath(), {L"--play", GrayMovie(150, 100, 5)});
    const HWND window = FindVideo(program);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(WaitFor([&] { return GrayOf(window) >= 100; }));
    RECT outer = {};
    RECT client = {};
    GetWindowRect(window, &outer);
    GetClientRect(window, &client);
    const int frameWidth = outer.right - outer.left - client.right;
    const int frameHeight = outer.bottom - outer.top - client.bottom;
    SetWindowPos(window, nullptr, 0, 0, 400 + frameWidth, 150 + frameHeight,
                 SWP_NOZORDER | SWP_NOMOVE | SWP_NOACTIVATE);
    EXPECT_TRUE(WaitFor([&] { return tavo_test::IsVideoAs(window, 400, 150); }));
    // 200 x 150 in the middle.
    EXPECT_TRUE(WaitFor([&] { return GetRValue(PixelOf(window, 110, 75)) >= 100; }));
    EXPECT_TRUE(WaitFor([&] { return GetRValue(PixelOf(window, 290, 75)) >= 100; }));
    EXPECT_TRUE(WaitFor([&] { return PixelOf(window, 90, 75) == RGB(0, 0, 0); }));
    EXPECT_TRUE(WaitFor([&] { return PixelOf(window, 310, 75) == RGB(0, 0, 0); }));
    PressKey(window, VK_ESCAPE);
    ExpectGoodEnd(program.Wait());
}

// Without a renderer for such pictures, the source is asked for another format.
TEST_F(VantrelPlay, ShowsPacked422) {
    const VideoFormat video = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 160, 120};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 10));
    const Output run = RunVantrel({L"--play", Path(L"in.avi")});
    ExpectGoodEnd(run);
    EXPECT_NE(run.out.find("160 x 120"), std::string::npos) << run.out;
}

// As on a machine without OpenGL, where one of Wine's renderers crashes.
TEST_F(VantrelPlay, ShowsOrRefusesPacked422WithoutSoftwareDrawing) {
    constexpr wchar_t kKey[] = L"Software\\Wine\\AppDefaults\\vantrel.exe\\Direct3D";
    constexpr wchar_t kValue[] = L"gl";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_SET_VALUE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, L"renderer", 0, REG_SZ, reinterpret_cast<const BYTE*>(kValue),
                             sizeof kValue),
              ERROR_SUCCESS);
    RegCloseKey(key);
    const VideoFormat video = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 160, 120};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 10));
    ExpectGoodEnd(RunVantrel({L"--play", Path(L"in.avi")}));
    const Output run = RunVantrel({L"--play", Path(L"in.avi"), L"--format", L"YUY2"});
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, kKey), ERROR_SUCCESS);
    if (run.exitCode == 0) {
        ExpectGoodEnd(run);
    } else {
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_NE(run.error.find("vantrel: nothing on this system"), std::string::npos)
            << run.error;
    }
}

TEST_F(VantrelPlay, WhatCannotBeShownIsAnError) {
    const VideoFormat video = {PixelFormat::YVU9, FourCc('Y', 'V', 'U', '9'), 64, 48};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    const Output run = RunVantrel({L"--play", Path(L"in.avi"), L"--format", L"YVU9"});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_NE(run.error.find("vantrel: nothing on this system"), std::string::npos) << run.error;
    EXPECT_EQ(RunVantrel({L"--play", Path(L"none.avi")}).exitCode, 1u);
}

}  // namespace
}  // namespace tavo
