// The property page's dialog in real windows. Needs a display.
#include "tests/dshow/page_probe.h"

using namespace tavo_test;

namespace {

TEST_F(Page, ActivateOutOfTurn) {
    EXPECT_EQ(page_->Activate(frame_, nullptr, FALSE), E_POINTER);
    EXPECT_EQ(Activate(), E_UNEXPECTED);
    GiveObject();
    EXPECT_EQ(page_->Activate(frame_, nullptr, FALSE), E_POINTER);
    EXPECT_EQ(Activate(), NOERROR);
    const HWND dialog = page_->m_hwnd;
    EXPECT_EQ(Activate(), E_UNEXPECTED);
    EXPECT_EQ(page_->m_hwnd, dialog);
    EXPECT_EQ(page_->SetObjects(0, nullptr), NOERROR);
    EXPECT_EQ(page_->Deactivate(), NOERROR);
    EXPECT_EQ(Activate(), E_UNEXPECTED);
}

TEST_F(Page, ActivateShowsTheDialogInItsPlace) {
    GiveObject();
    log_.Clear();
    ASSERT_EQ(Activate(), NOERROR);
    EXPECT_EQ(log_.Text(), "init OnActivate");
    EXPECT_EQ(page_->hwndDuringInit, nullptr);
    EXPECT_EQ(page_->dlgDuringInit, page_->m_hwnd);
    EXPECT_EQ(page_->m_Dlg, page_->m_hwnd);
    ASSERT_TRUE(IsWindow(page_->m_hwnd));
    EXPECT_EQ(GetParent(page_->m_hwnd), frame_);
    EXPECT_TRUE(IsWindowVisible(page_->m_hwnd));
    EXPECT_NE(GetDlgItem(page_->m_hwnd, IDC_EDIT), nullptr);
    RECT rect = {};
    GetWindowRect(page_->m_hwnd, &rect);
    MapWindowPoints(nullptr, frame_, reinterpret_cast<POINT*>(&rect), 2);
    EXPECT_TRUE(EqualRect(&rect, &place_));
}

TEST_F(Page, ActivateDropsTheResultOfOnActivate) {
    GiveObject();
    log_.Inject("OnActivate", E_FAIL);
    EXPECT_EQ(Activate(), NOERROR);
    EXPECT_NE(page_->m_hwnd, nullptr);
}

TEST_F(Page, ActivateWithoutDialogResource) {
    Make(kMissing);
    GiveObject();
    log_.Clear();
    EXPECT_EQ(Activate(), E_OUTOFMEMORY);
    EXPECT_EQ(log_.Text(), "");
    EXPECT_EQ(page_->m_hwnd, nullptr);
    EXPECT_EQ(page_->Deactivate(), E_UNEXPECTED);
}

TEST_F(Page, AParentThatGoesTakesTheDialogAlong) {
    GiveObject();
    ASSERT_EQ(Activate(), NOERROR);
    const HWND dialog = page_->m_hwnd;
    DestroyWindow(frame_);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(page_->m_hwnd, nullptr);
    EXPECT_EQ(page_->Move(&place_), NOERROR);
    EXPECT_EQ(page_->Show(SW_SHOW), NOERROR);
    EXPECT_EQ(Activate(), E_UNEXPECTED);
    EXPECT_EQ(page_->Deactivate(), NOERROR);
    EXPECT_EQ(page_->Deactivate(), E_UNEXPECTED);
}

TEST_F(Page, Move) {
    EXPECT_EQ(page_->Move(nullptr), E_POINTER);
    EXPECT_EQ(page_->Move(&place_), E_UNEXPECTED);
    GiveObject();
    Activate();
    const RECT elsewhere = {5, 6, 105, 56};
    EXPECT_EQ(page_->Move(nullptr), E_POINTER);
    EXPECT_EQ(page_->Move(&elsewhere), NOERROR);
    RECT rect = {};
    GetWindowRect(page_->m_hwnd, &rect);
    MapWindowPoints(nullptr, frame_, reinterpret_cast<POINT*>(&rect), 2);
    EXPECT_TRUE(EqualRect(&rect, &elsewhere));
}

TEST_F(Page, Show) {
    EXPECT_EQ(page_->Show(SW_SHOW), E_UNEXPECTED);
    EXPECT_EQ(page_->Show(SW_MINIMIZE), E_UNEXPECTED);
    GiveObject();
    Activate();
    EXPECT_EQ(page_->Show(SW_HIDE), NOERROR);
    EXPECT_FALSE(IsWindowVisible(page_->m_hwnd));
    EXPECT_EQ(page_->Show(SW_SHOW), NOERROR);
    EXPECT_TRUE(IsWindowVisible(page_->m_hwnd));
    EXPECT_EQ(page_->Show(SW_HIDE), NOERROR);
    EXPECT_EQ(page_->Show(SW_SHOWNORMAL), NOERROR);
    EXPECT_TRUE(IsWindowVisible(page_->m_hwnd));
    for (const UINT command : {SW_MINIMIZE, SW_SHOWNA, SW_RESTORE, SW_MAXIMIZE})
        EXPECT_EQ(page_->Show(command), E_INVALIDARG);
    EXPECT_TRUE(IsWindowVisible(page_->m_hwnd));
}

TEST_F(Page, Deactivate) {
    EXPECT_EQ(page_->Deactivate(), E_UNEXPECTED);
    GiveObject();
    Activate();
    const HWND dialog = page_->m_hwnd;
    SetWindowLongW(dialog, GWL_EXSTYLE, GetWindowLongW(dialog, GWL_EXSTYLE) | WS_EX_CONTROLPARENT);
    log_.Clear();
    log_.Inject("OnDeactivate", E_FAIL);
    EXPECT_EQ(page_->Deactivate(), NOERROR);
    EXPECT_EQ(log_.Text(), "OnDeactivate destroy+");
    EXPECT_TRUE(page_->aliveAtDeactivate);
    EXPECT_FALSE(page_->exStyleAtDeactivate & WS_EX_CONTROLPARENT);
    EXPECT_EQ(page_->m_hwnd, nullptr);
    EXPECT_EQ(page_->m_Dlg, dialog);  // never cleared
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(page_->Deactivate(), E_UNEXPECTED);
    EXPECT_EQ(Activate(), NOERROR);
    EXPECT_NE(page_->m_hwnd, nullptr);
}

TEST_F(Page, FramesCannotTakeControlParentAway) {
    GiveObject();
    Activate();
    SetWindowLongW(page_->m_hwnd, GWL_EXSTYLE, 0);
    EXPECT_TRUE(GetWindowLongW(page_->m_hwnd, GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
    STYLESTRUCT style = {0, 0};
    EXPECT_EQ(page_->OnReceiveMessage(page_->m_hwnd, WM_STYLECHANGING, WPARAM(GWL_EXSTYLE),
                                      reinterpret_cast<LPARAM>(&style)),
              0);
    EXPECT_EQ(style.styleNew, DWORD(WS_EX_CONTROLPARENT));
    style.styleNew = 0;
    page_->OnReceiveMessage(page_->m_hwnd, WM_STYLECHANGING, WPARAM(GWL_STYLE),
                            reinterpret_cast<LPARAM>(&style));
    EXPECT_EQ(style.styleNew, 0u);
}

TEST_F(Page, OtherMessagesGoToDefWindowProc) {
    EXPECT_EQ(page_->CBasePropertyPage::OnReceiveMessage(frame_, WM_GETTEXTLENGTH, 0, 0), 0);
    GiveObject();
    Activate();
    DefWindowProcW(page_->m_hwnd, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"abcd"));
    EXPECT_EQ(page_->OnReceiveMessage(page_->m_hwnd, WM_GETTEXTLENGTH, 0, 0), 4);
}

TEST_F(Page, DialogProcedure) {
    // A window that no page has taken: 1 to everything but the end, when it frees its font.
    SetWindowLongPtrW(frame_, DWLP_USER, 0);
    const HWND trial = CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(IDD_PAGE), GetDesktopWindow(),
                                          ProbePage::DialogProc, 0);
    ASSERT_NE(trial, nullptr);
    EXPECT_EQ(ProbePage::DialogProc(trial, WM_GETTEXTLENGTH, 0, 0), 1);
    EXPECT_EQ(ProbePage::DialogProc(trial, WM_COMMAND, 0, 0), 1);
    EXPECT_EQ(ProbePage::DialogProc(trial, WM_DESTROY, 0, 0), 1);
    EXPECT_EQ(ProbePage::DialogProc(trial, WM_NCDESTROY, 0, 0), 0);
    DestroyWindow(trial);
    EXPECT_EQ(page_->messages, 0);
    GiveObject();
    Activate();
    const int before = page_->messages;
    DefWindowProcW(page_->m_hwnd, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"abcd"));
    EXPECT_EQ(ProbePage::DialogProc(page_->m_hwnd, WM_GETTEXTLENGTH, 0, 0), 4);
    EXPECT_EQ(page_->messages, before + 1);
}

TEST_F(Page, FillingAnEditDuringInit) {
    page_->fillEdit = true;
    GiveObject();
    log_.Clear();
    Activate();
    EXPECT_EQ(log_.Text(), "init update- change- OnActivate");
    log_.Clear();
    SetDlgItemTextW(page_->m_hwnd, IDC_EDIT, L"later");
    EXPECT_EQ(log_.Text(), "update+ change+");
}

}  // namespace
