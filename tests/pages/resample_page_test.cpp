// The resampling page as a user meets it: what it shows, and what typing and choosing do. Needs a
// display.
#include <algorithm>
#include <iterator>

#include "pages/resource_ids.h"
#include "tests/pages/support/resample_page.h"

using namespace tavo_test;

namespace {

constexpr const char* kMethodTexts[] = {"AUTO",
                                        "Nearest Neighbor AUTO",
                                        "Bi-Linear AUTO",
                                        "Nearest Neighbor",
                                        "Nearest Neighbor MMX",
                                        "Nearest Neighbor SSE",
                                        "Bi-Linear",
                                        "Bi-Linear MMX",
                                        "Bi-Linear SSE"};
constexpr int kMethodCodes[] = {0, 1, 2, 5, 6, 7, 10, 11, 12};
constexpr const char* kFormatTexts[] = {"AUTO", "YV12", "IYUV",  "YVU9",   "YUY2",  "YUYV",
                                        "YVYU", "UYVY", "RGB24", "RGB555", "RGB565"};
constexpr const char* kTypeTexts[] = {"AUTO", "MPEG1", "MPEG2"};

std::vector<std::string> Items(const PageFrame& frame, int list) {
    std::vector<std::string> items;
    const LRESULT count = SendMessageA(frame.Control(list), CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        char text[80] = {};
        SendMessageA(frame.Control(list), CB_GETLBTEXT, static_cast<WPARAM>(i),
                     reinterpret_cast<LPARAM>(text));
        items.push_back(text);
    }
    return items;
}

TEST_F(ResamplePage, ShowsTheSettings) {
    settings_.width = 720;
    settings_.height = -480;
    settings_.method = VantrelMethodBilinearMmx;
    settings_.format = VantrelFormatRgb24;
    settings_.type = VantrelTypeMpeg2;
    Open();
    EXPECT_EQ(frame_->Text(IDC_WIDTH), "720");
    EXPECT_EQ(frame_->Text(IDC_HEIGHT), "-480");
    EXPECT_EQ(frame_->Selected(IDC_METHOD), "Bi-Linear MMX");
    EXPECT_EQ(frame_->Selected(IDC_FORMAT), "RGB24");
    EXPECT_EQ(frame_->Selected(IDC_TYPE), "MPEG2");
    EXPECT_EQ(frame_->Text(IDC_MODULE_TIME), "0");
    EXPECT_EQ(frame_->Text(IDC_SYSTEM_FPS), "0");
    EXPECT_EQ(settings_.calls, "");
}

TEST_F(ResamplePage, Lists) {
    Open();
    EXPECT_EQ(Items(*frame_, IDC_METHOD),
              std::vector<std::string>(std::begin(kMethodTexts), std::end(kMethodTexts)));
    EXPECT_EQ(Items(*frame_, IDC_FORMAT),
              std::vector<std::string>(std::begin(kFormatTexts), std::end(kFormatTexts)));
    EXPECT_EQ(Items(*frame_, IDC_TYPE),
              std::vector<std::string>(std::begin(kTypeTexts), std::end(kTypeTexts)));
}

TEST_F(ResamplePage, SelectsEveryCode) {
    const auto selected = [this](int list) {
        EXPECT_EQ(frame_->Connect(&settings_), S_OK);
        EXPECT_EQ(frame_->Open(), S_OK);
        const std::string text = frame_->Selected(list);
        EXPECT_EQ(frame_->Close(), S_OK);
        return text;
    };
    for (int code = -1; code <= 13; ++code) {
        settings_.method = code;
        const auto* const known = std::find(std::begin(kMethodCodes), std::end(kMethodCodes), code);
        const auto index = known == std::end(kMethodCodes) ? 0 : known - kMethodCodes;
        EXPECT_EQ(selected(IDC_METHOD), kMethodTexts[index]) << code;
    }
    for (int code = -1; code <= 11; ++code) {
        settings_.format = code;
        const bool known = code >= 0 && code <= 10;
        EXPECT_EQ(selected(IDC_FORMAT), known ? kFormatTexts[code] : "(none)") << code;
    }
    for (int code = -1; code <= 3; ++code) {
        settings_.type = code;
        const bool known = code >= 0 && code <= 2;
        EXPECT_EQ(selected(IDC_TYPE), known ? kTypeTexts[code] : "(none)") << code;
    }
}

TEST_F(ResamplePage, CodesThatNoListKnowsStayAsTheyWere) {
    settings_.method = 3;
    settings_.format = 99;
    settings_.type = -7;
    Open();
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.calls, kAllCalls);
    EXPECT_EQ(settings_.method, 3);
    EXPECT_EQ(settings_.format, 99);
    EXPECT_EQ(settings_.type, -7);
}

