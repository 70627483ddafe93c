// The last release of a property page whose dialog is still open, and the dialog afterwards. Needs
// a display.
#include <atomic>
#include <thread>

#include "tests/dshow/page_probe.h"
#include "tests/support/nothrow_new.h"
#include "tests/support/patience.h"

using namespace tavo_test;

namespace {

void Pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

class PageRelease : public Page {
  protected:
    void Open() {
        GiveObject();
        ASSERT_EQ(Activate(), NOERROR);
        dialog_ = page_->m_hwnd;
    }
    void ReleaseOnAnotherThread() {
        std::thread([this] { page_.Reset(); }).join();
    }

    HWND dialog_ = nullptr;
};

// The system calls the dialog procedure for as long as there is a dialog.
TEST_F(PageRelease, AnOpenDialogStaysAndKeepsTheModule) {
    Open();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 2);
    page_.Reset();
    Pump();
    ASSERT_TRUE(IsWindow(dialog_));
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
    log_.Clear();
    SendMessageW(dialog_, WM_TIMER, 1, 0);
    SetDlgItemTextW(dialog_, IDC_EDIT, L"nobody listens");
    DestroyWindow(dialog_);
    EXPECT_EQ(log_.Text(), "");
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

TEST_F(PageRelease, OnAnotherThreadTheDialogIsAskedToClose) {
    Open();
    log_.Clear();
    ReleaseOnAnotherThread();
    EXPECT_EQ(log_.Text(), "OnDisconnect");
    ASSERT_TRUE(IsWindow(dialog_));
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
    SendMessageW(dialog_, WM_TIMER, 1, 0);
    SetDlgItemTextW(dialog_, IDC_EDIT, L"nobody listens");
    Pump();
    EXPECT_FALSE(IsWindow(dialog_));
    EXPECT_EQ(log_.Text(), "OnDisconnect");
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

// The release must not wait for the message either, which may wait for the releasing thread.
TEST_F(PageRelease, APageLivesUntilTheEndOfItsMessage) {
    for (const bool onAnotherThread : {true, false}) {
        Make();
        Open();
        bool gone = false;
        bool goneDuringMessage = false;
        page_->gone = &gone;
        page_->duringMessage = [&] {
            if (onAnotherThread) {
                ReleaseOnAnotherThread();
            } else {
                page_.Reset();
            }
            goneDuringMessage = gone;
        };
        SendMessageW(dialog_, kProbeMessage, 0, 0);
        EXPECT_FALSE(goneDuringMessage);
        EXPECT_TRUE(gone);
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
        DestroyWindow(dialog_);
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
    }
}

TEST_F(PageRelease, ADialogThatGoesDuringItsMessage) {
    Open();
    bool gone = false;
    page_->gone = &gone;
    page_->duringMessage = [&] {
        DestroyWindow(frame_);
        page_.Reset();
        EXPECT_FALSE(gone);
    };
    SendMessageW(dialog_, kProbeMessage, 0, 0);
    EXPECT_TRUE(gone);
    EXPECT_FALSE(IsWindow(dialog_));
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

// A window that goes with its thread gets no message.
TEST_F(PageRelease, AThreadThatEndsTakesItsDialogAlong) {
    GiveObject();
    const auto openAndEnd = [&](bool release) {
        const HWND frame = CreateWindowExW(WS_EX_NOACTIVATE, L"STATIC", L"frame", WS_POPUP, 0, 0,
                                           500, 400, nullptr, nullptr, g_hInst, nullptr);
        EXPECT_EQ(page_->Activate(frame, &place_, FALSE), NOERROR);
        dialog_ = page_->m_hwnd;
        if (release) page_.Reset();
    };
    std::thread(openAndEnd, false).join();
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(dialog_); }));
    page_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);

    Make();
    GiveObject();
    std::thread(openAndEnd, true).join();
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(dialog_); }));
    // The next page finds out.
    Make();
    page_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

TEST_F(PageRelease, ADialogWithoutMemory) {
    GiveObject();
    log_.Clear();
    {
        const FailNothrowNew fail;
        EXPECT_EQ(Activate(), E_OUTOFMEMORY);
    }
    EXPECT_EQ(log_.Text(), "");
    EXPECT_EQ(page_->m_hwnd, nullptr);
    EXPECT_EQ(GetWindow(frame_, GW_CHILD), nullptr);
    EXPECT_EQ(Activate(), NOERROR);
}

// Messages and the last release from both sides at once.
TEST_F(PageRelease, MessagesMeetTheLastRelease) {
    for (int round = 0; round < 50; ++round) {
        Make();
        Open();
        ASSERT_FALSE(HasFatalFailure());
        std::atomic<bool> released = false;
        std::thread other([&] {
            page_.Reset();
            released = true;
        });
        while (!released) SendMessageW(dialog_, WM_TIMER, 1, 0);
        other.join();
        // The message's end may have been the last release: then nobody has asked it to close.
        Pump();
        DestroyWindow(dialog_);
        ASSERT_EQ(CBaseObject::ObjectsActive(), objects_) << round;
    }
}

}  // namespace
