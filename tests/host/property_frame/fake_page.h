// A property page with one edit and scripted results, and its class.
//
//   FakePage page(L"Fake");
//   const AnnouncedClass announced(kFakePage, &page);
//   frame.Open(L"Title", &object, {{kFakePage}}, {});
//   page.MakeDirty();
//   EXPECT_EQ(page.calls, "SetPageSite SetObjects Activate Show ");
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <string>

#include "tests/support/com_ptr.h"

namespace tavo_test {

// {9B9C7A52-0E5B-4E0C-8C0C-64B2D3F0A101}
inline constexpr CLSID kFakePage = {
    0x9b9c7a52, 0x0e5b, 0x4e0c, {0x8c, 0x0c, 0x64, 0xb2, 0xd3, 0xf0, 0xa1, 0x01}};

// The class of a page, for CoCreateInstance within this process.
class AnnouncedClass {
  public:
    AnnouncedClass(REFCLSID clsid, IUnknown* factory) {
        CoRegisterClassObject(clsid, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
    }
    ~AnnouncedClass() { CoRevokeClassObject(cookie_); }
    AnnouncedClass(const AnnouncedClass&) = delete;
    AnnouncedClass& operator=(const AnnouncedClass&) = delete;

  private:
    DWORD cookie_ = 0;
};

// Its own factory: the only page lives on the test's stack.
class FakePage final : public IPropertyPage, public IClassFactory {
  public:
    explicit FakePage(const wchar_t* title) : title_(title) {}
    virtual ~FakePage() = default;

    HRESULT activateResult = S_OK;
    HRESULT applyResult = S_OK;
    bool dirty = false;
    bool takesKeys = false;
    std::string calls;
    ComPtr<IPropertyPageSite> site;
    HWND edit = nullptr;  // while active
    long references = 0;

    void MakeDirty() {
        dirty = true;
        site->OnStatusChange(PROPPAGESTATUS_DIRTY);
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IPropertyPage) {
            *object = static_cast<IPropertyPage*>(this);
        } else if (iid == IID_IClassFactory) {
            *object = static_cast<IClassFactory*>(this);
        }
        if (*object) AddRef();
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }

    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** object) override {
        return QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    STDMETHODIMP SetPageSite(IPropertyPageSite* newSite) override {
        site = ComPtr<IPropertyPageSite>(newSite);
        return Note(newSite ? "SetPageSite " : "SetPageSite(0) ");
    }
    STDMETHODIMP Activate(HWND parent, LPCRECT, BOOL) override {
        Note("Activate ");
        if (FAILED(activateResult)) return activateResult;
        edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 50, 20,
                               parent, nullptr, GetModuleHandleW(nullptr), nullptr);
        return S_OK;
    }
    STDMETHODIMP Deactivate() override {
        DestroyWindow(edit);
        edit = nullptr;
        return Note("Deactivate ");
    }
    STDMETHODIMP GetPageInfo(PROPPAGEINFO* info) override {
        *info = {};
        info->cb = sizeof *info;
        info->size = {500, 60};
        const size_t bytes = (title_.size() + 1) * sizeof(wchar_t);
        info->pszTitle = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
        title_.copy(info->pszTitle, title_.size());
        info->pszTitle[title_.size()] = 0;
        return S_OK;
    }
    STDMETHODIMP SetObjects(ULONG count, IUnknown**) override {
        return Note(count ? "SetObjects " : "SetObjects(0) ");
    }
    STDMETHODIMP Show(UINT command) override {
        return Note(command == SW_HIDE ? "Show(hide) " : "Show ");
    }
    STDMETHODIMP Move(LPCRECT) override { return S_OK; }
    STDMETHODIMP IsPageDirty() override { return dirty ? S_OK : S_FALSE; }
    STDMETHODIMP Apply() override {
        Note("Apply ");
        if (SUCCEEDED(applyResult)) dirty = false;
        return applyResult;
    }
    STDMETHODIMP Help(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*) override { return takesKeys ? S_OK : S_FALSE; }

  private:
    HRESULT Note(const char* call) {
        calls += call;
        return S_OK;
    }

    const std::wstring title_;
};

}  // namespace tavo_test