TEST_F(ResamplePage, IsDirtyAsSoonAsItIsShown) {
    ASSERT_EQ(frame_->Connect(&settings_), S_OK);
    EXPECT_FALSE(frame_->IsDirty());
    ASSERT_EQ(frame_->Open(), S_OK);
    EXPECT_TRUE(frame_->IsDirty());
    // One notice for each edit.
    EXPECT_EQ(frame_->site.notices, std::vector<DWORD>(2, PROPPAGESTATUS_DIRTY));
}

TEST_F(ResamplePage, OpensWithoutASite) {
    ASSERT_EQ(frame_->Connect(&settings_), S_OK);
    const RECT place = {0, 0, 400, 250};
    ASSERT_EQ(frame_->page->Activate(frame_->window(), &place, FALSE), S_OK);
    EXPECT_TRUE(frame_->IsDirty());
    EXPECT_EQ(frame_->Apply(), E_UNEXPECTED);
    EXPECT_EQ(settings_.calls, "");
}

TEST_F(ResamplePage, TypingASize) {
    OpenClean();
    Type(frame_->Control(IDC_WIDTH), "6");
    ExpectOneNotice();
    Type(frame_->Control(IDC_WIDTH), "640");
    Type(frame_->Control(IDC_HEIGHT), "480");
    EXPECT_EQ(settings_.calls, "");
    EXPECT_EQ(settings_.width, 0);
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.calls, kAllCalls);
    EXPECT_EQ(settings_.width, 640);
    EXPECT_EQ(settings_.height, 480);
    EXPECT_FALSE(frame_->IsDirty());
}

TEST_F(ResamplePage, EmptyAndOddSizes) {
    struct Case {
        const char* text;
        int width;
    };
    for (const Case& c : {Case{"", 0},
                          {"-16", -16},
                          {"wide", 0},
                          {"12x", 12},
                          {"2147483647", 2147483647},
                          {"99999999999", 0}}) {
        settings_.width = 352;
        OpenClean();
        Type(frame_->Control(IDC_WIDTH), c.text);
        EXPECT_EQ(frame_->Text(IDC_WIDTH), c.text);
        EXPECT_TRUE(frame_->IsDirty()) << c.text;
        EXPECT_EQ(frame_->Apply(), S_OK);
        EXPECT_EQ(settings_.width, c.width) << c.text;
        EXPECT_EQ(frame_->Close(), S_OK);
        frame_->site.notices.clear();
    }
}

TEST_F(ResamplePage, OnlyTheHeightTakesNothingButDigits) {
    OpenClean();
    Type(frame_->Control(IDC_WIDTH), "1a2-3");
    Type(frame_->Control(IDC_HEIGHT), "1a2-3");
    EXPECT_EQ(frame_->Text(IDC_WIDTH), "1a2-3");
    EXPECT_EQ(frame_->Text(IDC_HEIGHT), "123");
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.height, 123);
}

