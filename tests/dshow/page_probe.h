// A property page that notes what it is told, a site for it, and a frame window with both.
#pragma once

#include <cwchar>
#include <functional>

#include "tests/dshow/fakes.h"
#include "tests/dshow/page_resources.h"
#include "tests/dshow/probes.h"

namespace tavo_test {

inline constexpr UINT kProbeMessage = WM_APP + 1;

// Of no resource.
inline constexpr int kMissing = 999;

class ProbePage final : public CBasePropertyPage {
  public:
    explicit ProbePage(CallLog& log, int dialog = IDD_PAGE, int title = IDS_PAGE_TITLE,
                       LPUNKNOWN outer = nullptr)
        : CBasePropertyPage(NAME("page"), outer, dialog, title), log(log) {}
    ~ProbePage() override {
        if (gone) *gone = true;
    }

    CallLog& log;
    IUnknown* object = nullptr;
    bool fillEdit = false;
    bool* gone = nullptr;
    std::function<void()> duringApply;
    std::function<void()> duringMessage;  // of kProbeMessage
    int messages = 0;
    HWND hwndDuringInit = reinterpret_cast<HWND>(1);
    HWND dlgDuringInit = nullptr;
    bool aliveAtDeactivate = false;
    LONG exStyleAtDeactivate = 0;

    HRESULT OnConnect(IUnknown* unknown) override {
        object = unknown;
        return log.Enter("OnConnect").value_or(CBasePropertyPage::OnConnect(unknown));
    }
    HRESULT OnDisconnect() override {
        return log.Enter("OnDisconnect").value_or(CBasePropertyPage::OnDisconnect());
    }
    HRESULT OnActivate() override {
        return log.Enter("OnActivate").value_or(CBasePropertyPage::OnActivate());
    }
    HRESULT OnDeactivate() override {
        aliveAtDeactivate = m_hwnd && IsWindow(m_hwnd);
        exStyleAtDeactivate = GetWindowLongW(m_Dlg, GWL_EXSTYLE);
        return log.Enter("OnDeactivate").value_or(CBasePropertyPage::OnDeactivate());
    }
    HRESULT OnApplyChanges() override {
        if (duringApply) duringApply();
        return log.Enter("OnApplyChanges").value_or(CBasePropertyPage::OnApplyChanges());
    }
    INT_PTR OnReceiveMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) override {
        ++messages;
        if (message == kProbeMessage && duringMessage) duringMessage();
        if (message == WM_INITDIALOG) {
            log.Add("init");
            hwndDuringInit = m_hwnd;
            dlgDuringInit = m_Dlg;
            if (fillEdit) SetDlgItemTextW(hwnd, IDC_EDIT, L"filled");
        }
        if (message == WM_DESTROY) log.Add(m_hwnd == hwnd ? "destroy+" : "destroy-");
        if (message == WM_COMMAND && LOWORD(wParam) == IDC_EDIT) {
            if (HIWORD(wParam) == EN_UPDATE) log.Add(m_hwnd ? "update+" : "update-");
            if (HIWORD(wParam) == EN_CHANGE) log.Add(m_hwnd ? "change+" : "change-");
        }
        return CBasePropertyPage::OnReceiveMessage(hwnd, message, wParam, lParam);
    }

    using CBasePropertyPage::DialogProc;
    using CBasePropertyPage::m_bDirty;
    using CBasePropertyPage::m_DialogId;
    using CBasePropertyPage::m_Dlg;
    using CBasePropertyPage::m_hwnd;
    using CBasePropertyPage::m_pPageSite;
    using CBasePropertyPage::m_TitleId;
};

class FakeSite final : public StackObject<IPropertyPageSite> {
  public:
    STDMETHODIMP OnStatusChange(DWORD) override { return S_OK; }
    STDMETHODIMP GetLocaleID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*) override { return E_NOTIMPL; }

  private:
    void* Find(REFIID iid) override {
        const bool known = iid == IID_IUnknown || iid == IID_IPropertyPageSite;
        return known ? static_cast<IPropertyPageSite*>(this) : nullptr;
    }
};

class Page : public DshowTest {
  protected:
    Page() {
        g_hInst = GetModuleHandleW(nullptr);
        frame_ = CreateWindowExW(WS_EX_NOACTIVATE, L"STATIC", L"frame", WS_POPUP, 0, 0, 500, 400,
                                 nullptr, nullptr, g_hInst, nullptr);
        EXPECT_NE(frame_, nullptr);
        // Not activated: without a window manager that costs seconds when the window goes.
        ShowWindow(frame_, SW_SHOWNA);
    }
    ~Page() override {
        if (page_ && page_->m_hwnd) {
            EXPECT_EQ(page_->Deactivate(), NOERROR);
        }
        page_.Reset();
        DestroyWindow(frame_);
        EXPECT_EQ(site_.references, 0);
        EXPECT_EQ(object_.references, 0);
    }
    // A new page that replaces the present one.
    void Make(int dialog = IDD_PAGE, int title = IDS_PAGE_TITLE) {
        page_.Reset();
        log_.Clear();
        page_ = ComPtr<ProbePage>(new ProbePage(log_, dialog, title));
    }
    HRESULT GiveObject() {
        IUnknown* object = &object_;
        return page_->SetObjects(1, &object);
    }
    HRESULT Activate() { return page_->Activate(frame_, &place_, FALSE); }
    static SIZE SizeOf(HWND window) {
        RECT rect = {};
        GetWindowRect(window, &rect);
        return {rect.right - rect.left, rect.bottom - rect.top};
    }

    const RECT place_ = {15, 25, 215, 145};
    CallLog log_;
    FakeSite site_;
    FakeOuter object_;
    HWND frame_ = nullptr;
    ComPtr<ProbePage> page_{new ProbePage(log_)};
};

}  // namespace tavo_test
