// The timers of both pages, by the clock. Needs a display.
#include <algorithm>

#include "pages/resource_ids.h"
#include "tests/pages/support/page_frame.h"

using namespace tavo_test;

namespace {

struct Tick {
    HWND window;
    WPARAM timer;
    DWORD time;
};

// Runs the message loop for a while and notes the timer messages that go through it.
std::vector<Tick> TicksWithin(DWORD milliseconds) {
    std::vector<Tick> ticks;
    const DWORD start = GetTickCount();
    DWORD passed = 0;
    while (passed < milliseconds) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_TIMER) {
                ticks.push_back({message.hwnd, message.wParam, GetTickCount()});
            }
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        passed = GetTickCount() - start;
    }
    return ticks;
}

std::vector<DWORD> TimesOf(const std::vector<Tick>& ticks, HWND window, WPARAM timer) {
    std::vector<DWORD> times;
    for (const Tick& tick : ticks)
        if (tick.window == window && tick.timer == timer) times.push_back(tick.time);
    return times;
}

class PageTimers : public PagesTest {
  protected:
    void ExpectOnceASecond(const std::vector<DWORD>& times, DWORD opened) {
        ASSERT_EQ(times.size(), 3u);
        DWORD before = opened;
        for (const DWORD time : times) {
            EXPECT_GE(time - before, 900u);
            EXPECT_LE(time - before, 1500u);
            before = time;
        }
    }
};

TEST_F(PageTimers, FiguresRefreshOnceASecondOnBothPages) {
    FakeSettings settings;
    PageFrame resample(CLSID_ResamplePropertyPage);
    PageFrame regulator(CLSID_TimeRegulatorPropertyPage, 430);
    resample.Connect(&settings);
    regulator.Connect(&settings);
    const DWORD opened = GetTickCount();
    ASSERT_EQ(resample.Open(), S_OK);
    ASSERT_EQ(regulator.Open(), S_OK);
    settings.moduleTime = 1.5;
    settings.systemFps = 25.0;
    settings.generateFps = 29.97;
    EXPECT_EQ(resample.Text(IDC_MODULE_TIME), "0");
    EXPECT_EQ(regulator.Text(IDC_GENERATE_FPS), "0");

    const std::vector<Tick> ticks = TicksWithin(3600);
    EXPECT_EQ(ticks.size(), 6u);  // no other timer
    ExpectOnceASecond(TimesOf(ticks, resample.Dialog(), 3), opened);
    ExpectOnceASecond(TimesOf(ticks, regulator.Dialog(), 4), opened);
    EXPECT_EQ(resample.Text(IDC_MODULE_TIME), "1.500");
    EXPECT_EQ(resample.Text(IDC_SYSTEM_FPS), "25.000");
    EXPECT_EQ(regulator.Text(IDC_GENERATE_FPS), "29.970");

    ASSERT_EQ(resample.Close(), S_OK);
    ASSERT_EQ(regulator.Close(), S_OK);
    EXPECT_TRUE(TicksWithin(1200).empty());
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
