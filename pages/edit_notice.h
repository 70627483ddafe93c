// A balloon below an edit, which says what is wanted there.

#pragma once

#include <windows.h>

class EditNotice {
  public:
    EditNotice() = default;
    ~EditNotice() { Hide(); }
    EditNotice(const EditNotice&) = delete;
    EditNotice& operator=(const EditNotice&) = delete;

    // Replaces the one before. Does nothing if the balloon cannot be made.
    void Show(HWND edit, const wchar_t* text);
    void Hide();

  private:
    HWND balloon_ = nullptr;  // owned by the edit's top window, with which it may have gone
};
