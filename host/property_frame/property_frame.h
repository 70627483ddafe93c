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

// Told when changes are about to be applied, and when that is done. Neither lets an exception out.
class ApplyObserver {
  public:
    virtual void BeforeApply() = 0;
    virtual void AfterApply() = 0;

  protected:
    ~ApplyObserver() = default;
};

// Lives on one thread, where COM is initialised. Pages are shown when their tab is first chosen,
// and keep what was typed while another one is in front. Cancel drops what was not applied. Apply
// is there for changes only: pages that call themselves dirty as soon as they are shown have none
// yet.
class PropertyFrame final : private PageSiteOwner {
  public:
    explicit PropertyFrame(ApplyObserver* observer = nullptr) : observer_(observer) {}
    // Closes it.
    ~PropertyFrame();
    PropertyFrame(const PropertyFrame&) = delete;
    PropertyFrame& operator=(const PropertyFrame&) = delete;

    // Once. Creates the pages by their classes; `place` is the frame's top left corner in pixels.
    // After a failure nothing is open. May throw std::bad_alloc.
    HRESULT Open(const std::wstring& title, IUnknown* object, std::span<const CLSID> classes,
                 POINT place);
    // Handles the thread's messages until the frame is closed.
    void Run();
    // For another loop: true when the message was the frame's and has been handled.
    bool Translate(MSG& message);
    // The pages give the object and the site back.
    void Close();

    bool IsOpen() const { return window_ != nullptr; }
    HWND Window() const { return window_; }

  private:
    struct Page {
        ComPtr<IPropertyPage> page;
        std::wstring title;
        SIZE size = {};
        bool active = false;
        bool wasShownDirty = false;  // by filling its controls
        bool isChanged = false;      // has said so since
    };

    HRESULT AddPage(REFCLSID clsid, IUnknown* object);
    void ReleasePages();

    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void OnButton(int id);

    // Makes room for the largest page.
    void Arrange(POINT place);
    void MoveControl(int id, SIZE by, SIZE growth);

    HRESULT ShowPage(size_t index);
    void Step(int by);
    void FocusPage();

    static bool HasChanges(const Page& page);
    bool HasChanges() const;
    // False where a page cannot read what was typed; it is shown then.
    bool CheckInput();
    // True when no page refused.
    bool ApplyChanges();
    void EnableApply(bool enabled);

    void OnPageStatus(DWORD flags) override;
    bool TakeFrameKey(const MSG& message) override;

    ApplyObserver* const observer_;
    HWND window_ = nullptr;
    ComPtr<PropertyPageSite> site_;
    std::vector<Page> pages_;
    size_t current_ = 0;
    bool showing_ = false;  // a page for the first time
    bool applying_ = false;
    bool closing_ = false;  // asked for while applying
};

}  // namespace tavo