TEST_F(ResamplePage, ChoosingEveryItemByKey) {
    OpenClean();
    for (size_t i = 1; i < std::size(kMethodCodes); ++i) {
        PressKey(frame_->Control(IDC_METHOD), VK_DOWN);
        EXPECT_EQ(frame_->Selected(IDC_METHOD), kMethodTexts[i]);
        ExpectOneNotice();
        ASSERT_EQ(frame_->Apply(), S_OK);
        EXPECT_EQ(settings_.method, kMethodCodes[i]);
        frame_->site.notices.clear();
    }
    for (int i = 1; i <= 10; ++i) {
        PressKey(frame_->Control(IDC_FORMAT), VK_DOWN);
        EXPECT_EQ(frame_->Selected(IDC_FORMAT), kFormatTexts[i]);
        ExpectOneNotice();
        ASSERT_EQ(frame_->Apply(), S_OK);
        EXPECT_EQ(settings_.format, i);
        frame_->site.notices.clear();
    }
    for (int i = 1; i <= 2; ++i) {
        PressKey(frame_->Control(IDC_TYPE), VK_DOWN);
        EXPECT_EQ(frame_->Selected(IDC_TYPE), kTypeTexts[i]);
        ExpectOneNotice();
        ASSERT_EQ(frame_->Apply(), S_OK);
        EXPECT_EQ(settings_.type, i);
        frame_->site.notices.clear();
    }
    for (const int list : {IDC_METHOD, IDC_FORMAT, IDC_TYPE})
        PressKey(frame_->Control(list), VK_HOME);
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.method, 0);
    EXPECT_EQ(settings_.format, 0);
    EXPECT_EQ(settings_.type, 0);
}

TEST_F(ResamplePage, ChoosingWithTheMouse) {
    OpenClean();
    ChooseWithMouse(frame_->Control(IDC_METHOD), 3);
    EXPECT_EQ(frame_->Selected(IDC_METHOD), "Nearest Neighbor");
    EXPECT_TRUE(frame_->IsDirty());
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.method, VantrelMethodNearest);
}

TEST_F(ResamplePage, AChangeToNoItemChangesNothingButTheDirtyState) {
    settings_.method = VantrelMethodBilinear;
    settings_.format = VantrelFormatYuy2;
    settings_.type = VantrelTypeMpeg1;
    for (const int list : {IDC_METHOD, IDC_FORMAT, IDC_TYPE}) {
        OpenClean();
        SendMessageW(frame_->Control(list), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
        EXPECT_FALSE(frame_->IsDirty());
        SendMessageW(frame_->Dialog(), WM_COMMAND, MAKEWPARAM(list, CBN_SELCHANGE), 0);
        ExpectOneNotice();
        ASSERT_EQ(frame_->Apply(), S_OK);
        EXPECT_EQ(settings_.method, VantrelMethodBilinear);
        EXPECT_EQ(settings_.format, VantrelFormatYuy2);
        EXPECT_EQ(settings_.type, VantrelTypeMpeg1);
        ASSERT_EQ(frame_->Close(), S_OK);
    }
}

TEST_F(ResamplePage, ItemsBeyondTheLastChangeNothing) {
    settings_.format = VantrelFormatYuy2;
    OpenClean();
    const HWND list = frame_->Control(IDC_FORMAT);
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("another"));
    SendMessageA(list, CB_SETCURSEL, 11, 0);
    SendMessageW(frame_->Dialog(), WM_COMMAND, MAKEWPARAM(IDC_FORMAT, CBN_SELCHANGE), 0);
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.format, VantrelFormatYuy2);
}

TEST_F(ResamplePage, OtherNoticesOfControlsDoNothing) {
    OpenClean();
    for (const int control : {IDC_WIDTH, IDC_HEIGHT, IDC_METHOD, IDC_FORMAT, IDC_TYPE, 4711}) {
        for (const int code : {CBN_SETFOCUS, CBN_KILLFOCUS, CBN_DROPDOWN, CBN_SELENDOK, EN_SETFOCUS,
                               EN_KILLFOCUS, EN_UPDATE, BN_CLICKED}) {
            EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(control, code)), TRUE);
        }
    }
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(IDC_WIDTH, CBN_SELCHANGE)), TRUE);
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(IDC_METHOD, EN_CHANGE)), TRUE);
    EXPECT_FALSE(frame_->IsDirty());
    EXPECT_TRUE(frame_->site.notices.empty());
    EXPECT_EQ(frame_->Send(WM_COMMAND, MAKEWPARAM(IDC_WIDTH, EN_CHANGE)), TRUE);
    ExpectOneNotice();
}

}  // namespace
