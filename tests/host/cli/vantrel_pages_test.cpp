// The property pages during playback: settings take effect, and the ways to end. Needs a display.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "host/property_frame/property_frame_ids.h"
#include "pages/resource_ids.h"
#include "tests/host/cli/program_windows.h"

namespace tavo {
namespace {

using tavo_test::ClickOn;
using tavo_test::ControlWithin;
using tavo_test::FigureWithin;
using tavo_test::FindFrame;
using tavo_test::FindVideo;
using tavo_test::GrayOf;
using tavo_test::IsVideoAs;
using tavo_test::Output;
using tavo_test::PressCtrlC;
using tavo_test::RunningProgram;
using tavo_test::ShareConsole;
using tavo_test::TextWithin;
using tavo_test::TypeInto;
using tavo_test::VantrelPath;
using tavo_test::WaitFor;

std::string Narrow(std::wstring_view text) { return {text.begin(), text.end()}; }

// The figures change with every frame.
bool Plays(HWND frame) {
    const std::string before = TextWithin(frame, IDC_SYSTEM_FPS);
    return WaitFor([&] { return TextWithin(frame, IDC_SYSTEM_FPS) != before; });
}

class VantrelPages : public tavo_test::PlayTest {};

TEST_F(VantrelPages, ShowTheFilterWhileTheVideoRepeats) {
    // Less than a second of video.
    RunningProgram program(VantrelPath(), {L"--pages", Movie(20), L"--size", L"96x0"});
    const HWND frame = FindFrame(program);
    ASSERT_NE(frame, nullptr);
    EXPECT_NE(FindVideo(program), nullptr);
    EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_WIDTH) == "96"; }));
    Sleep(3000);
    EXPECT_FALSE(program.HasEnded());
    EXPECT_TRUE(WaitFor([&] { return FigureWithin(frame, IDC_SYSTEM_FPS) > 0; }));
    PostMessageW(frame, WM_COMMAND, IDCANCEL, 0);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPages, EndWhenTheVideoIsClosed) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(1500)});
    ASSERT_NE(FindFrame(program), nullptr);
    PostMessageW(FindVideo(program), WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPages, EndWithCtrlC) {
    ASSERT_TRUE(ShareConsole());
    RunningProgram program(VantrelPath(), {L"--pages", Movie(1500)});
    ASSERT_NE(FindFrame(program), nullptr);
    EXPECT_TRUE(PressCtrlC());
    EXPECT_EQ(program.Wait().exitCode, 3u);
}

// Wine interrupts the first thread for Ctrl-C, which may not draw or allocate then.
TEST_F(VantrelPages, LeaveTheFirstThreadToCtrlC) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(1500)});
    const HWND frame = FindFrame(program);
    ASSERT_NE(frame, nullptr);
    EXPECT_NE(GetWindowThreadProcessId(frame, nullptr), program.FirstThread());
    EXPECT_NE(GetWindowThreadProcessId(FindVideo(program), nullptr), program.FirstThread());
    PostMessageW(frame, WM_COMMAND, IDCANCEL, 0);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPages, SettingsAreAppliedWhileTheVideoPlays) {
    // The platform reads the first and seeks in it; the program itself reads the second.
    for (const PixelFormat format : {PixelFormat::RGB24, PixelFormat::RGB565}) {
        SCOPED_TRACE(static_cast<int>(format));
        RunningProgram program(VantrelPath(),
                               {L"--pages", Movie(500, format), L"--size", L"160x120"});
        const HWND frame = FindFrame(program);
        const HWND video = FindVideo(program);
        ASSERT_NE(frame, nullptr);
        ASSERT_NE(video, nullptr);
        EXPECT_TRUE(WaitFor([&] { return IsVideoAs(video, 160, 120); }));
        TypeInto(ControlWithin(frame, IDC_WIDTH), "320");
        TypeInto(ControlWithin(frame, IDC_HEIGHT), "200");
        EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_HEIGHT) == "200"; }));
        ClickOn(ControlWithin(frame, IDC_FRAME_APPLY));
        EXPECT_TRUE(WaitFor([&] { return IsVideoAs(video, 320, 200); }));
        EXPECT_TRUE(
            WaitFor([&] { return !IsWindowEnabled(ControlWithin(frame, IDC_FRAME_APPLY)); }));
        EXPECT_TRUE(Plays(frame));

        PostMessageW(ControlWithin(frame, IDC_FRAME_TABS), WM_KEYDOWN, VK_RIGHT, 0);
        ASSERT_TRUE(WaitFor([&] { return ControlWithin(frame, IDC_ENABLE) != nullptr; }));
        ClickOn(ControlWithin(frame, IDC_ENABLE));
        TypeInto(ControlWithin(frame, IDC_FRAME_RATE), "12.5");
        EXPECT_TRUE(
            WaitFor([&] { return IsWindowEnabled(ControlWithin(frame, IDC_FRAME_APPLY)); }));
        EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_FRAME_RATE) == "12.5"; }));
        ClickOn(ControlWithin(frame, IDC_FRAME_APPLY));
        EXPECT_TRUE(WaitFor([&] { return FigureWithin(frame, IDC_GENERATE_FPS) > 0; }));
        EXPECT_TRUE(IsVideoAs(video, 320, 200));
        PostMessageW(ControlWithin(frame, IDC_FRAME_RATE), WM_KEYDOWN, VK_ESCAPE, 0);
        const Output run = program.Wait();
        ExpectGoodEnd(run);
        EXPECT_NE(run.out.find(Narrow(NameOf(format))), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("320 x 200"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("12.5 fps set"), std::string::npos) << run.out;
    }
}

