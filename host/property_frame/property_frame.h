// A property frame: one tab for each page, and the buttons OK, Cancel and Apply.

#pragma once

#include <windows.h>

#include <ocidl.h>

#include <span>
#include <string>
#include <vector>

#include "dshow/com_ptr.h"
#include "host/property_frame/property_page_site.h"

namespace tavo {

// Called before and after changes are applied. Neither member throws.
class ApplyObserver {
  public:
    virtual void BeforeApply() = 0;
    virtual void AfterApply() = 0;

  protected:
    ~ApplyObserver() = default;
};

// Used on one thread, where COM is initialised. A page is activated when its tab is first selected,
// and keeps its input while another page is in front. Cancel discards what was not applied. Apply
// is enabled for changes only: a page that is dirty as soon as it is shown has none yet.
class PropertyFrame final : private PageSiteOwner {
  public:
    explicit PropertyFrame(ApplyObserver* observer = nullptr) : observer_(observer) {}
    // Closes it.
    ~PropertyFrame();
    PropertyFrame(const PropertyFrame&) = delete;
    PropertyFrame& operator=(const PropertyFrame&) = delete;

    // Once. Creates the pages by class; `place` is the top left corner in pixels. On failure
    // nothing stays open. May throw std::bad_alloc.
    HRESULT Open(const std::wstring& title, IUnknown* object, std::span<const CLSID> classes,
                 POINT place);
    // Runs a message loop until the frame is closed.
    void Run();
    // For another message loop: true when the message was handled.
    bool Translate(MSG& message);
    // Pages release the object and the site.
    void Close();

    bool IsOpen() const { return window_ != nullptr; }
    HWND Window() const { return window_; }

  private:
    struct Page {
        ComPtr<IPropertyPage> page;
        std::wstring title;
        SIZE size = {};
        bool active = false;
        bool wasShownDirty = false;  // because it filled its controls
        bool isChanged = false;      // has reported a change since
    };

    HRESULT AddPage(REFCLSID clsid, IUnknown* object);
    void ReleasePages();

    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void OnButton(int id);

    // Grows the frame to fit the largest page.
    void Arrange(POINT place);
    void MoveControl(int id, SIZE by, SIZE growth);

    HRESULT ShowPage(size_t index);
    void SwitchPage(int by);
    void FocusPage();

    static bool HasChanges(const Page& page);
    bool HasChanges() const;
    // False when a page cannot read its input; that page is shown.
    bool CheckInput();
    // True when every page accepted.
    bool ApplyChanges();
    void EnableApply(bool enabled);

    void OnPageStatus(DWORD flags) override;
    bool HandleFrameKey(const MSG& message) override;

    ApplyObserver* const observer_;
    HWND window_ = nullptr;
    ComPtr<PropertyPageSite> site_;
    std::vector<Page> pages_;
    size_t current_ = 0;
    bool showing_ = false;  // activating a page
    bool applying_ = false;
    bool closeRequested_ = false;  // Close was called while applying
};

}  // namespace tavo
