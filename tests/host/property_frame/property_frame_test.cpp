// Using the property frame with the module's pages. Needs a display.
#include <functional>

#include "tests/filter/support/pictures.h"
#include "tests/host/property_frame/property_frame_rig.h"
#include "tests/pages/support/balloons.h"
#include "tests/pages/support/resample_page.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

RECT ScreenRect(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    return rect;
}

bool IsWithin(const RECT& inner, const RECT& outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

TEST_F(PropertyFrameTest, HasATabForEachPageAndRoomForIt) {
    Open(kBoth);
    wchar_t title[40] = {};
    GetWindowTextW(frame_.Window(), title, 40);
    EXPECT_STREQ(title, L"Some Properties");
    const RECT place = ScreenRect(frame_.Window());
    EXPECT_EQ(place.left, 40);
    EXPECT_EQ(place.top, 30);
    ASSERT_EQ(TabCtrl_GetItemCount(Tabs()), 2);
    for (const int i : {0, 1}) {
        ChooseTab(i);
        wchar_t text[40] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = 40;
        SendMessageW(Tabs(), TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        EXPECT_STREQ(text, i == 0 ? L"Resampling Properties" : L"Time Regulator Properties");
        const HWND shown = OnPage(i == 0 ? IDC_WIDTH : IDC_FRAME_RATE);
        EXPECT_TRUE(IsWindowVisible(shown));
        EXPECT_FALSE(IsWindowVisible(OnPage(i == 0 ? IDC_FRAME_RATE : IDC_WIDTH)));
        // The dialog has its designed size, and covers only the display area of the tabs.
        const PageFrame alone(kBoth[static_cast<size_t>(i)]);
        PROPPAGEINFO info = {};
        info.cb = sizeof info;
        ASSERT_EQ(alone.page->GetPageInfo(&info), S_OK);
        CoTaskMemFree(info.pszTitle);
        const RECT page = ScreenRect(GetParent(shown));
        EXPECT_GE(page.right - page.left, info.size.cx);
        EXPECT_GE(page.bottom - page.top, info.size.cy);
        EXPECT_TRUE(IsWithin(page, ScreenRect(Tabs())));
    }
    for (const int id : {IDOK, IDCANCEL, IDC_FRAME_APPLY, IDC_FRAME_TABS}) {
        EXPECT_TRUE(IsWithin(ScreenRect(Button(id)), ScreenRect(frame_.Window()))) << id;
        if (id != IDC_FRAME_TABS) {
            EXPECT_GE(ScreenRect(Button(id)).top, ScreenRect(Tabs()).bottom) << id;
        }
    }
}

TEST_F(PropertyFrameTest, ApplyIsThereForChangesOnly) {
    Open(kRegulatorFirst);
    EXPECT_FALSE(CanApply());
    SetRate("12.5");
    EXPECT_TRUE(CanApply());
    EXPECT_EQ(settings_.calls, "");
    SetFocus(Button(IDC_FRAME_APPLY));
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(settings_.calls, "SetFrameRate Apply ");
    EXPECT_EQ(settings_.frameRate, 12.5);
    EXPECT_EQ(observer_.notices, "before after ");
    EXPECT_FALSE(CanApply());
    EXPECT_TRUE(IsWindowEnabled(GetFocus())) << "the keyboard is not lost";
    EXPECT_TRUE(frame_.IsOpen());
    Type(OnPage(IDC_FRAME_RATE), "25");
    EXPECT_TRUE(CanApply());
}

// Both pages call themselves dirty as soon as they are shown.
TEST_F(PropertyFrameTest, ApplyIsOffUntilTheUserChangesSomething) {
    settings_.frameRate = 25.0;
    Open(kBoth);
    EXPECT_FALSE(CanApply());
    ChooseTab(1);
    EXPECT_FALSE(CanApply());
    ChooseTab(0);
    PressKey(OnPage(IDC_METHOD), VK_DOWN);
    EXPECT_TRUE(CanApply());
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(settings_.calls, kAllCalls) << "the other page is left alone";
    EXPECT_FALSE(CanApply());
    ChooseTab(1);
    EXPECT_FALSE(CanApply());
    SetRate("30");
    EXPECT_TRUE(CanApply());
    settings_.calls.clear();
    Click(Button(IDOK));
    EXPECT_EQ(settings_.calls, "SetFrameRate Apply ");

    settings_.calls.clear();
    observer_.notices.clear();
    Open(kBoth);
    Click(Button(IDOK));
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.calls, "") << "OK without a change writes nothing";
    EXPECT_EQ(observer_.notices, "");
}

TEST_F(PropertyFrameTest, WhatCannotBeReadIsNotApplied) {
    settings_.width = 352;
    settings_.frameRate = 25.0;
    Open(kBoth);
    Type(OnPage(IDC_WIDTH), "wide");
    ChooseTab(1);
    SetRate("30");
    for (const int button : {IDOK, IDC_FRAME_APPLY}) {
        ChooseTab(1);
        Click(Button(button));
        ASSERT_TRUE(frame_.IsOpen());
        EXPECT_EQ(Tab(), 0);
        EXPECT_EQ(GetFocus(), OnPage(IDC_WIDTH));
        EXPECT_NE(BalloonText(), L"");
        EXPECT_EQ(settings_.calls, "");
        EXPECT_EQ(observer_.notices, "");
        EXPECT_TRUE(CanApply());
    }
    Type(OnPage(IDC_WIDTH), "640");
    EXPECT_EQ(Balloon(), nullptr);
    ChooseTab(1);
    Type(OnPage(IDC_FRAME_RATE), "");
    Click(Button(IDOK));
    EXPECT_TRUE(frame_.IsOpen());
    EXPECT_NE(BalloonText(), L"");
    Type(OnPage(IDC_FRAME_RATE), "29.97");
    Click(Button(IDOK));
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.width, 640);
    EXPECT_EQ(settings_.frameRate, 29.97);
}

