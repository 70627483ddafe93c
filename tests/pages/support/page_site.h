// The site that a frame gives to its pages: keeps the notices.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <vector>

namespace tavo_test {

class PageSite final : public IPropertyPageSite {
  public:
    virtual ~PageSite() = default;

    std::vector<DWORD> notices;
    std::function<void()> onNotice;
    long references = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == IID_IPropertyPageSite;
        *object = known ? this : nullptr;
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
    STDMETHODIMP OnStatusChange(DWORD flags) override {
        notices.push_back(flags);
        if (onNotice) onNotice();
        return S_OK;
    }
    STDMETHODIMP GetLocaleID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*) override { return S_FALSE; }
};

}  // namespace tavo_test
