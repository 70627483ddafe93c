// CBasePropertyPage.

#include "dshow/property_page.h"

#include <algorithm>
#include <cwchar>
#include <utility>

#include "dshow/com_ptr.h"
#include "dshow/helpers.h"
#include "dshow/internal/page_dialog.h"
#include "dshow/internal/release_member.h"
#include "dshow/module.h"
#include "dshow/ref_time.h"
#include "dshow/wide_string.h"

using tavo::ComPtr;
using tavo::dshow::PageDialog;
using tavo::dshow::ReleaseMember;

namespace {

constexpr int kTitleCapacity = 256;
constexpr SIZE kDefaultSize = {340, 150};

}  // namespace

CBasePropertyPage::CBasePropertyPage(LPCTSTR pName, LPUNKNOWN pUnk, int DialogId, int TitleId)
    : CUnknown(pName, pUnk), m_TitleId(TitleId), m_DialogId(DialogId) {}

STDMETHODIMP CBasePropertyPage::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IPropertyPage) return GetInterface(static_cast<IPropertyPage*>(this), ppv);
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

// Frames forget to take site and object back, and both may hold the page's own container.
STDMETHODIMP_(ULONG) CBasePropertyPage::NonDelegatingRelease() {
    const LONG count = PageDialog::Release(this, m_cRef);
    if (count != 0) return std::max<LONG>(count, 1);
    SetPageSite(nullptr);
    SetObjects(0, nullptr);
    delete this;
    return 0;
}

HRESULT CBasePropertyPage::OnConnect(IUnknown*) { return NOERROR; }

HRESULT CBasePropertyPage::OnDisconnect() { return NOERROR; }

HRESULT CBasePropertyPage::OnActivate() { return NOERROR; }

HRESULT CBasePropertyPage::OnDeactivate() { return NOERROR; }

HRESULT CBasePropertyPage::OnApplyChanges() { return NOERROR; }

STDMETHODIMP CBasePropertyPage::SetPageSite(LPPROPERTYPAGESITE pPageSite) {
    if (!pPageSite) {
        if (!m_pPageSite) return E_UNEXPECTED;
        ReleaseMember(m_pPageSite);
        return NOERROR;
    }
    if (m_pPageSite) return E_UNEXPECTED;
    pPageSite->AddRef();
    m_pPageSite = pPageSite;
    return NOERROR;
}

STDMETHODIMP CBasePropertyPage::GetPageInfo(LPPROPPAGEINFO pPageInfo) {
    CheckPointer(pPageInfo, E_POINTER);
    WCHAR text[kTitleCapacity] = {};
    if (LoadStringW(g_hInst, m_TitleId, text, kTitleCapacity) <= 0) text[0] = L'\0';
    LPWSTR title = nullptr;
    const HRESULT hr = AMGetWideString(text, &title);
    if (FAILED(hr)) return hr;

    pPageInfo->cb = sizeof(PROPPAGEINFO);
    pPageInfo->pszTitle = title;
    pPageInfo->size = kDefaultSize;
    pPageInfo->pszDocString = nullptr;
    pPageInfo->pszHelpFile = nullptr;
    pPageInfo->dwHelpContext = 0;

    // A trial dialog tells the size in pixels. It belongs to no page, so no handler sees it.
    HWND trial = CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(m_DialogId), GetDesktopWindow(),
                                    DialogProc, 0);
    if (trial) {
        RECT rect = {};
        if (GetWindowRect(trial, &rect)) pPageInfo->size = {WIDTH(&rect), HEIGHT(&rect)};
        DestroyWindow(trial);
    }
    return NOERROR;
}

STDMETHODIMP CBasePropertyPage::SetObjects(ULONG n, LPUNKNOWN* ppUnk) {
    if (n > 1) return E_UNEXPECTED;
    if (n == 0) {
        m_objectsSet = false;
        return OnDisconnect();
    }
    if (!ppUnk || !*ppUnk) return E_POINTER;
    m_objectsSet = true;
    return OnConnect(*ppUnk);
}

STDMETHODIMP CBasePropertyPage::Activate(HWND hwndParent, LPCRECT pRect, BOOL) {
    CheckPointer(pRect, E_POINTER);
    if (!m_objectsSet || m_isActive) return E_UNEXPECTED;
    // The dialog's notices may have the frame let go of the page.
    const ComPtr<IUnknown> self(GetOwner());
    const HWND dialog = CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(m_DialogId), hwndParent,
                                           DialogProc, reinterpret_cast<LPARAM>(this));
    if (!dialog) return E_OUTOFMEMORY;
    if (!PageDialog::Knows(dialog)) {
        DestroyWindow(dialog);
        return E_OUTOFMEMORY;
    }
    m_hwnd = dialog;
    m_isActive = true;
    OnActivate();
    Move(pRect);
    return Show(SW_SHOWNORMAL);
}

