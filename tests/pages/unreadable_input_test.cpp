// What a page says while an edit of it cannot be read, and what it tells a frame that asks. Needs a
// display.
#include "pages/input_check.h"
#include "pages/resource_ids.h"
#include "tests/pages/support/balloons.h"
#include "tests/pages/support/page_frame.h"

using namespace tavo_test;

namespace {

constexpr const wchar_t* kSizeWanted = L"Type a whole number, or 0 for that of the source.";
constexpr const wchar_t* kRateWanted = L"Type a number, such as 25 or 29.97.";

class UnreadableInput : public PagesTest {
  protected:
    void TearDown() override {
        EXPECT_EQ(Balloon(), nullptr);
        ForgetRangeError();
        PagesTest::TearDown();
    }
    static void Open(PageFrame& frame, FakeSettings& settings) {
        ASSERT_EQ(frame.Connect(&settings), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
        EXPECT_EQ(Balloon(), nullptr) << "nobody has typed";
    }
    // Wine's GetDlgItemInt takes a range error of an earlier call for one of its own.
    static void ForgetRangeError() {
        const HMODULE library = GetModuleHandleW(L"ucrtbase.dll");
        if (!library) return;
        const auto place = reinterpret_cast<int*(__cdecl*)()>(
            reinterpret_cast<void*>(GetProcAddress(library, "_errno")));
        if (place) *place() = 0;
    }
    static ComPtr<IInputCheck> CheckOf(const PageFrame& frame) {
        return frame.page.As<IInputCheck>(IID_IInputCheck);
    }
    // Everything in the edit is selected.
    static bool IsSelected(HWND edit) {
        DWORD from = 1;
        DWORD to = 0;
        SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&from),
                     reinterpret_cast<LPARAM>(&to));
        return from == 0 && to == static_cast<DWORD>(GetWindowTextLengthW(edit));
    }

    FakeSettings settings_;
};

struct Case {
    const char* text;
    bool readable;
};

TEST_F(UnreadableInput, SizesAreWholeNumbers) {
    settings_.width = 352;
    PageFrame frame(CLSID_ResamplePropertyPage);
    Open(frame, settings_);
    for (const Case& c : {Case{"wide", false},
                          {"640", true},
                          {"12x", false},
                          {"", true},
                          {"99999999999", false},
                          {"-16", true},
                          {"2147483647", true},
                          {"2147483648", false},
                          {"-2147483648", true},
                          {"+7", true},
                          {"6 4", false},
                          {"-", false},
                          {"1.5", false},
                          {"0", true}}) {
        Type(frame.Control(IDC_WIDTH), c.text);
        EXPECT_EQ(BalloonText(), c.readable ? L"" : kSizeWanted) << c.text;
        EXPECT_EQ(CheckOf(frame)->CheckInput(), c.readable ? S_OK : S_FALSE) << c.text;
    }
    Type(frame.Control(IDC_HEIGHT), "99999999999");
    EXPECT_EQ(BalloonText(), kSizeWanted);
    Type(frame.Control(IDC_HEIGHT), "480");
}

TEST_F(UnreadableInput, RatesAreNumbersWithNoOtherBehindThem) {
    settings_.frameRate = 25.0;
    PageFrame frame(CLSID_TimeRegulatorPropertyPage);
    Open(frame, settings_);
    for (const Case& c : {Case{"abc", false},
                          {"15fps", true},
                          {"24,9", false},
                          {"29.97", true},
                          {"-3", true},
                          {" 12.5 x", true},
                          {"1.2.3", false},
                          {".", false},
                          {"1e2", true}}) {
        Type(frame.Control(IDC_FRAME_RATE), c.text);
        EXPECT_EQ(BalloonText(), c.readable ? L"" : kRateWanted) << c.text;
        EXPECT_EQ(CheckOf(frame)->CheckInput(), c.readable ? S_OK : S_FALSE) << c.text;
    }
    // Emptied, it is about to be filled: no balloon, but no rate either.
    Type(frame.Control(IDC_FRAME_RATE), "");
    EXPECT_EQ(BalloonText(), L"");
    EXPECT_EQ(CheckOf(frame)->CheckInput(), S_FALSE);
    Click(frame.Control(IDC_ENABLE));
    EXPECT_EQ(CheckOf(frame)->CheckInput(), S_OK) << "switched off there is nothing to read";
}

TEST_F(UnreadableInput, TheBalloonGoesWithTheCursorAndWithThePage) {
    PageFrame frame(CLSID_ResamplePropertyPage);
    Open(frame, settings_);
    const int windows = OwnWindows();
    SetFocus(frame.Control(IDC_WIDTH));
    Type(frame.Control(IDC_WIDTH), "x");
    EXPECT_EQ(BalloonText(), kSizeWanted);
    EXPECT_EQ(OwnWindows(), windows + 1);
    frame.Send(WM_COMMAND, MAKEWPARAM(IDC_WIDTH, EN_KILLFOCUS));
    EXPECT_EQ(Balloon(), nullptr);
    EXPECT_EQ(OwnWindows(), windows);
    Type(frame.Control(IDC_WIDTH), "xy");
    EXPECT_EQ(BalloonText(), kSizeWanted);
    ASSERT_EQ(frame.Close(), S_OK);
    EXPECT_EQ(Balloon(), nullptr);
    EXPECT_EQ(CheckOf(frame)->CheckInput(), S_OK);
    EXPECT_EQ(CheckOf(frame)->PointToInput(), S_OK);
}

TEST_F(UnreadableInput, AFrameThatAsksGetsTheCursorPut) {
    PageFrame frame(CLSID_ResamplePropertyPage);
    Open(frame, settings_);
    SetFocus(frame.Control(IDC_HEIGHT));
    Type(frame.Control(IDC_HEIGHT), "99999999999");
    EXPECT_NE(Balloon(), nullptr);
    SetFocus(frame.Control(IDC_METHOD));
    EXPECT_EQ(Balloon(), nullptr);
    EXPECT_EQ(CheckOf(frame)->PointToInput(), S_OK);
    EXPECT_EQ(BalloonText(), kSizeWanted);
    EXPECT_EQ(GetFocus(), frame.Control(IDC_HEIGHT));
    EXPECT_TRUE(IsSelected(frame.Control(IDC_HEIGHT)));
    // Typed over.
    PostMessageA(frame.Control(IDC_HEIGHT), WM_CHAR, '9', 0);
    Pump();
    EXPECT_EQ(frame.Text(IDC_HEIGHT), "9");
    EXPECT_EQ(Balloon(), nullptr);
    EXPECT_EQ(CheckOf(frame)->PointToInput(), S_OK);
    EXPECT_EQ(Balloon(), nullptr) << "there is nothing to point to";
}

// The page itself applies what it reads, for frames that do not ask.
TEST_F(UnreadableInput, AFrameThatDoesNotAskAppliesIt) {
    settings_.width = 352;
    PageFrame frame(CLSID_ResamplePropertyPage);
    Open(frame, settings_);
    Type(frame.Control(IDC_WIDTH), "wide");
    EXPECT_EQ(frame.Apply(), S_OK);
    EXPECT_EQ(settings_.width, 0);
}

}  // namespace
