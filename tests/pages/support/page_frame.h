// A frame window with one property page of the module in it, as an application would show it.
//
//   PageFrame frame(CLSID_ResamplePropertyPage);
//   ASSERT_EQ(frame.Connect(&settings), S_OK);
//   ASSERT_EQ(frame.Open(), S_OK);
//   Type(frame.Control(IDC_WIDTH), "640");
//   EXPECT_EQ(frame.Apply(), S_OK);
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/filter/support/filter_rig.h"
#include "tests/pages/support/fake_settings.h"
#include "tests/pages/support/page_site.h"
#include "tests/support/patience.h"

namespace tavo_test {

inline constexpr CLSID kPages[] = {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage};

class PageFrame {
  public:
    explicit PageFrame(REFCLSID clsid, int left = 0);
    // Closes and disconnects; the site must have its references back.
    ~PageFrame();
    PageFrame(const PageFrame&) = delete;
    PageFrame& operator=(const PageFrame&) = delete;

    HRESULT Connect(IUnknown* object);
    HRESULT Disconnect() { return page->SetObjects(0, nullptr); }
    HRESULT Open();
    HRESULT Close() { return page->Deactivate(); }
    HRESULT Apply() { return page->Apply(); }
    bool IsDirty() const { return page->IsPageDirty() == S_OK; }

    HWND window() const { return window_; }
    // Null while closed.
    HWND Dialog() const { return GetWindow(window_, GW_CHILD); }
    HWND Control(int id) const { return GetDlgItem(Dialog(), id); }
    std::string Text(int id) const;
    // What the user sees selected in a list.
    std::string Selected(int id) const;
    // The dialog procedure itself, with its result.
    INT_PTR Send(UINT message, WPARAM wParam, LPARAM lParam = 0) const;

    PageSite site;
    ComPtr<IPropertyPage> page;

  private:
    HWND window_;
};

class PagesTest : public FilterTest {
  protected:
    // Windows allocate for themselves as they please.
    PagesTest() { checksTaskMemory_ = false; }
};

// One page and its frame, for each test.
class OnePageTest : public PagesTest {
  protected:
    explicit OnePageTest(REFCLSID clsid) : clsid_(clsid) {}
    void SetUp() override {
        PagesTest::SetUp();
        frame_ = std::make_unique<PageFrame>(clsid_);
    }
    void TearDown() override {
        frame_.reset();
        EXPECT_EQ(settings_.references, 0);
        PagesTest::TearDown();
    }

    FakeSettings settings_;
    std::unique_ptr<PageFrame> frame_;

  private:
    const CLSID clsid_;
};

// The program's windows; lists that drop down are children of the desktop.
int OwnWindows();

// What is waiting in the queue, and what that leads to.
void Pump();
void PumpFor(DWORD milliseconds);

// The same until the condition holds; false if that takes too long.
template <typename Condition>
bool PumpUntil(Condition condition) {
    return WaitUntil([&] {
        Pump();
        return condition();
    });
}

// The user at mouse and keyboard.
void Type(HWND edit, const char* text);  // instead of what stands there
void Click(HWND button);
void PressKey(HWND control, WPARAM key);
void ChooseWithMouse(HWND list, int index);

}  // namespace tavo_test
