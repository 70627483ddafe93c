// The resampling page on settings of the tests' own.
#pragma once

#include "tests/pages/support/page_frame.h"

namespace tavo_test {

// What applying the page calls, in order.
inline constexpr const char* kAllCalls =
    "SetOutputSize SetScaleMethod SetOutputFormat SetVideoType Apply ";

class ResamplePage : public OnePageTest {
  protected:
    ResamplePage() : OnePageTest(CLSID_ResamplePropertyPage) {}
    // With the settings as the test has set them.
    void Open() {
        ASSERT_EQ(frame_->Connect(&settings_), S_OK);
        ASSERT_EQ(frame_->Open(), S_OK);
    }
    // Open, and as clean as after an application.
    void OpenClean() {
        Open();
        ASSERT_EQ(frame_->Apply(), S_OK);
        settings_.calls.clear();
        frame_->site.notices.clear();
    }
    void ExpectOneNotice() {
        EXPECT_EQ(frame_->site.notices, std::vector<DWORD>{PROPPAGESTATUS_DIRTY});
        EXPECT_TRUE(frame_->IsDirty());
    }
};

}  // namespace tavo_test
