// The site of the property frame's pages.

#pragma once

#include <windows.h>

#include <ocidl.h>

#include <atomic>

namespace tavo {

class PageSiteOwner {
  public:
    // PROPPAGESTATUS values.
    virtual void OnPageStatus(DWORD flags) = 0;
    // True when the frame handled the key.
    virtual bool HandleFrameKey(const MSG& message) = 0;

  protected:
    ~PageSiteOwner() = default;
};

// A page may keep its site longer than the frame exists. After Detach the site does nothing.
class PropertyPageSite final : public IPropertyPageSite {
  public:
    // The caller holds the first reference.
    explicit PropertyPageSite(PageSiteOwner& owner) : owner_(&owner) {}
    PropertyPageSite(const PropertyPageSite&) = delete;
    PropertyPageSite& operator=(const PropertyPageSite&) = delete;

    void Detach() { owner_ = nullptr; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP OnStatusChange(DWORD flags) override;
    STDMETHODIMP GetLocaleID(LCID* locale) override;
    // E_NOTIMPL.
    STDMETHODIMP GetPageContainer(IUnknown** container) override;
    STDMETHODIMP TranslateAccelerator(MSG* message) override;

  private:
    virtual ~PropertyPageSite() = default;

    PageSiteOwner* owner_;
    std::atomic<ULONG> references_ = 1;
};

}  // namespace tavo
