// Texts of a run.

#include "host/cli/progress_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace tavo {
namespace {

TEST(ProgressText, Clock) {
    EXPECT_EQ(ClockText(0), L"0:00");
    EXPECT_EQ(ClockText(59.6), L"1:00");
    EXPECT_EQ(ClockText(754), L"12:34");
    EXPECT_EQ(ClockText(3723), L"1:02:03");
    EXPECT_EQ(ClockText(-1), L"0:00");
    EXPECT_EQ(ClockText(1e300), L"99:59:59");
}

TEST(ProgressText, Bytes) {
    EXPECT_EQ(BytesText(0), L"0 bytes");
    EXPECT_EQ(BytesText(999), L"999 bytes");
    EXPECT_EQ(BytesText(1000), L"1.00 kB");
    EXPECT_EQ(BytesText(45600000), L"45.6 MB");
    EXPECT_EQ(BytesText(999600000), L"1.00 GB");
    EXPECT_EQ(BytesText(123456789012), L"123 GB");
    EXPECT_EQ(BytesText(UINT64_MAX), L"18446744 TB");
}

TEST(ProgressText, Numbers) {
    EXPECT_EQ(NumberText(25), L"25");
    EXPECT_EQ(NumberText(29.97), L"29.97");
    EXPECT_EQ(NumberText(23.976023976), L"23.976");
    EXPECT_EQ(NumberText(0), L"0");
    EXPECT_EQ(NumberText(1200), L"1200");
}

TEST(ProgressText, Line) {
    EXPECT_EQ(ProgressLine({123, 0.5, 10.0, 12.34}),
              L"[#############.............]  50%  frame 123  12.3 fps  0:10 left");
    EXPECT_EQ(ProgressLine({270, 1.0, 10.0, 27.0}),
              L"[##########################] 100%  frame 270  27.0 fps  0:00 left");
    EXPECT_EQ(ProgressLine({0, 0.0, 0.0, 0.0}),
              L"[..........................]   0%  frame 0  0.0 fps");
    EXPECT_EQ(ProgressLine({0, 7.0, 0.0, 0.0}).substr(28), L" 100%  frame 0  0.0 fps  0:00 left");
    EXPECT_EQ(ProgressLine({123, -1.0, 65.0, 2.0}), L"frame 123  2.0 fps  1:05");
}

TEST(ProgressText, LineFitsATerminal) {
    EXPECT_LE(ProgressLine({4294967295u, 0.0011, 1e6, 99999.9}).size(), 79u);
}

#ifdef _WIN32
TEST(ProgressText, ALocaleOfTheProcessChangesNothing) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany"), nullptr);
    EXPECT_EQ(std::string(std::localeconv()->decimal_point), ",");
    EXPECT_EQ(NumberText(29.97), L"29.97");
    EXPECT_EQ(BytesText(1234567), L"1.23 MB");
    EXPECT_NE(ProgressLine({.frames = 12345, .fps = 12.5}).find(L"frame 12345  12.5 fps"),
              std::wstring::npos);
    std::setlocale(LC_ALL, before.c_str());
}
#endif

}  // namespace
}  // namespace tavo
