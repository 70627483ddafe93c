// Opens, shows, applies and closes the pages.

#include "host/property_frame/property_frame.h"

#include <commctrl.h>

#include <algorithm>
#include <new>

#include "host/property_frame/property_frame_ids.h"
#include "host/system/system_library.h"
#include "pages/input_check.h"

namespace tavo {
namespace {

bool IsDirty(IPropertyPage& page) { return page.IsPageDirty() == S_OK; }

HRESULT LastError() {
    const DWORD error = GetLastError();
    return error != ERROR_SUCCESS ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

}  // namespace

PropertyFrame::~PropertyFrame() { Close(); }

HRESULT PropertyFrame::Open(const std::wstring& title, IUnknown* object,
                            std::span<const CLSID> classes, POINT place) {
    if (classes.empty()) return E_INVALIDARG;
    const INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TAB_CLASSES};
    using InitControls = BOOL(WINAPI*)(const INITCOMMONCONTROLSEX*);
    const auto init = SystemFunction<InitControls>(L"comctl32.dll", "InitCommonControlsEx");
    if (init != nullptr) init(&controls);
    *site_.Put() = new (std::nothrow) PropertyPageSite(*this);
    HRESULT hr = site_ ? S_OK : E_OUTOFMEMORY;
    pages_.reserve(classes.size());
    for (size_t i = 0; i < classes.size() && SUCCEEDED(hr); ++i) hr = AddPage(classes[i], object);
    if (SUCCEEDED(hr)) {
        CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROPERTY_FRAME), nullptr,
                           Procedure, reinterpret_cast<LPARAM>(this));
        hr = window_ != nullptr ? S_OK : LastError();
    }
    if (SUCCEEDED(hr)) {
        SetWindowTextW(window_, title.c_str());
        Arrange(place);
        hr = ShowPage(0);
    }
    if (FAILED(hr)) {
        Close();
        return hr;
    }
    ShowWindow(window_, SW_SHOW);
    FocusPage();
    return S_OK;
}

HRESULT PropertyFrame::AddPage(REFCLSID clsid, IUnknown* object) {
    Page& page = pages_.emplace_back();
    HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IPropertyPage,
                                  page.page.PutVoid());
    if (SUCCEEDED(hr)) hr = page.page->SetPageSite(site_.Get());
    if (SUCCEEDED(hr)) hr = page.page->SetObjects(1, &object);
    PROPPAGEINFO info = {};
    info.cb = sizeof info;
    if (SUCCEEDED(hr)) hr = page.page->GetPageInfo(&info);
    if (SUCCEEDED(hr)) {
        page.size = info.size;
        if (info.pszTitle != nullptr) page.title = info.pszTitle;
    }
    CoTaskMemFree(info.pszTitle);
    CoTaskMemFree(info.pszDocString);
    CoTaskMemFree(info.pszHelpFile);
    return hr;
}

