// The property page's calls in and out of turn: information, site, objects, applying, the last
// release. Needs a display.
#include <cstring>
#include <cwchar>

#include "tests/dshow/page_probe.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

INT_PTR CALLBACK TakeEverything(HWND, UINT, WPARAM, LPARAM) { return TRUE; }

BOOL CALLBACK CountOwnDialogs(HWND window, LPARAM count) {
    DWORD process = 0;
    WCHAR name[32] = {};
    GetWindowThreadProcessId(window, &process);
    GetClassNameW(window, name, 32);
    const bool own = process == GetCurrentProcessId() && std::wcscmp(name, L"#32770") == 0;
    *reinterpret_cast<int*>(count) += own;
    return TRUE;
}

TEST_F(Page, StartsClean) {
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 1);
    EXPECT_EQ(page_->m_pPageSite, nullptr);
    EXPECT_EQ(page_->m_hwnd, nullptr);
    EXPECT_EQ(page_->m_Dlg, nullptr);
    EXPECT_EQ(page_->m_bDirty, FALSE);
    EXPECT_EQ(page_->m_DialogId, IDD_PAGE);
    EXPECT_EQ(page_->m_TitleId, IDS_PAGE_TITLE);
    EXPECT_EQ(page_->IsPageDirty(), S_FALSE);
    page_->m_bDirty = TRUE;
    EXPECT_EQ(page_->IsPageDirty(), S_OK);
    EXPECT_EQ(page_->Help(L""), E_NOTIMPL);
    MSG message = {};
    EXPECT_EQ(page_->TranslateAccelerator(&message), E_NOTIMPL);
}

TEST_F(Page, Interfaces) {
    const ComPtr<IUnknown> unknown = page_.As<IUnknown>();
    const ComPtr<IPropertyPage> page = page_.As<IPropertyPage>();
    ASSERT_TRUE(page);
    EXPECT_EQ(page.As<IUnknown>().Get(), unknown.Get());
    EXPECT_FALSE(page_.As<IPersist>());
    EXPECT_EQ(page_->QueryInterface(IID_IPropertyPage, nullptr), E_POINTER);
}

TEST_F(Page, Site) {
    EXPECT_EQ(page_->SetPageSite(nullptr), E_UNEXPECTED);
    EXPECT_EQ(page_->SetPageSite(&site_), NOERROR);
    EXPECT_EQ(site_.references, 1);
    EXPECT_EQ(page_->SetPageSite(&site_), E_UNEXPECTED);
    EXPECT_EQ(site_.references, 1);
    EXPECT_EQ(page_->SetPageSite(nullptr), NOERROR);
    EXPECT_EQ(site_.references, 0);
    EXPECT_EQ(page_->m_pPageSite, nullptr);
    EXPECT_EQ(page_->SetPageSite(nullptr), E_UNEXPECTED);
}

TEST_F(Page, GetPageInfoNeedsNoObject) {
    EXPECT_EQ(page_->GetPageInfo(nullptr), E_POINTER);
    PROPPAGEINFO info;
    std::memset(&info, 0xEE, sizeof info);
    ASSERT_EQ(page_->GetPageInfo(&info), NOERROR);
    EXPECT_EQ(info.cb, sizeof(PROPPAGEINFO));
    EXPECT_STREQ(info.pszTitle, L"Test page");
    EXPECT_EQ(info.pszDocString, nullptr);
    EXPECT_EQ(info.pszHelpFile, nullptr);
    EXPECT_EQ(info.dwHelpContext, 0u);
    CoTaskMemFree(info.pszTitle);
    EXPECT_EQ(page_->messages, 0);  // no handler ran
    EXPECT_EQ(page_->m_Dlg, nullptr);
    // The size of the dialog that comes later.
    ASSERT_EQ(GiveObject(), NOERROR);
    const HWND trial = CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(IDD_PAGE), GetDesktopWindow(),
                                          TakeEverything, 0);
    ASSERT_NE(trial, nullptr);
    EXPECT_EQ(info.size.cx, SizeOf(trial).cx);
    EXPECT_EQ(info.size.cy, SizeOf(trial).cy);
    DestroyWindow(trial);
}

TEST_F(Page, GetPageInfoLeavesNoWindow) {
    PROPPAGEINFO info = {};
    ASSERT_EQ(page_->GetPageInfo(&info), NOERROR);
    CoTaskMemFree(info.pszTitle);
    int dialogs = 0;
    EnumChildWindows(GetDesktopWindow(), CountOwnDialogs, reinterpret_cast<LPARAM>(&dialogs));
    EXPECT_EQ(dialogs, 0);
}

TEST_F(Page, GetPageInfoWithoutResources) {
    Make(kMissing, kMissing);
    PROPPAGEINFO info = {};
    ASSERT_EQ(page_->GetPageInfo(&info), NOERROR);
    EXPECT_STREQ(info.pszTitle, L"");
    EXPECT_EQ(info.size.cx, 340);
    EXPECT_EQ(info.size.cy, 150);
    CoTaskMemFree(info.pszTitle);
}