TEST_F(VantrelPages, TheVideoGoesOnWhereItWasWhenSettingsWereApplied) {
    const std::wstring movie = GrayMovie(250, 0, 2);
    RunningProgram program(VantrelPath(), {L"--pages", movie, L"--size", L"160x120"});
    const HWND frame = FindFrame(program);
    const HWND video = FindVideo(program);
    ASSERT_NE(frame, nullptr);
    ASSERT_NE(video, nullptr);
    constexpr int kLate = 8;
    EXPECT_TRUE(WaitFor([&] { return GrayOf(video) >= kLate; }));
    TypeInto(ControlWithin(frame, IDC_WIDTH), "200");
    EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_WIDTH) == "200"; }));
    ClickOn(ControlWithin(frame, IDC_FRAME_APPLY));
    EXPECT_TRUE(WaitFor([&] { return IsVideoAs(video, 200, 120); }));
    // The first may still be an old one.
    int first = -1;
    int next = -1;
    EXPECT_TRUE(WaitFor([&] { return (first = GrayOf(video)) > 0; }));
    EXPECT_TRUE(WaitFor([&] { return (next = GrayOf(video)) > 0 && next != first; }));
    EXPECT_GE(next, kLate);
    PostMessageW(frame, WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait());
}

TEST_F(VantrelPages, OkAppliesAndEnds) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(500), L"--size", L"160x120"});
    const HWND frame = FindFrame(program);
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(WaitFor([&] { return FigureWithin(frame, IDC_SYSTEM_FPS) > 0; }));
    TypeInto(ControlWithin(frame, IDC_WIDTH), "240");
    PostMessageW(ControlWithin(frame, IDC_WIDTH), WM_KEYDOWN, VK_RETURN, 0);
    const Output run = program.Wait();
    ExpectGoodEnd(run);
    EXPECT_NE(run.out.find("240 x 120"), std::string::npos) << run.out;
    // Figures from before the change.
    const double fps = std::atof(run.out.c_str() + run.out.find("per frame, ") + 11);
    EXPECT_GT(fps, 0.0) << run.out;
    EXPECT_LT(fps, 60.0) << run.out;
}

TEST_F(VantrelPages, CancelDropsWhatWasTyped) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(500), L"--size", L"160x120"});
    const HWND frame = FindFrame(program);
    ASSERT_NE(frame, nullptr);
    TypeInto(ControlWithin(frame, IDC_WIDTH), "240");
    EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_WIDTH) == "240"; }));
    ClickOn(GetDlgItem(frame, IDCANCEL));
    const Output run = program.Wait();
    ExpectGoodEnd(run);
    EXPECT_EQ(run.out.find("240 x 120"), std::string::npos) << run.out;
}

TEST_F(VantrelPages, AnUnusableSizeLeavesTheVideoPlaying) {
    RunningProgram program(VantrelPath(), {L"--pages", Movie(500), L"--size", L"160x120"});
    const HWND frame = FindFrame(program);
    const HWND video = FindVideo(program);
    ASSERT_NE(frame, nullptr);
    ASSERT_NE(video, nullptr);
    TypeInto(ControlWithin(frame, IDC_WIDTH), "65535");
    TypeInto(ControlWithin(frame, IDC_HEIGHT), "65535");
    EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, IDC_HEIGHT) == "65535"; }));
    ClickOn(ControlWithin(frame, IDC_FRAME_APPLY));
    EXPECT_TRUE(WaitFor([&] { return !IsWindowEnabled(ControlWithin(frame, IDC_FRAME_APPLY)); }));
    EXPECT_TRUE(Plays(frame));
    EXPECT_TRUE(IsVideoAs(video, 160, 120));
    PostMessageW(frame, WM_CLOSE, 0, 0);
    ExpectGoodEnd(program.Wait());
}

}  // namespace
}  // namespace tavo
