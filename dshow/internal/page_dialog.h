// PageDialog: what stands between an open dialog and its page, for the inside of this library.

#pragma once

#include "dshow/base_object.h"
#include "dshow/platform.h"

class CBasePropertyPage;

namespace tavo::dshow {

// Belongs to the window: it keeps the module loaded until the window is gone, also where the page
// went before. All calls may come from any thread. No lock is held over a call out.
class PageDialog final : private CBaseObject {
  public:
    // A new dialog's. False without memory.
    static bool Add(HWND window, CBasePropertyPage* page);
    // Whether the window has one.
    static bool Knows(HWND window);
    // Takes one from the page's count and returns what is left. The last one leaves 1: no further
    // message reaches the page then, and its dialog on another thread is asked to close.
    static LONG Release(CBasePropertyPage* page, volatile LONG& count);

    // A message of the window on its way to the page.
    class Message {
      public:
        Message(HWND window, UINT message);
        ~Message();
        Message(const Message&) = delete;
        Message& operator=(const Message&) = delete;

        // Null for a dialog without one. Lives at least as long as this.
        CBasePropertyPage* Page() const { return page_; }
        // The page went before its dialog.
        bool IsOrphan() const { return dialog_ && !page_; }

      private:
        PageDialog* dialog_;
        CBasePropertyPage* page_ = nullptr;
        const bool isLast_;
    };

  private:
    PageDialog(HWND window, CBasePropertyPage* page);
    ~PageDialog() = default;

    static PageDialog* Find(HWND window);
    static void Detach(CBasePropertyPage* page);
    static void RemoveDead();
    bool IsOpen() const;

    HWND window_;  // null once it is gone
    const DWORD thread_;
    CBasePropertyPage* page_;  // null once it is gone
    int messages_ = 0;         // in progress
    PageDialog* next_;
};

}  // namespace tavo::dshow