void PropertyFrame::Run() {
    MSG message;
    while (IsOpen()) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
        if (got <= 0) return Close();
        if (Translate(message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// The page comes first, then the frame's keys, then those of every dialog.
bool PropertyFrame::Translate(MSG& message) {
    if (window_ == nullptr) return false;
    const bool isKey = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
    if (isKey && IsChild(window_, message.hwnd)) {
        const bool isInPage = IsChild(GetDlgItem(window_, IDC_FRAME_PLACE), message.hwnd);
        const ComPtr<IPropertyPage> page = pages_[current_].page;
        if (isInPage && page->TranslateAccelerator(&message) == S_OK) return true;
        if (HandleFrameKey(message)) return true;
    }
    return window_ != nullptr && IsDialogMessageW(window_, &message);
}

void PropertyFrame::Close() {
    // The frame may be closed from the message loop of a box that Apply shows.
    if (applying_) {
        closeRequested_ = true;
        return;
    }
    ReleasePages();
    if (window_ != nullptr) DestroyWindow(window_);
    if (site_) site_->Detach();
    site_.Reset();
}

void PropertyFrame::ReleasePages() {
    const std::vector<Page> pages = std::move(pages_);
    pages_.clear();
    for (const Page& page : pages) {
        if (!page.page) continue;
        if (page.active) page.page->Deactivate();
        page.page->SetObjects(0, nullptr);
        page.page->SetPageSite(nullptr);
    }
}

HRESULT PropertyFrame::ShowPage(size_t index) {
    const HWND place = GetDlgItem(window_, IDC_FRAME_PLACE);
    Page& page = pages_[index];
    if (!page.active) {
        RECT area = {};
        GetClientRect(place, &area);
        showing_ = true;
        const HRESULT hr = page.page->Activate(place, &area, FALSE);
        showing_ = false;
        if (FAILED(hr)) {
            TabCtrl_SetCurSel(GetDlgItem(window_, IDC_FRAME_TABS), static_cast<int>(current_));
            return hr;
        }
        page.active = true;
        page.wasShownDirty = IsDirty(*page.page.Get());
    }
    if (index != current_) pages_[current_].page->Show(SW_HIDE);
    page.page->Show(SW_SHOW);
    current_ = index;
    TabCtrl_SetCurSel(GetDlgItem(window_, IDC_FRAME_TABS), static_cast<int>(index));
    return S_OK;
}

void PropertyFrame::SwitchPage(int by) {
    const size_t count = pages_.size();
    const size_t next = (current_ + count + static_cast<size_t>(by)) % count;
    if (SUCCEEDED(ShowPage(next))) FocusPage();
}

// As with the Tab key, the text of an edit is selected.
void PropertyFrame::FocusPage() {
    const HWND first = GetNextDlgTabItem(window_, nullptr, FALSE);
    SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first), TRUE);
}

bool PropertyFrame::HasChanges(const Page& page) {
    return IsDirty(*page.page.Get()) && (page.isChanged || !page.wasShownDirty);
}

bool PropertyFrame::HasChanges() const {
    return std::any_of(pages_.begin(), pages_.end(),
                       [](const Page& page) { return HasChanges(page); });
}

bool PropertyFrame::CheckInput() {
    for (size_t i = 0; i < pages_.size(); ++i) {
        ComPtr<IInputCheck> check;
        if (!HasChanges(pages_[i]) ||
            FAILED(pages_[i].page->QueryInterface(IID_IInputCheck, check.PutVoid()))) {
            continue;
        }
        if (check->CheckInput() == S_OK) continue;
        MessageBeep(MB_ICONERROR);
        if (SUCCEEDED(ShowPage(i))) check->PointToInput();
        return false;
    }
    return true;
}

// All pages are applied; the first one that refuses is shown.
bool PropertyFrame::ApplyChanges() {
    if (!HasChanges()) {
        EnableApply(false);
        return true;
    }
    if (!CheckInput()) return false;
    applying_ = true;
    if (observer_ != nullptr) observer_->BeforeApply();
    size_t refusing = pages_.size();
    for (size_t i = 0; i < pages_.size(); ++i) {
        if (!HasChanges(pages_[i])) continue;
        const ComPtr<IPropertyPage> page = pages_[i].page;
        const bool refused = FAILED(page->Apply());
        if (refused && refusing > i) refusing = i;
        if (i < pages_.size() && !refused) pages_[i].isChanged = pages_[i].wasShownDirty = false;
    }
    if (observer_ != nullptr) observer_->AfterApply();
    applying_ = false;
    const bool applied = refusing >= pages_.size();
    if (closeRequested_ || window_ == nullptr) {
        Close();
        return applied;
    }
    EnableApply(HasChanges());
    if (!applied) {
        MessageBeep(MB_ICONERROR);
        if (SUCCEEDED(ShowPage(refusing))) FocusPage();
    }
    return applied;
}

// A page may report a change before IsPageDirty returns it.
void PropertyFrame::OnPageStatus(DWORD flags) {
    if (window_ == nullptr || showing_ || applying_) return;
    const bool dirty = (flags & PROPPAGESTATUS_DIRTY) != 0;
    if (dirty) pages_[current_].isChanged = true;
    EnableApply(dirty || HasChanges());
}

bool PropertyFrame::HandleFrameKey(const MSG& message) {
    if (window_ == nullptr || message.message != WM_KEYDOWN || GetKeyState(VK_CONTROL) >= 0) {
        return false;
    }
    switch (message.wParam) {
        case VK_TAB: SwitchPage(GetKeyState(VK_SHIFT) < 0 ? -1 : 1); return true;
        case VK_NEXT: SwitchPage(1); return true;
        case VK_PRIOR: SwitchPage(-1); return true;
        default: return false;
    }
}

}  // namespace tavo
