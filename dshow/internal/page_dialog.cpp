// The list of the open dialogs. There are few at a time.

#include "dshow/internal/page_dialog.h"

#include <new>

#include "dshow/property_page.h"

namespace tavo::dshow {

namespace {

SRWLOCK g_lock = SRWLOCK_INIT;
PageDialog* g_first = nullptr;

class ListLock {
  public:
    ListLock() { AcquireSRWLockExclusive(&g_lock); }
    ~ListLock() { ReleaseSRWLockExclusive(&g_lock); }
    ListLock(const ListLock&) = delete;
    ListLock& operator=(const ListLock&) = delete;
};

}  // namespace

PageDialog::PageDialog(HWND window, CBasePropertyPage* page)
    : CBaseObject(NAME("Page dialog")),
      window_(window),
      thread_(GetWindowThreadProcessId(window, nullptr)),
      page_(page),
      next_(g_first) {}

bool PageDialog::IsOpen() const {
    return window_ && GetWindowThreadProcessId(window_, nullptr) == thread_;
}

PageDialog* PageDialog::Find(HWND window) {
    PageDialog* at = g_first;
    while (at && at->window_ != window) at = at->next_;
    return at;
}

// The end of a thread takes its windows without a message.
void PageDialog::RemoveDead() {
    for (PageDialog** at = &g_first; *at;) {
        PageDialog* const dialog = *at;
        if (dialog->messages_ > 0 || dialog->IsOpen()) {
            at = &dialog->next_;
        } else {
            *at = dialog->next_;
            delete dialog;
        }
    }
}

bool PageDialog::Add(HWND window, CBasePropertyPage* page) {
    const ListLock lock;
    // One that has this handle is of a window that is gone.
    if (PageDialog* const former = Find(window)) former->window_ = nullptr;
    RemoveDead();
    auto* const dialog = new (std::nothrow) PageDialog(window, page);
    if (dialog) g_first = dialog;
    return dialog != nullptr;
}

bool PageDialog::Knows(HWND window) {
    const ListLock lock;
    return Find(window) != nullptr;
}

// Under the lock, so that a message either holds the page or does not find it.
LONG PageDialog::Release(CBasePropertyPage* page, volatile LONG& count) {
    const ListLock lock;
    const LONG left = InterlockedDecrement(&count);
    if (left == 0) {
        InterlockedIncrement(&count);
        Detach(page);
    }
    return left;
}

void PageDialog::Detach(CBasePropertyPage* page) {
    RemoveDead();
    for (PageDialog* at = g_first; at; at = at->next_) {
        if (at->page_ != page) continue;
        at->page_ = nullptr;
        if (at->thread_ != GetCurrentThreadId() && at->window_) {
            PostMessageW(at->window_, WM_CLOSE, 0, 0);
        }
    }
}

PageDialog::Message::Message(HWND window, UINT message) : isLast_(message == WM_NCDESTROY) {
    const ListLock lock;
    dialog_ = Find(window);
    if (!dialog_) return;
    ++dialog_->messages_;
    page_ = dialog_->page_;
    if (page_) page_->CUnknown::NonDelegatingAddRef();
}

PageDialog::Message::~Message() {
    if (!dialog_) return;
    {
        const ListLock lock;
        if (isLast_) dialog_->window_ = nullptr;
        if (--dialog_->messages_ == 0 && !dialog_->window_) RemoveDead();
    }
    if (page_) page_->CBasePropertyPage::NonDelegatingRelease();
}

}  // namespace tavo::dshow
