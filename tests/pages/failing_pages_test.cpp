// Pages without memory, windows or timers: each request of the module refused in turn while a page
// is asked for its title, opened, typed into, applied and closed. Needs a display.
#include <thread>

#include "pages/resource_ids.h"
#include "tests/filter/support/refusing_test.h"
#include "tests/pages/support/balloons.h"
#include "tests/pages/support/page_frame.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

// Windows take their time: by default only some of the many requests for texts are refused. Odd, as
// requests alternate between texts and items.
const int kStride = Rounds(1) > 1 ? 1 : 7;

class FailingPagesTest : public RefusingTest {
  protected:
    FailingPagesTest() { checksTaskMemory_ = false; }

    // The first number that the module formats makes locks that it keeps.
    void SetUp() override {
        RefusingTest::SetUp();
        {
            PageFrame frame(CLSID_TimeRegulatorPropertyPage);
            frame.Connect(&settings_);
            frame.Open();
        }
        imports_.StartCounting();
    }
    void TearDown() override {
        EXPECT_EQ(settings_.references, 0);
        RefusingTest::TearDown();
    }

    // Every page, with settings that show wherever they are read.
    template <typename Round>
    void OnEachPage(Round round) {
        for (const CLSID& clsid : kPages) {
            WithEveryRefusal(
                [&] {
                    settings_.width = 640;
                    settings_.height = 480;
                    settings_.method = VantrelMethodBilinear;
                    settings_.format = VantrelFormatYuy2;
                    settings_.type = VantrelTypeMpeg2;
                    settings_.frameRate = 25.0;
                    PageFrame frame(clsid);
                    ASSERT_EQ(frame.Connect(&settings_), S_OK);
                    round(frame);
                    Pump();
                },
                kStride);
        }
    }

    // The page that shows and applies what it was given.
    void ExpectWorks(PageFrame& frame) {
        ASSERT_EQ(frame.Open(), S_OK) << names_;
        if (frame.Control(IDC_WIDTH)) {
            EXPECT_EQ(frame.Text(IDC_WIDTH), "640") << names_;
            EXPECT_EQ(frame.Selected(IDC_METHOD), "Bi-Linear") << names_;
            Type(frame.Control(IDC_WIDTH), "320");
        } else {
            EXPECT_EQ(frame.Text(IDC_FRAME_RATE), "25.00") << names_;
            Type(frame.Control(IDC_FRAME_RATE), "30");
        }
        EXPECT_EQ(frame.Apply(), S_OK) << names_;
        EXPECT_TRUE(settings_.width == 320 || settings_.frameRate == 30.0) << names_;
        EXPECT_EQ(frame.Close(), S_OK) << names_;
    }

    void ExpectSettingsKept() {
        EXPECT_EQ(settings_.width, 640) << names_;
        EXPECT_EQ(settings_.height, 480) << names_;
        EXPECT_EQ(settings_.method, VantrelMethodBilinear) << names_;
        EXPECT_EQ(settings_.format, VantrelFormatYuy2) << names_;
        EXPECT_EQ(settings_.type, VantrelTypeMpeg2) << names_;
        EXPECT_EQ(settings_.frameRate, 25.0) << names_;
    }

    FakeSettings settings_;
};

TEST_F(FailingPagesTest, TitleAndSize) {
    OnEachPage([this](PageFrame& frame) {
        PROPPAGEINFO info = {};
        info.cb = sizeof info;
        WorksOrFails([&] { return frame.page->GetPageInfo(&info); });
        EXPECT_EQ(info.pszTitle != nullptr, SUCCEEDED(result_)) << names_;
        EXPECT_TRUE(FAILED(result_) || info.size.cx > 0) << names_;
        CoTaskMemFree(info.pszTitle);
        ExpectWorks(frame);
    });
}

// A page without a dialog is none; one without its texts, measures or timer serves.
TEST_F(FailingPagesTest, Opening) {
    OnEachPage([this](PageFrame& frame) {
        const int windows = OwnWindows();
        WorksOrFails([&] { return frame.Open(); });
        if (SUCCEEDED(result_)) {
            EXPECT_EQ(frame.Apply(), S_OK) << names_;
            ExpectSettingsKept();
            EXPECT_EQ(frame.Close(), S_OK) << names_;
            return;
        }
        EXPECT_EQ(result_, E_OUTOFMEMORY) << names_;
        EXPECT_EQ(OwnWindows(), windows) << names_;
        EXPECT_EQ(frame.Close(), E_UNEXPECTED) << names_;
        frame.page->SetPageSite(nullptr);
        ExpectWorks(frame);
    });
}

