// The site that the property frame gives to its pages.

#pragma once

#include <windows.h>

#include <ocidl.h>

#include <atomic>

namespace tavo {

class PageSiteOwner {
  public:
    // PROPPAGESTATUS values.
    virtual void OnPageStatus(DWORD flags) = 0;
    // True when the key was one of the frame's own and has been followed.
    virtual bool TakeFrameKey(const MSG& message) = 0;

  protected:
    ~PageSiteOwner() = default;
};

// Pages may keep their site for longer than there is a frame: it lives until its last release, and
// from Detach on it reaches nobody.
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
    // There is none.
    STDMETHODIMP GetPageContainer(IUnknown** container) override;
    STDMETHODIMP TranslateAccelerator(MSG* message) override;

  private:
    virtual ~PropertyPageSite() = default;

    PageSiteOwner* owner_;
    std::atomic<ULONG> references_ = 1;
};

}  // namespace tavo