TEST_F(PropertyFrameTest, OkAppliesAndCloses) {
    Open(kRegulatorFirst);
    SetRate("30");
    Click(Button(IDOK));
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.frameRate, 30.0);
    EXPECT_EQ(settings_.calls, "SetFrameRate Apply ");
}

TEST_F(PropertyFrameTest, OkWithoutChangesOnlyCloses) {
    Open({CLSID_TimeRegulatorPropertyPage});
    Click(Button(IDOK));
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.calls, "");
    EXPECT_EQ(observer_.notices, "");
}

TEST_F(PropertyFrameTest, WhatIsCancelledIsNotApplied) {
    const std::function<void()> ways[] = {
        [this] { Click(Button(IDCANCEL)); }, [this] { Key(OnPage(IDC_WIDTH), VK_ESCAPE); },
        [this] { PostMessageW(frame_.Window(), WM_CLOSE, 0, 0), PumpFrame(); },
        [this] { DestroyWindow(frame_.Window()); }, [this] { frame_.Close(); }};
    for (const auto& close : ways) {
        Open(kBoth);
        Type(OnPage(IDC_WIDTH), "640");
        EXPECT_TRUE(CanApply());
        close();
        EXPECT_FALSE(frame_.IsOpen());
        EXPECT_EQ(settings_.calls, "");
        EXPECT_EQ(settings_.references, 0);
    }
}

TEST_F(PropertyFrameTest, EnterIsOk) {
    Open(kBoth);
    Type(OnPage(IDC_WIDTH), "640");
    Key(OnPage(IDC_WIDTH), VK_RETURN);
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.width, 640);
}

TEST_F(PropertyFrameTest, ChangesOfBothPagesAreAppliedTogether) {
    Open(kBoth);
    Type(OnPage(IDC_WIDTH), "320");
    ChooseTab(1);
    SetRate("15");
    ChooseTab(0);
    char text[20] = {};
    GetWindowTextA(OnPage(IDC_WIDTH), text, 20);
    EXPECT_STREQ(text, "320") << "typed text stays while another page is shown";
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(settings_.width, 320);
    EXPECT_EQ(settings_.frameRate, 15.0);
    EXPECT_EQ(observer_.notices, "before after ");
    EXPECT_FALSE(CanApply());
}

TEST_F(PropertyFrameTest, PagesWithoutChangesAreLeftAlone) {
    FakePage fake(L"Fake");
    const AnnouncedClass announced(kFakePage, static_cast<IClassFactory*>(&fake));
    Open({CLSID_TimeRegulatorPropertyPage, kFakePage});
    SetRate("20");
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(settings_.frameRate, 20.0);
    EXPECT_EQ(fake.calls, "SetPageSite SetObjects ") << "its tab was never chosen";
    frame_.Close();
}

