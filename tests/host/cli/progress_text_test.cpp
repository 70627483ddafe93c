// The progress bar of a run.

#include "host/cli/progress_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace tavo {
namespace {

TEST(ProgressText, Line) {
    EXPECT_EQ(ProgressLine({123, 0.5, 10.0, 12.34}),
              L"[#############.............]  50%  frame 123  12.3 fps  0:10 left");
    EXPECT_EQ(ProgressLine({270, 1.0, 10.0, 27.0}),
              L"[##########################] 100%  frame 270  27.0 fps  0:00 left");
    EXPECT_EQ(ProgressLine({0, 0.0, 0.0, 0.0}),
              L"[..........................]   0%  frame 0  0.0 fps");
    EXPECT_EQ(ProgressLine({0, 7.0, 0.0, 0.0}).substr(28), L" 100%  frame 0  0.0 fps  0:00 left");
    EXPECT_EQ(ProgressLine({123, -1.0, 65.0, 2.0}), L"frame 123  2.0 fps  1:05");
    EXPECT_EQ(ProgressLine({123, -1.0, 65.0, 2.0, 14.9}), L"frame 123  2.0 fps  1:05");
    EXPECT_EQ(ProgressLine({123, 0.5, 80.0, 0.0, 24.0}),
              L"frame 123  none came for 0:24; Ctrl-C ends it here");
}

TEST(ProgressText, LineFitsATerminal) {
    EXPECT_LE(ProgressLine({4294967295u, 0.0011, 1e6, 99999.9}).size(), 79u);
    EXPECT_LE(ProgressLine({4294967295u, 0.5, 1e6, 0.0, 1e6}).size(), 79u);
}

#ifdef _WIN32
TEST(ProgressText, ALocaleOfTheProcessChangesNothing) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany"), nullptr);
    EXPECT_EQ(std::string(std::localeconv()->decimal_point), ",");
    EXPECT_NE(ProgressLine({.frames = 12345, .fps = 12.5}).find(L"frame 12345  12.5 fps"),
              std::wstring::npos);
    std::setlocale(LC_ALL, before.c_str());
}
#endif

}  // namespace
}  // namespace tavo