// An item that is missing would shift the ones after it to other settings.
TEST_F(FailingPagesTest, ListsAreWholeOrEmpty) {
    settings_.method = VantrelMethodBilinear;
    settings_.format = VantrelFormatYuy2;
    settings_.type = VantrelTypeMpeg2;
    const struct {
        int id;
        int items;
        const char* selected;
    } lists[] = {{IDC_METHOD, 9, "Bi-Linear"}, {IDC_FORMAT, 11, "YUY2"}, {IDC_TYPE, 3, "MPEG2"}};
    int empty = 0;
    WithEveryRefusal(
        [&] {
            PageFrame frame(CLSID_ResamplePropertyPage);
            ASSERT_EQ(frame.Connect(&settings_), S_OK);
            Failing([&] { result_ = frame.Open(); });
            if (FAILED(result_)) return;
            for (const auto& list : lists) {
                const LRESULT items = SendMessageW(frame.Control(list.id), CB_GETCOUNT, 0, 0);
                EXPECT_EQ(items, items ? list.items : 0) << names_;
                EXPECT_EQ(frame.Selected(list.id), items ? list.selected : "(none)") << names_;
                empty += items == 0;
            }
        },
        kStride);
    EXPECT_GT(empty, 0);
}

TEST_F(FailingPagesTest, TheBalloon) {
    WithEveryRefusal([this] {
        PageFrame frame(CLSID_ResamplePropertyPage);
        ASSERT_EQ(frame.Connect(&settings_), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
        Failing([&] { Type(frame.Control(IDC_WIDTH), "x"); });
        EXPECT_EQ(Balloon() != nullptr, !refused_) << names_;
        Type(frame.Control(IDC_WIDTH), "y");
        EXPECT_NE(Balloon(), nullptr) << names_;
    });
}

// The queue of a thread can be full. A dialog that cannot be asked to close keeps the module until
// its frame takes it along.
TEST_F(FailingPagesTest, ReleasedByAnotherThreadThatCannotPost) {
    for (const CLSID& clsid : kPages) {
        {
            PageFrame frame(clsid);
            ASSERT_EQ(frame.Connect(&settings_), S_OK);
            ASSERT_EQ(frame.Open(), S_OK);
            const HWND dialog = frame.Dialog();
            std::thread([&] { EXPECT_EQ(Failing([&] { frame.page.Reset(); }), 1); }).join();
            EXPECT_EQ(names_, "PostMessageW ");
            EXPECT_EQ(settings_.references, 0);
            Pump();
            EXPECT_TRUE(IsWindow(dialog));
            EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
            SendMessageW(dialog, WM_TIMER, 3, 0);
            SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_WIDTH, EN_CHANGE), 0);
        }
        EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    }
}

TEST_F(FailingPagesTest, TheFiguresAndApplying) {
    settings_.moduleTime = 12.5;
    settings_.systemFps = 29.97;
    settings_.generateFps = 4'294'967'295'000.0;  // no larger one is possible
    OnEachPage([this](PageFrame& frame) {
        ASSERT_EQ(frame.Open(), S_OK);
        Failing([&] { frame.Send(WM_TIMER, 3); });
        EXPECT_EQ(frame.Send(WM_TIMER, 3), TRUE);
        if (frame.Control(IDC_WIDTH)) {
            EXPECT_EQ(frame.Text(IDC_MODULE_TIME), "12.500") << names_;
            EXPECT_EQ(frame.Text(IDC_SYSTEM_FPS), "29.970") << names_;
        } else {
            EXPECT_EQ(frame.Text(IDC_GENERATE_FPS), "4294967295000.000") << names_;
        }
        // The box that tells of it may not come up either.
        settings_.applyResult = 0;
        frame.Apply();
        Type(frame.Control(frame.Control(IDC_WIDTH) ? IDC_WIDTH : IDC_FRAME_RATE), "12");
        Failing([&] { result_ = frame.Apply(); });
        EXPECT_EQ(result_, S_OK);
        EXPECT_FALSE(frame.IsDirty());
        settings_.applyResult = 1;
    });
}

}  // namespace
