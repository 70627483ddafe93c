// The timers of both pages. Needs a display.
#include "pages/resource_ids.h"
#include "tests/pages/support/page_frame.h"
#include "tests/pages/support/timer_calls.h"

using namespace tavo_test;

namespace {

class PageTimers : public PagesTest {};

// The system counts the second, and takes longer for it where there is much to do.
TEST_F(PageTimers, FiguresRefreshOnceASecondOnBothPages) {
    FakeSettings settings;
    PageFrame resample(CLSID_ResamplePropertyPage);
    PageFrame regulator(CLSID_TimeRegulatorPropertyPage, 430);
    resample.Connect(&settings);
    regulator.Connect(&settings);
    const TimerCalls timers;
    const DWORD opened = GetTickCount();
    ASSERT_EQ(resample.Open(), S_OK);
    ASSERT_EQ(regulator.Open(), S_OK);
    EXPECT_EQ(timers.seen(), (std::vector<TimerCall>{{resample.Dialog(), 3, 1000},
                                                     {regulator.Dialog(), 4, 1000}}));
    settings.moduleTime = 1.5;
    settings.systemFps = 25.0;
    settings.generateFps = 29.97;
    EXPECT_EQ(resample.Text(IDC_MODULE_TIME), "0");
    EXPECT_EQ(regulator.Text(IDC_GENERATE_FPS), "0");

    EXPECT_TRUE(PumpUntil([&] { return resample.Text(IDC_MODULE_TIME) == "1.500"; }));
    EXPECT_EQ(resample.Text(IDC_SYSTEM_FPS), "25.000");
    EXPECT_TRUE(PumpUntil([&] { return regulator.Text(IDC_GENERATE_FPS) == "29.970"; }));
    EXPECT_GE(GetTickCount() - opened, 900u);

    settings.moduleTime = 2.5;
    settings.generateFps = 24.0;
    EXPECT_TRUE(PumpUntil([&] { return resample.Text(IDC_MODULE_TIME) == "2.500"; }));
    EXPECT_TRUE(PumpUntil([&] { return regulator.Text(IDC_GENERATE_FPS) == "24.000"; }));
    EXPECT_GE(GetTickCount() - opened, 1900u);
    EXPECT_EQ(timers.seen().size(), 2u);

    ASSERT_EQ(resample.Close(), S_OK);
    ASSERT_EQ(regulator.Close(), S_OK);
    MSG message;
    Sleep(1100);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE));
}

// Sees the dialog after the page has handled WM_DESTROY.
struct Afterwards {
    WNDPROC before;
    UINT_PTR timer;
    int destroyed;
    BOOL timerWasLeft;
} afterwards;

LRESULT CALLBACK LookAfterwards(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = CallWindowProcW(afterwards.before, window, message, wParam, lParam);
    if (message == WM_DESTROY) {
        ++afterwards.destroyed;
        afterwards.timerWasLeft = KillTimer(window, afterwards.timer);
    }
    return result;
}

TEST_F(PageTimers, DestroyingTheDialogStopsItsTimer) {
    const std::pair<CLSID, UINT_PTR> pages[] = {{CLSID_ResamplePropertyPage, 3},
                                                {CLSID_TimeRegulatorPropertyPage, 4}};
    for (const auto& [clsid, timer] : pages) {
        for (const bool byFrame : {false, true}) {
            FakeSettings settings;
            PageFrame frame(clsid);
            frame.Connect(&settings);
            ASSERT_EQ(frame.Open(), S_OK);
            const HWND dialog = frame.Dialog();
            afterwards = {};
            afterwards.timer = timer;
            afterwards.before = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
                dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(LookAfterwards)));
            if (byFrame) {
                DestroyWindow(frame.window());
            } else {
                frame.Close();
            }
            EXPECT_EQ(afterwards.destroyed, 1);
            EXPECT_FALSE(afterwards.timerWasLeft);
            EXPECT_FALSE(IsWindow(dialog));
            if (byFrame) {
                EXPECT_EQ(frame.Close(), S_OK);  // of a dialog that is gone already
            }
        }
    }
}

TEST_F(PageTimers, ATickWithoutAnObjectLeavesTheFigures) {
    FakeSettings settings;
    settings.moduleTime = 2.0;
    PageFrame frame(CLSID_ResamplePropertyPage);
    frame.Connect(&settings);
    ASSERT_EQ(frame.Open(), S_OK);
    EXPECT_EQ(frame.Send(WM_TIMER, 3), TRUE);
    ASSERT_EQ(frame.Disconnect(), S_OK);
    settings.moduleTime = 3.0;
    EXPECT_EQ(frame.Send(WM_TIMER, 3), TRUE);
    EXPECT_EQ(frame.Text(IDC_MODULE_TIME), "2.000");
}

}  // namespace
