// Applying the resampling page, and its figures. Needs a display.
#include "pages/resource_ids.h"
#include "tests/filter/support/module_imports.h"
#include "tests/pages/support/message_boxes.h"
#include "tests/pages/support/resample_page.h"

using namespace tavo_test;

namespace {

TEST_F(ResamplePage, ApplyWhileCleanCallsNothing) {
    OpenClean();
    EXPECT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.calls, "");
}

TEST_F(ResamplePage, ARefusalShowsOneBoxAndLeavesThePageClean) {
    OpenClean();
    MessageBoxes boxes;
    settings_.applyResult = 0;
    for (size_t round = 1; round <= 2; ++round) {
        Type(frame_->Control(IDC_WIDTH), "64");
        EXPECT_EQ(frame_->Apply(), S_OK);
        ASSERT_EQ(boxes.seen().size(), round);
        EXPECT_FALSE(frame_->IsDirty());
    }
    EXPECT_EQ(settings_.width, 64);
    const SeenBox& box = boxes.seen()[0];
    EXPECT_EQ(box.text, L"Graph Refresh Fail.");
    EXPECT_EQ(box.caption, L"Error");
    EXPECT_EQ(box.owner, nullptr);
    EXPECT_EQ(box.buttons.size(), 1u);
    EXPECT_EQ(box.icon, nullptr);
}

struct BoxCall {
    HWND owner;
    std::wstring text;
    std::wstring caption;
    UINT style;
    bool operator==(const BoxCall&) const = default;
};
std::vector<BoxCall> boxCalls;

int WINAPI NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT style) {
    boxCalls.push_back({owner, text, caption, style});
    return IDOK;
}

TEST_F(ResamplePage, TheBoxIsAPlainOne) {
    OpenClean();
    boxCalls.clear();
    const ImportPatch patch(TheModule().handle(), "user32.dll", "MessageBoxW",
                            reinterpret_cast<ULONG_PTR>(NoteBox));
    settings_.applyResult = 0;
    Type(frame_->Control(IDC_WIDTH), "64");
    EXPECT_EQ(frame_->Apply(), S_OK);
    ASSERT_EQ(boxCalls.size(), 1u);
    EXPECT_EQ(boxCalls[0], (BoxCall{nullptr, L"Graph Refresh Fail.", L"Error", MB_OK}));
}

TEST_F(ResamplePage, NoBoxUnlessTheResultIsZero) {
    MessageBoxes boxes;
    for (const int result : {1, -1, 2, static_cast<int>(E_INVALIDARG)}) {
        settings_.applyResult = result;
        Open();
        EXPECT_EQ(frame_->Apply(), S_OK);
        EXPECT_FALSE(frame_->IsDirty());
        EXPECT_EQ(frame_->Close(), S_OK);
    }
    Pump();
    EXPECT_TRUE(boxes.seen().empty());
}

TEST_F(ResamplePage, DisconnectedWhileTheBoxStands) {
    OpenClean();
    MessageBoxes boxes;
    boxes.onBox = [this] {
        EXPECT_EQ(frame_->Close(), S_OK);
        EXPECT_EQ(frame_->Disconnect(), S_OK);
    };
    settings_.applyResult = 0;
    Type(frame_->Control(IDC_WIDTH), "64");
    EXPECT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(boxes.seen().size(), 1u);
    EXPECT_EQ(settings_.references, 0);
}

TEST_F(ResamplePage, DisconnectedByTheFilterWhileItApplies) {
    OpenClean();
    settings_.onApply = [this] {
        EXPECT_EQ(frame_->Disconnect(), S_OK);
        EXPECT_GT(settings_.references, 0);
    };
    Type(frame_->Control(IDC_WIDTH), "64");
    EXPECT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.references, 0);
}

TEST_F(ResamplePage, FiguresFollowTheTimer) {
    Open();
    struct Case {
        double value;
        const char* text;
    };
    for (const Case& c : {Case{12.5, "12.500"},
                          {0.0, "0"},
                          {0.0004, "0.000"},
                          {24.0, "24.000"},
                          {-0.0, "0"},
                          {1234567.8916, "1234567.892"},
                          {29.9999, "30.000"}}) {
        settings_.moduleTime = c.value;
        settings_.systemFps = 0.0;
        EXPECT_EQ(frame_->Send(WM_TIMER, 3), TRUE);
        EXPECT_EQ(frame_->Text(IDC_MODULE_TIME), c.text);
        EXPECT_EQ(frame_->Text(IDC_SYSTEM_FPS), "0");
        settings_.moduleTime = 0.0;
        settings_.systemFps = c.value;
        EXPECT_EQ(frame_->Send(WM_TIMER, 4711), TRUE);  // any timer does
        EXPECT_EQ(frame_->Text(IDC_MODULE_TIME), "0");
        EXPECT_EQ(frame_->Text(IDC_SYSTEM_FPS), c.text);
    }
    settings_.systemFps = 1e308;
    EXPECT_EQ(frame_->Send(WM_TIMER, 3), TRUE);
    EXPECT_EQ(frame_->Text(IDC_SYSTEM_FPS).size(), 313u);
}

TEST_F(ResamplePage, KeepsItsOwnCopyAfterApplying) {
    settings_.width = 100;
    OpenClean();
    settings_.width = 200;  // somebody else
    Type(frame_->Control(IDC_HEIGHT), "50");
    ASSERT_EQ(frame_->Apply(), S_OK);
    EXPECT_EQ(settings_.width, 100);
    // Closed and opened again it shows its copy; a new connection reads anew.
    settings_.width = 300;
    ASSERT_EQ(frame_->Close(), S_OK);
    ASSERT_EQ(frame_->Open(), S_OK);
    EXPECT_EQ(frame_->Text(IDC_WIDTH), "100");
    ASSERT_EQ(frame_->Close(), S_OK);
    ASSERT_EQ(frame_->Connect(&settings_), S_OK);
    ASSERT_EQ(frame_->Open(), S_OK);
    EXPECT_EQ(frame_->Text(IDC_WIDTH), "300");
}

}  // namespace