TEST_F(PropertyFrameTest, KeysGoFromTabToTab) {
    Open(kBoth);
    EXPECT_TRUE(IsChild(Button(IDC_FRAME_PLACE), GetFocus())) << "the page has the keyboard";
    KeyWith(VK_CONTROL, OnPage(IDC_WIDTH), VK_TAB);
    EXPECT_EQ(Tab(), 1);
    EXPECT_TRUE(IsWindowVisible(OnPage(IDC_ENABLE)));
    EXPECT_EQ(GetFocus(), OnPage(IDC_ENABLE));
    KeyWith(VK_CONTROL, OnPage(IDC_ENABLE), VK_TAB);
    EXPECT_EQ(Tab(), 0);
    KeyWith(VK_SHIFT, OnPage(IDC_WIDTH), VK_TAB);
    EXPECT_EQ(Tab(), 1);
    KeyWith(VK_CONTROL, Button(IDOK), VK_PRIOR);
    EXPECT_EQ(Tab(), 0);
    KeyWith(VK_CONTROL, Button(IDOK), VK_NEXT);
    EXPECT_EQ(Tab(), 1);
}

TEST_F(PropertyFrameTest, TheTabKeyPassesThroughThePageToTheButtons) {
    Open({CLSID_TimeRegulatorPropertyPage});
    std::vector<HWND> passed;
    for (int i = 0; i < 5; ++i) {
        passed.push_back(GetFocus());
        Key(GetFocus(), VK_TAB);
    }
    EXPECT_EQ(passed, (std::vector<HWND>{OnPage(IDC_ENABLE), Button(IDOK), Button(IDCANCEL), Tabs(),
                                         OnPage(IDC_ENABLE)}));
}

TEST_F(PropertyFrameTest, ThePageTakesItsKeysFirst) {
    FakePage fake(L"Fake");
    const AnnouncedClass announced(kFakePage, static_cast<IClassFactory*>(&fake));
    Open({kFakePage, CLSID_TimeRegulatorPropertyPage});
    fake.takesKeys = true;
    Key(fake.edit, VK_ESCAPE);
    KeyWith(VK_CONTROL, fake.edit, VK_TAB);
    EXPECT_EQ(Tab(), 0);
    fake.takesKeys = false;
    KeyWith(VK_CONTROL, fake.edit, VK_TAB);
    EXPECT_EQ(Tab(), 1);
    ChooseTab(0);
    Key(fake.edit, VK_ESCAPE);
    EXPECT_FALSE(frame_.IsOpen());
}

TEST_F(PropertyFrameTest, APageThatRefusesKeepsTheFrameOpen) {
    FakePage fake(L"Fake");
    const AnnouncedClass announced(kFakePage, static_cast<IClassFactory*>(&fake));
    Open({kFakePage, CLSID_TimeRegulatorPropertyPage});
    fake.MakeDirty();
    fake.applyResult = E_FAIL;
    ChooseTab(1);
    SetRate("20");
    Click(Button(IDOK));
    EXPECT_TRUE(frame_.IsOpen());
    EXPECT_EQ(Tab(), 0) << "the page that refused is shown";
    EXPECT_EQ(settings_.frameRate, 20.0) << "the other one was applied";
    EXPECT_TRUE(CanApply());
    EXPECT_EQ(observer_.notices, "before after ");
    fake.applyResult = S_OK;
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_FALSE(CanApply());
    frame_.Close();
    EXPECT_EQ(fake.calls,
              "SetPageSite SetObjects Activate Show Show(hide) Apply Show Apply "
              "Deactivate SetObjects(0) SetPageSite(0) ");
}

TEST_F(PropertyFrameTest, SetsAFilterInAGraph) {
    FilterRig rig;
    Graph graph;
    graph.Add(rig.source.Get(), L"source");
    graph.Add(rig.filter.Get(), L"vantrel");
    graph.Add(rig.sink.Get(), L"sink");
    rig.source->pin().offered = {TypeOf(Format("YV12"), 64, 48)};
    ASSERT_EQ(graph.Connect(&rig.source->pin(), rig.input.Get()), S_OK);
    ASSERT_EQ(graph.Connect(rig.output.Get(), &rig.sink->pin()), S_OK);
    Open(kBoth, rig.filter.Get());
    Type(OnPage(IDC_WIDTH), "32");
    PressKey(OnPage(IDC_METHOD), VK_DOWN);
    ChooseTab(1);
    SetRate("12.5");
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 32);
    int method = 0;
    double rate = 0.0;
    rig.settings->GetScaleMethod(&method);
    rig.settings->GetFrameRate(&rate);
    EXPECT_EQ(method, VantrelMethodNearestAuto);
    EXPECT_EQ(rate, 12.5);
}

}  // namespace
