// The property frame with pages of the module, and input as from a user.
//
//   class FooTest : public PropertyFrameTest {};
//   TEST_F(FooTest, Bar) {
//       Open(kBoth);
//       Type(OnPage(IDC_WIDTH), "640");
//       Click(Button(IDOK));
//       EXPECT_EQ(settings_.width, 640);
//   }
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/property_frame/property_frame.h"
#include "host/property_frame/property_frame_ids.h"
#include "pages/resource_ids.h"
#include "tests/host/property_frame/fake_page.h"
#include "tests/pages/support/page_frame.h"

namespace tavo_test {

using Classes = std::vector<CLSID>;

inline const Classes kBoth = {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage};
// This one is not dirty when it is shown with the regulator off.
inline const Classes kRegulatorFirst = {CLSID_TimeRegulatorPropertyPage,
                                        CLSID_ResamplePropertyPage};

class CountingObserver final : public tavo::ApplyObserver {
  public:
    void BeforeApply() override { notices += "before "; }
    void AfterApply() override { notices += "after "; }
    std::string notices;
};

inline BOOL CALLBACK FindControl(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<std::pair<int, HWND>*>(target);
    if (GetDlgCtrlID(window) == search.first) search.second = window;
    return TRUE;
}

class PropertyFrameTest : public PagesTest {
  protected:
    void SetUp() override {
        PagesTest::SetUp();
        for (const CLSID& clsid : kBoth) {
            ComPtr<IUnknown> factory;
            ASSERT_EQ(TheModule().GetClassObject(clsid, IID_IUnknown, factory.PutVoid()), S_OK);
            announced_.push_back(std::make_unique<AnnouncedClass>(clsid, factory.Get()));
        }
    }
    void TearDown() override {
        frame_.Close();
        EXPECT_EQ(settings_.references, 0);
        announced_.clear();
        PagesTest::TearDown();
    }

    void Open(const Classes& classes) { Open(classes, &settings_); }
    void Open(const Classes& classes, IUnknown* object) {
        ASSERT_EQ(frame_.Open(L"Some Properties", object, classes, {40, 30}), S_OK);
        ASSERT_TRUE(frame_.IsOpen());
        PumpFrame();
    }

    // Handles waiting messages as the frame's own loop does.
    void PumpFrame() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (frame_.Translate(message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    void Key(HWND control, WPARAM key) {
        PostMessageW(control, WM_KEYDOWN, key, 0);
        PumpFrame();
    }
    void KeyWith(WPARAM modifier, HWND control, WPARAM key) {
        BYTE keys[256] = {};
        GetKeyboardState(keys);
        BYTE held[256] = {};
        std::copy(std::begin(keys), std::end(keys), held);
        held[VK_CONTROL] = 0x80;
        held[modifier] = 0x80;
        SetKeyboardState(held);
        Key(control, key);
        SetKeyboardState(keys);
    }

    HWND Button(int id) const { return GetDlgItem(frame_.Window(), id); }
    HWND Tabs() const { return Button(IDC_FRAME_TABS); }
    bool CanApply() const { return IsWindowEnabled(Button(IDC_FRAME_APPLY)); }
    HWND OnPage(int id) const {
        std::pair<int, HWND> search = {id, nullptr};
        EnumChildWindows(Button(IDC_FRAME_PLACE), FindControl, reinterpret_cast<LPARAM>(&search));
        return search.second;
    }
    int Tab() const { return TabCtrl_GetCurSel(Tabs()); }
    void ChooseTab(int index) {
        RECT item = {};
        TabCtrl_GetItemRect(Tabs(), index, &item);
        const LPARAM middle =
            MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
        PostMessageW(Tabs(), WM_LBUTTONDOWN, MK_LBUTTON, middle);
        PostMessageW(Tabs(), WM_LBUTTONUP, 0, middle);
        PumpFrame();
        EXPECT_EQ(Tab(), index);
    }
    void SetRate(const char* rate) {
        if (SendMessageW(OnPage(IDC_ENABLE), BM_GETCHECK, 0, 0) != BST_CHECKED) {
            Click(OnPage(IDC_ENABLE));
        }
        Type(OnPage(IDC_FRAME_RATE), rate);
    }

    FakeSettings settings_;
    CountingObserver observer_;
    tavo::PropertyFrame frame_{&observer_};

  private:
    std::vector<std::unique_ptr<AnnouncedClass>> announced_;
};

}  // namespace tavo_test