TEST_F(Page, GetPageInfoWithoutMemory) {
    PROPPAGEINFO info;
    std::memset(&info, 0xEE, sizeof info);
    const PROPPAGEINFO before = info;
    FailTaskMemory fail;
    EXPECT_EQ(page_->GetPageInfo(&info), E_OUTOFMEMORY);
    EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
}

TEST_F(Page, Objects) {
    IUnknown* objects[2] = {&object_, &object_};
    EXPECT_EQ(page_->SetObjects(1, nullptr), E_POINTER);
    IUnknown* none = nullptr;
    EXPECT_EQ(page_->SetObjects(1, &none), E_POINTER);
    EXPECT_EQ(page_->SetObjects(2, objects), E_UNEXPECTED);
    EXPECT_EQ(log_.Text(), "");
    EXPECT_EQ(page_->SetObjects(1, objects), NOERROR);
    EXPECT_EQ(page_->object, &object_);
    EXPECT_EQ(page_->SetObjects(1, objects), NOERROR);
    EXPECT_EQ(log_.Text(), "OnConnect OnConnect");
    EXPECT_EQ(page_->SetObjects(0, nullptr), NOERROR);
    EXPECT_EQ(log_.Text(), "OnConnect OnConnect OnDisconnect");
    EXPECT_EQ(object_.references, 0);  // the base keeps no pointer
    log_.Inject("OnDisconnect", E_ABORT, 1);
    EXPECT_EQ(page_->SetObjects(0, objects), E_ABORT);
    log_.Inject("OnConnect", E_FAIL, 1);
    EXPECT_EQ(page_->SetObjects(1, objects), E_FAIL);
    EXPECT_EQ(Activate(), NOERROR);  // a failed OnConnect leaves the object set
}

// As a frame does that is closed while a message box of the page is open.
TEST_F(Page, APageThatIsLetGoWhileItAppliesLastsUntilItHasApplied) {
    bool gone = false;
    bool goneDuringApply = false;
    GiveObject();
    ASSERT_EQ(page_->SetPageSite(&site_), NOERROR);
    page_->m_bDirty = TRUE;
    page_->gone = &gone;
    ProbePage* const page = page_.Get();
    page->duringApply = [&] {
        page_.Reset();
        goneDuringApply = gone;
    };
    EXPECT_EQ(page->Apply(), NOERROR);
    EXPECT_FALSE(goneDuringApply);
    EXPECT_TRUE(gone);
}

TEST_F(Page, Apply) {
    EXPECT_EQ(page_->Apply(), E_UNEXPECTED);
    GiveObject();
    page_->m_bDirty = TRUE;
    EXPECT_EQ(page_->Apply(), E_UNEXPECTED);  // no site
    page_->SetPageSite(&site_);
    page_->m_bDirty = FALSE;
    log_.Clear();
    EXPECT_EQ(page_->Apply(), NOERROR);
    EXPECT_EQ(log_.Text(), "");
    page_->m_bDirty = TRUE;
    log_.Inject("OnApplyChanges", E_ABORT, 1);
    EXPECT_EQ(page_->Apply(), E_ABORT);
    EXPECT_TRUE(page_->m_bDirty);
    EXPECT_EQ(page_->Apply(), NOERROR);
    EXPECT_FALSE(page_->m_bDirty);
    EXPECT_EQ(page_->IsPageDirty(), S_FALSE);
    EXPECT_EQ(log_.Text(), "OnApplyChanges OnApplyChanges");
    page_->m_bDirty = TRUE;
    page_->SetObjects(0, nullptr);
    EXPECT_EQ(page_->Apply(), E_UNEXPECTED);
}

TEST_F(Page, LastReleaseTakesBackWhatIsLeft) {
    page_->SetPageSite(&site_);
    GiveObject();
    log_.Clear();
    page_.Reset();
    EXPECT_EQ(log_.Text(), "OnDisconnect");
    EXPECT_EQ(site_.references, 0);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

TEST_F(Page, LastReleaseDisconnectsOnceMore) {
    GiveObject();
    page_->SetObjects(0, nullptr);
    log_.Clear();
    page_.Reset();
    EXPECT_EQ(log_.Text(), "OnDisconnect");
    Make();
    page_.Reset();  // nothing was ever connected
    EXPECT_EQ(log_.Text(), "OnDisconnect");
}

TEST_F(Page, Aggregated) {
    FakeOuter outer;
    auto* page = new ProbePage(log_, IDD_PAGE, IDS_PAGE_TITLE, &outer);
    page->NonDelegatingAddRef();
    IPropertyPage* inner = nullptr;
    ASSERT_EQ(
        page->NonDelegatingQueryInterface(IID_IPropertyPage, reinterpret_cast<void**>(&inner)),
        S_OK);
    EXPECT_EQ(outer.references, 1);
    inner->Release();
    EXPECT_EQ(page->NonDelegatingRelease(), 0u);
    EXPECT_EQ(outer.references, 0);
}

}  // namespace
