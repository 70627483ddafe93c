// Reads the message boxes of this thread and presses their button, for as long as it lives.
//
//   MessageBoxes boxes;
//   page->Apply();
//   ASSERT_EQ(boxes.seen().size(), 1u);
//   EXPECT_EQ(boxes.seen()[0].text, L"Graph Refresh Fail.");
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace tavo_test {

struct SeenBox {
    std::wstring caption;
    std::wstring text;
    std::vector<int> buttons;
    HICON icon;
    HWND owner;
};

class MessageBoxes {
  public:
    MessageBoxes();
    ~MessageBoxes();
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;

    const std::vector<SeenBox>& seen() const { return seen_; }
    // Called while the box stands, before its button is pressed.
    std::function<void()> onBox;

  private:
    static void CALLBACK Look(HWND, UINT, UINT_PTR, DWORD);
    static BOOL CALLBACK Visit(HWND window, LPARAM self);

    static MessageBoxes* current;
    UINT_PTR timer_;
    HWND last_ = nullptr;
    std::vector<SeenBox> seen_;
};

}  // namespace tavo_test
