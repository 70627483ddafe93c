// The pages in a host that speaks German: numbers have their full stop all the same. Needs a
// display.
#include <clocale>
#include <cstdio>

#include "pages/resource_ids.h"
#include "tests/pages/support/page_frame.h"

using namespace tavo_test;

namespace {

// The C library that the module shares with its host, and the thread.
class InGerman : public PagesTest {
  protected:
    void SetUp() override {
        PagesTest::SetUp();
        formerThread_ = GetThreadLocale();
        ASSERT_NE(std::setlocale(LC_ALL, "German_Germany.1252"), nullptr);
        ASSERT_TRUE(
            SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT)));
        char text[10] = "";
        std::snprintf(text, sizeof text, "%.1f", 0.5);
        ASSERT_STREQ(text, "0,5");
        ASSERT_EQ(std::atof("0,5"), 0.5);
    }
    void TearDown() override {
        std::setlocale(LC_ALL, "C");
        SetThreadLocale(formerThread_);
        PagesTest::TearDown();
    }

    FakeSettings settings_;

  private:
    LCID formerThread_ = 0;
};

TEST_F(InGerman, RatesAreShownAndReadWithAFullStop) {
    settings_.frameRate = 29.97;
    PageFrame frame(CLSID_TimeRegulatorPropertyPage);
    ASSERT_EQ(frame.Connect(&settings_), S_OK);
    ASSERT_EQ(frame.Open(), S_OK);
    EXPECT_EQ(frame.Text(IDC_FRAME_RATE), "29.97");
    ASSERT_EQ(frame.Apply(), S_OK);
    EXPECT_EQ(settings_.frameRate, 29.97);
    Type(frame.Control(IDC_FRAME_RATE), "23.976");
    ASSERT_EQ(frame.Apply(), S_OK);
    EXPECT_EQ(settings_.frameRate, 23.976);
    Type(frame.Control(IDC_FRAME_RATE), "24,9");
    ASSERT_EQ(frame.Apply(), S_OK);
    EXPECT_EQ(settings_.frameRate, 24.0) << "as in every other locale";
    settings_.generateFps = 12.5;
    frame.Send(WM_TIMER, 4);
    EXPECT_EQ(frame.Text(IDC_GENERATE_FPS), "12.500");
}

TEST_F(InGerman, SwitchedOffTheRateIsShownWithAFullStop) {
    PageFrame frame(CLSID_TimeRegulatorPropertyPage);
    ASSERT_EQ(frame.Connect(&settings_), S_OK);
    ASSERT_EQ(frame.Open(), S_OK);
    EXPECT_EQ(frame.Text(IDC_FRAME_RATE), "0.00");
}

TEST_F(InGerman, FiguresAreShownWithAFullStopAndSizesWithoutAnything) {
    settings_.width = 1234567;
    settings_.moduleTime = 1234567.8916;
    settings_.systemFps = 0.25;
    PageFrame frame(CLSID_ResamplePropertyPage);
    ASSERT_EQ(frame.Connect(&settings_), S_OK);
    ASSERT_EQ(frame.Open(), S_OK);
    frame.Send(WM_TIMER, 3);
    EXPECT_EQ(frame.Text(IDC_MODULE_TIME), "1234567.892");
    EXPECT_EQ(frame.Text(IDC_SYSTEM_FPS), "0.250");
    EXPECT_EQ(frame.Text(IDC_WIDTH), "1234567");
}

}  // namespace
