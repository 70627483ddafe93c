// Opening and closing the property frame, and what is released. Needs a display.
#include "tests/host/property_frame/property_frame_rig.h"
#include "tests/pages/support/message_boxes.h"
#include "tests/support/handles.h"

using namespace tavo_test;

namespace {

TEST_F(PropertyFrameTest, TheSiteOutlivesTheFrame) {
    FakePage fake(L"Fake");
    const AnnouncedClass announced(kFakePage, static_cast<IClassFactory*>(&fake));
    Open({kFakePage});
    const ComPtr<IPropertyPageSite> site = fake.site;
    LCID locale = 0;
    EXPECT_EQ(site->GetLocaleID(&locale), S_OK);
    EXPECT_EQ(locale, GetUserDefaultLCID());
    IUnknown* container = &settings_;
    EXPECT_EQ(site->GetPageContainer(&container), E_NOTIMPL);
    EXPECT_EQ(container, nullptr);
    MSG key = {};
    key.message = WM_KEYDOWN;
    key.wParam = 'A';
    EXPECT_EQ(site->TranslateAccelerator(&key), S_FALSE);
    EXPECT_EQ(site->OnStatusChange(PROPPAGESTATUS_DIRTY), S_OK);
    EXPECT_TRUE(CanApply());
    EXPECT_EQ(site->OnStatusChange(PROPPAGESTATUS_CLEAN), S_OK);
    EXPECT_FALSE(CanApply());
    frame_.Close();
    EXPECT_EQ(site->OnStatusChange(PROPPAGESTATUS_DIRTY), S_OK);
    EXPECT_EQ(site->TranslateAccelerator(&key), S_FALSE);
    EXPECT_EQ(RefCount(site.Get()), 1u);
}

TEST_F(PropertyFrameTest, WhatCannotBeOpenedLeavesNothing) {
    const int windows = OwnWindows();
    const std::wstring title = L"Some Properties";
    EXPECT_EQ(frame_.Open(title, &settings_, {}, {}), E_INVALIDARG);
    // The module's pages were made by then.
    EXPECT_EQ(frame_.Open(title, &settings_, Classes{kBoth[0], kFakePage}, {}),
              REGDB_E_CLASSNOTREG);
    FakePage fake(L"Fake");
    const AnnouncedClass announced(kFakePage, static_cast<IClassFactory*>(&fake));
    EXPECT_EQ(frame_.Open(title, static_cast<IClassFactory*>(&fake), kBoth, {}), E_NOINTERFACE);
    fake.activateResult = E_OUTOFMEMORY;
    EXPECT_EQ(frame_.Open(title, &settings_, Classes{kFakePage}, {}), E_OUTOFMEMORY);
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(settings_.references, 0);
    EXPECT_EQ(OwnWindows(), windows);
}

TEST_F(PropertyFrameTest, CancelledWhileAPageShowsItsBox) {
    Open(kBoth);
    Type(OnPage(IDC_WIDTH), "64");
    settings_.applyResult = 0;
    MessageBoxes boxes;
    boxes.onBox = [this] {
        SendMessageW(frame_.Window(), WM_COMMAND, IDC_FRAME_APPLY, 0);
        SendMessageW(frame_.Window(), WM_COMMAND, IDCANCEL, 0);
        EXPECT_TRUE(frame_.IsOpen()) << "its page is at work";
    };
    Click(Button(IDC_FRAME_APPLY));
    EXPECT_EQ(boxes.seen().size(), 1u);
    EXPECT_FALSE(frame_.IsOpen());
    EXPECT_EQ(observer_.notices, "before after ");
}

TEST_F(PropertyFrameTest, RunsUntilItIsClosed) {
    Open(kBoth);
    PostMessageW(OnPage(IDC_WIDTH), WM_KEYDOWN, VK_ESCAPE, 0);
    frame_.Run();
    EXPECT_FALSE(frame_.IsOpen());

    Open(kBoth);
    PostQuitMessage(7);
    frame_.Run();
    EXPECT_FALSE(frame_.IsOpen());
    MSG message = {};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 7u) << "handed on to the outer loop";
}

TEST_F(PropertyFrameTest, ManyRoundsLeaveNothing) {
    const ComPtr<IBaseFilter> filter = CreateFilter();
    const ULONG references = RefCount(filter.Get());
    int windows = 0;
    int handles = 0;
    for (int i = 0; i < 12 && !HasFatalFailure(); ++i) {
        if (i == 4) {
            windows = OwnWindows();
            handles = HandlesInUse();
        }
        Open(kBoth, filter.Get());
        if (i % 2) ChooseTab(1);
        if (i % 3 == 0) Click(Button(IDOK));
        frame_.Close();
    }
    EXPECT_EQ(OwnWindows(), windows);
    EXPECT_EQ(HandlesInUse(), handles);
    EXPECT_EQ(RefCount(filter.Get()), references);
}

}  // namespace