STDMETHODIMP CBasePropertyPage::Move(LPCRECT pRect) {
    CheckPointer(pRect, E_POINTER);
    if (!m_isActive) return E_UNEXPECTED;
    if (m_hwnd) MoveWindow(m_hwnd, pRect->left, pRect->top, WIDTH(pRect), HEIGHT(pRect), TRUE);
    return NOERROR;
}

STDMETHODIMP CBasePropertyPage::Show(UINT nCmdShow) {
    if (!m_isActive) return E_UNEXPECTED;
    if (nCmdShow != SW_SHOW && nCmdShow != SW_SHOWNORMAL && nCmdShow != SW_HIDE) {
        return E_INVALIDARG;
    }
    if (!m_hwnd) return NOERROR;
    ShowWindow(m_hwnd, static_cast<int>(nCmdShow));
    InvalidateRect(m_hwnd, nullptr, TRUE);
    return NOERROR;
}

STDMETHODIMP CBasePropertyPage::Deactivate() {
    if (!m_isActive) return E_UNEXPECTED;
    const ComPtr<IUnknown> self(GetOwner());

    // While m_hwnd is null the handler does not put the style back.
    if (const HWND dialog = std::exchange(m_hwnd, nullptr)) {
        const LONG_PTR style = GetWindowLongPtrW(dialog, GWL_EXSTYLE);
        SetWindowLongPtrW(dialog, GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_CONTROLPARENT));
        m_hwnd = dialog;
    }
    OnDeactivate();
    if (m_hwnd) DestroyWindow(m_hwnd);
    m_hwnd = nullptr;
    m_isActive = false;
    return NOERROR;
}

STDMETHODIMP CBasePropertyPage::IsPageDirty() { return m_bDirty ? S_OK : S_FALSE; }

STDMETHODIMP CBasePropertyPage::Apply() {
    if (!m_objectsSet || !m_pPageSite) return E_UNEXPECTED;
    if (!m_bDirty) return NOERROR;
    // Applying may run a message loop, in which the frame lets go of the page.
    const ComPtr<IUnknown> self(GetOwner());
    const HRESULT hr = OnApplyChanges();
    if (SUCCEEDED(hr)) m_bDirty = FALSE;
    return hr;
}

STDMETHODIMP CBasePropertyPage::Help(LPCWSTR) { return E_NOTIMPL; }

STDMETHODIMP CBasePropertyPage::TranslateAccelerator(LPMSG) { return E_NOTIMPL; }

INT_PTR CBasePropertyPage::OnReceiveMessage(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam) {
    if (!m_hwnd) return 0;
    if (uMsg == WM_STYLECHANGING && static_cast<LONG>(wParam) == GWL_EXSTYLE) {
        // Frames take this style away, and the Tab key would pass the page over.
        reinterpret_cast<STYLESTRUCT*>(lParam)->styleNew |= WS_EX_CONTROLPARENT;
        return 0;
    }
    return DefWindowProcW(hwnd, uMsg, wParam, lParam);
}

INT_PTR CALLBACK CBasePropertyPage::DialogProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam) {
    if (uMsg == WM_INITDIALOG) {
        SetWindowLongPtrW(hwnd, DWLP_USER, lParam);
        auto* const page = reinterpret_cast<CBasePropertyPage*>(lParam);
        if (page && PageDialog::Add(hwnd, page)) page->m_Dlg = hwnd;
    }
    const PageDialog::Message message(hwnd, uMsg);
    CBasePropertyPage* const page = message.Page();
    if (page && GetWindowLongPtrW(hwnd, DWLP_USER)) {
        const INT_PTR handled = page->OnReceiveMessage(hwnd, uMsg, wParam, lParam);
        // Its parent may take the dialog along, and handles are used again.
        if (uMsg == WM_NCDESTROY) page->m_hwnd = nullptr;
        return handled;
    }
    if (message.IsOrphan()) {
        // Nobody else closes it. It paints itself, or it would be asked to without end.
        if (uMsg != WM_CLOSE) return 0;
        DestroyWindow(hwnd);
        return 1;
    }
    // The dialog frees its font at its very end, unless the message is taken from it.
    return uMsg == WM_NCDESTROY ? 0 : 1;
}
