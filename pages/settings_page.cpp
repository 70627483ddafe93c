// The connection, the dialog's messages and applying, for both pages.

#include "pages/settings_page.h"

#include <commctrl.h>

#include "pages/number_text.h"
#include "pages/text_fit.h"

namespace {

constexpr UINT kRefreshMs = 1000;

}  // namespace

CSettingsPage::CSettingsPage(LPUNKNOWN outer, int dialogId, int titleId, UINT_PTR timer)
    : CBasePropertyPage(NAME("Settings page"), outer, dialogId, titleId), timer_(timer) {
    InitCommonControls();
}

// A frame may drop a page whose dialog is still open: nothing must reach the page any more.
// DestroyWindow fails on another thread than the dialog's, where the dialog closes itself. The
// handle may have been reused by then, so only a window that names this page is touched.
CSettingsPage::~CSettingsPage() {
    auto* const page = static_cast<CBasePropertyPage*>(this);
    if (!dialog_ || GetWindowLongPtr(dialog_, DWLP_USER) != reinterpret_cast<LONG_PTR>(page))
        return;
    SetWindowLongPtr(dialog_, DWLP_USER, 0);
    DestroyWindow(dialog_);
}

STDMETHODIMP CSettingsPage::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IInputCheck) return GetInterface(static_cast<IInputCheck*>(this), object);
    return CBasePropertyPage::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP CSettingsPage::CheckInput() {
    return dialog_ && FindFault(dialog_).control ? S_FALSE : S_OK;
}

STDMETHODIMP CSettingsPage::PointToInput() {
    if (!dialog_) return S_OK;
    const Fault fault = FindFault(dialog_);
    if (!fault.control) return S_OK;
    const HWND edit = GetDlgItem(dialog_, fault.control);
    SetFocus(edit);
    SendMessageW(edit, EM_SETSEL, 0, -1);
    notice_.Show(edit, fault.wanted);
    return S_OK;
}

HRESULT CSettingsPage::OnConnect(IUnknown* object) {
    CheckPointer(object, E_POINTER);
    OnDisconnect();
    void* settings = nullptr;
    if (FAILED(object->QueryInterface(IID_IVantrelSettings, &settings))) return E_NOINTERFACE;
    settings_ = static_cast<IVantrelSettings*>(settings);
    ReadSettings(*settings_);
    return S_OK;
}

HRESULT CSettingsPage::OnDisconnect() {
    if (settings_) {
        IVantrelSettings* const settings = settings_;
        settings_ = nullptr;
        settings->Release();
    }
    return S_OK;
}

HRESULT CSettingsPage::OnActivate() { return S_OK; }

HRESULT CSettingsPage::OnDeactivate() { return S_OK; }

HRESULT CSettingsPage::OnApplyChanges() {
    IVantrelSettings* const settings = settings_;
    if (!settings) return E_UNEXPECTED;
    // The message box runs a loop of its own, in which the frame may disconnect the page.
    settings->AddRef();
    WriteSettings(*settings);
    // Deliberate: only the result 0 is told. A failure code leaves the page clean without a word.
    if (!settings->ApplySettings()) {
        MessageBox(nullptr, TEXT("Graph Refresh Fail."), TEXT("Error"), MB_OK);
    }
    settings->Release();
    m_bDirty = FALSE;
    return S_OK;
}

INT_PTR CSettingsPage::OnReceiveMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            dialog_ = dialog;
            isFilling_ = true;
            FillDialog(dialog);
            isFilling_ = false;
            FitTexts(dialog);
            SetTimer(dialog, timer_, kRefreshMs, nullptr);
            return TRUE;
        case WM_COMMAND:
            if (HIWORD(wParam) == EN_KILLFOCUS) notice_.Hide();
            OnCommand(dialog, LOWORD(wParam), HIWORD(wParam));
            return TRUE;
        case WM_TIMER:
            if (settings_) ShowFigures(dialog, *settings_);
            return TRUE;
        case WM_DESTROY:
            KillTimer(dialog, timer_);
            notice_.Hide();
            dialog_ = nullptr;
            return TRUE;
        default: return CBasePropertyPage::OnReceiveMessage(dialog, message, wParam, lParam);
    }
}

void CSettingsPage::SetDirty() {
    m_bDirty = TRUE;
    if (m_pPageSite) m_pPageSite->OnStatusChange(PROPPAGESTATUS_DIRTY);
}

// No notice for an empty edit: the user is about to type.
void CSettingsPage::NoticeFault(HWND dialog, int control) {
    const Fault fault = FindFault(dialog);
    const HWND edit = GetDlgItem(dialog, control);
    if (!isFilling_ && fault.control == control && GetWindowTextLengthW(edit) > 0) {
        notice_.Show(edit, fault.wanted);
    } else {
        notice_.Hide();
    }
}

void CSettingsPage::ShowFigure(HWND dialog, int control, double value) {
    char text[tavo::kNumberCapacity] = "0";
    if (value != 0.0) tavo::FormatNumber(value, 3, text);
    SetDlgItemTextA(dialog, control, text);
}
