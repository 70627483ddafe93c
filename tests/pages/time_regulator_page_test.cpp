// The time regulator page as a user meets it. Needs a display.
#include "pages/resource_ids.h"
#include "tests/pages/support/message_boxes.h"
#include "tests/pages/support/page_frame.h"

using namespace tavo_test;

namespace {

class TimeRegulatorPage : public OnePageTest {
  protected:
    TimeRegulatorPage() : OnePageTest(CLSID_TimeRegulatorPropertyPage) {}
    void Open(double rate) {
        settings_.frameRate = rate;
        ASSERT_EQ(frame_->Connect(&settings_), S_OK);
        ASSERT_EQ(frame_->Open(), S_OK);
    }
    void OpenClean(double rate) {
        Open(rate);
        ASSERT_EQ(frame_->Apply(), S_OK);
        settings_.calls.clear();
        frame_->site.notices.clear();
    }
    bool IsChecked() {
        return SendMessageW(frame_->Control(IDC_ENABLE), BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    bool IsRateEnabled() { return IsWindowEnabled(frame_->Control(IDC_FRAME_RATE)); }
    // The rate that the page would give to the filter now.
    double AppliedRate() {
        settings_.frameRate = -1.0;
        EXPECT_TRUE(frame_->IsDirty());
        EXPECT_EQ(frame_->Apply(), S_OK);
        EXPECT_FALSE(frame_->IsDirty());
        return settings_.frameRate;
    }
};

TEST_F(TimeRegulatorPage, OpensSwitchedOff) {
    for (const double rate : {0.0, -5.0}) {
        Open(rate);
        EXPECT_FALSE(IsChecked());
        EXPECT_FALSE(IsRateEnabled());
        EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "0.00");
        EXPECT_EQ(frame_->Text(IDC_GENERATE_FPS), "0");
        EXPECT_FALSE(frame_->IsDirty());
        EXPECT_TRUE(frame_->site.notices.empty());
        ASSERT_EQ(frame_->Close(), S_OK);
    }
}

TEST_F(TimeRegulatorPage, OpensSwitchedOn) {
    Open(29.97);
    EXPECT_TRUE(IsChecked());
    EXPECT_TRUE(IsRateEnabled());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "29.97");
    EXPECT_EQ(frame_->Text(IDC_GENERATE_FPS), "0");
    EXPECT_TRUE(frame_->IsDirty());
    EXPECT_EQ(frame_->site.notices, std::vector<DWORD>{PROPPAGESTATUS_DIRTY});
    EXPECT_EQ(AppliedRate(), 29.97);
    EXPECT_EQ(settings_.calls, "SetFrameRate Apply ");
}

TEST_F(TimeRegulatorPage, TheRateIsReadBackAsItIsShown) {
    Open(23.976);
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "23.98");
    EXPECT_EQ(AppliedRate(), 23.98);
    ASSERT_EQ(frame_->Close(), S_OK);
    Open(0.001);
    EXPECT_TRUE(IsChecked());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "0.00");
    EXPECT_EQ(AppliedRate(), 0.0);
}

TEST_F(TimeRegulatorPage, RatesOfAnySizeFit) {
    Open(1e300);
    EXPECT_TRUE(IsChecked());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE).size(), 304u);
    EXPECT_TRUE(frame_->IsDirty());
}

TEST_F(TimeRegulatorPage, UncheckingSwitchesOff) {
    OpenClean(25.0);
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_FALSE(IsChecked());
    EXPECT_FALSE(IsRateEnabled());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "25.00");
    EXPECT_EQ(frame_->site.notices, std::vector<DWORD>{PROPPAGESTATUS_DIRTY});
    EXPECT_EQ(AppliedRate(), 0.0);
    EXPECT_EQ(settings_.calls, "SetFrameRate Apply ");
}

TEST_F(TimeRegulatorPage, CheckingTakesNoRateYet) {
    OpenClean(25.0);
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_EQ(AppliedRate(), 0.0);
    frame_->site.notices.clear();
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_TRUE(IsChecked());
    EXPECT_TRUE(IsRateEnabled());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "25.00");
    EXPECT_FALSE(frame_->IsDirty());
    EXPECT_TRUE(frame_->site.notices.empty());
    // The next change of the text takes it.
    PostMessageA(frame_->Control(IDC_FRAME_RATE), EM_SETSEL, 5, 5);
    PostMessageA(frame_->Control(IDC_FRAME_RATE), WM_CHAR, '1', 0);
    Pump();
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "25.001");
    EXPECT_EQ(AppliedRate(), 25.001);
}

TEST_F(TimeRegulatorPage, UncheckedAndCheckedAgainItStaysOff) {
    OpenClean(25.0);
    Click(frame_->Control(IDC_ENABLE));
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_TRUE(IsChecked());
    EXPECT_EQ(AppliedRate(), 0.0);
}

TEST_F(TimeRegulatorPage, TypingARate) {
    OpenClean(25.0);
    struct Case {
        const char* text;
        double rate;
    };
    for (const Case& c : {Case{"15fps", 15.0},
                          {"abc", 0.0},
                          {"29.97", 29.97},
                          {"", 0.0},
                          {"-3", -3.0},
                          {" 12.5 x", 12.5},
                          {"1e2", 100.0},
                          {".5", 0.5},
                          {"24,9", 24.0},
                          {"0000000000000000000751", 7.0}}) {
        Type(frame_->Control(IDC_FRAME_RATE), c.text);
        EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), c.text);
        EXPECT_EQ(AppliedRate(), c.rate) << c.text;
        EXPECT_TRUE(IsRateEnabled());
    }
}

TEST_F(TimeRegulatorPage, EveryKeyIsANotice) {
    OpenClean(25.0);
    Type(frame_->Control(IDC_FRAME_RATE), "50.5");
    EXPECT_EQ(frame_->site.notices, std::vector<DWORD>(4, PROPPAGESTATUS_DIRTY));
}

TEST_F(TimeRegulatorPage, ATextThatChangesWhileUncheckedMeansOff) {
    Open(0.0);
    SetDlgItemTextA(frame_->Dialog(), IDC_FRAME_RATE, "30");
    EXPECT_FALSE(frame_->IsDirty());
    // On again, with no new text: still off.
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_FALSE(frame_->IsDirty());
    Click(frame_->Control(IDC_ENABLE));
    EXPECT_EQ(AppliedRate(), 0.0);
}

TEST_F(TimeRegulatorPage, NoticesOfOtherControls) {
    OpenClean(25.0);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(4711, EN_CHANGE)), TRUE);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(IDC_FRAME_RATE, EN_UPDATE)), TRUE);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(IDC_FRAME_RATE, EN_KILLFOCUS)), TRUE);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(4711, BN_CLICKED)), TRUE);
    EXPECT_FALSE(frame_->IsDirty());
    // Unchecked by program: the next click of any button notices it.
    SendMessageW(frame_->Control(IDC_ENABLE), BM_SETCHECK, BST_UNCHECKED, 0);
    EXPECT_TRUE(IsRateEnabled());
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(4711, BN_CLICKED)), TRUE);
    EXPECT_FALSE(IsRateEnabled());
    EXPECT_EQ(AppliedRate(), 0.0);
}

TEST_F(TimeRegulatorPage, AChangeOfAnyTextWhileUncheckedMeansOff) {
    OpenClean(25.0);
    SendMessageW(frame_->Control(IDC_ENABLE), BM_SETCHECK, BST_UNCHECKED, 0);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(4711, EN_CHANGE)), TRUE);
    EXPECT_FALSE(frame_->IsDirty());
    // Seen by whatever makes the page dirty without a rate of its own: nothing but a click does.
    SendMessageW(frame_->Control(IDC_ENABLE), BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(4711, EN_CHANGE)), TRUE);
    EXPECT_FALSE(frame_->IsDirty());
    // Opened again it shows the rate that was forgotten.
    ASSERT_EQ(frame_->Close(), S_OK);
    ASSERT_EQ(frame_->Open(), S_OK);
    EXPECT_FALSE(IsChecked());
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "0.00");
}

TEST_F(TimeRegulatorPage, ARefusalShowsOneBoxAndLeavesThePageClean) {
    OpenClean(25.0);
    MessageBoxes boxes;
    settings_.applyResult = 0;
    Type(frame_->Control(IDC_FRAME_RATE), "5");
    EXPECT_EQ(AppliedRate(), 5.0);
    ASSERT_EQ(boxes.seen().size(), 1u);
    EXPECT_EQ(boxes.seen()[0].text, L"Graph Refresh Fail.");
    EXPECT_EQ(boxes.seen()[0].caption, L"Error");
    EXPECT_EQ(boxes.seen()[0].owner, nullptr);
    EXPECT_EQ(boxes.seen()[0].buttons.size(), 1u);
    EXPECT_EQ(boxes.seen()[0].icon, nullptr);
    settings_.applyResult = 1;
    Type(frame_->Control(IDC_FRAME_RATE), "6");
    EXPECT_EQ(AppliedRate(), 6.0);
    Pump();
    EXPECT_EQ(boxes.seen().size(), 1u);
}

#if defined(__i386__)
// As an application leaves the processor that computes in single precision.
class SinglePrecision {
  public:
    SinglePrecision() {
        asm volatile("fnstcw %0" : "=m"(saved_));
        const WORD single = saved_ & ~0x0300;
        asm volatile("fldcw %0" : : "m"(single));
    }
    ~SinglePrecision() { asm volatile("fldcw %0" : : "m"(saved_)); }
    SinglePrecision(const SinglePrecision&) = delete;
    SinglePrecision& operator=(const SinglePrecision&) = delete;

  private:
    WORD saved_;
};

TEST_F(TimeRegulatorPage, WorksInAProcessThatComputesInSinglePrecision) {
    const SinglePrecision single;
    Open(29.97);
    EXPECT_EQ(frame_->Text(IDC_FRAME_RATE), "29.97");
    EXPECT_EQ(AppliedRate(), 29.97);
    Type(frame_->Control(IDC_FRAME_RATE), "123456.78");
    EXPECT_EQ(AppliedRate(), 123456.78);
    settings_.generateFps = 123456.789;
    frame_->Send(WM_TIMER, 4);
    EXPECT_EQ(frame_->Text(IDC_GENERATE_FPS), "123456.789");
}
#endif

TEST_F(TimeRegulatorPage, TheFigureFollowsTheTimer) {
    Open(0.0);
    struct Case {
        double value;
        const char* text;
    };
    for (const Case& c : {Case{24.0, "24.000"}, {0.0, "0"}, {29.97, "29.970"}, {0.25, "0.250"}}) {
        settings_.generateFps = c.value;
        EXPECT_EQ(frame_->Send(WM_TIMER, 4), TRUE);
        EXPECT_EQ(frame_->Text(IDC_GENERATE_FPS), c.text);
    }
}

}  // namespace
