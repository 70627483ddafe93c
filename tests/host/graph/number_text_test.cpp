// Numbers, times and amounts as text.

#include "host/graph/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace tavo {
namespace {

TEST(NumberText, Clock) {
    EXPECT_EQ(ClockText(0), L"0:00");
    EXPECT_EQ(ClockText(59.6), L"1:00");
    EXPECT_EQ(ClockText(754), L"12:34");
    EXPECT_EQ(ClockText(3723), L"1:02:03");
    EXPECT_EQ(ClockText(-1), L"0:00");
    EXPECT_EQ(ClockText(1e300), L"99:59:59");
}

TEST(NumberText, Bytes) {
    EXPECT_EQ(BytesText(0), L"0 bytes");
    EXPECT_EQ(BytesText(999), L"999 bytes");
    EXPECT_EQ(BytesText(1000), L"1.00 kB");
    EXPECT_EQ(BytesText(45600000), L"45.6 MB");
    EXPECT_EQ(BytesText(999600000), L"1.00 GB");
    EXPECT_EQ(BytesText(123456789012), L"123 GB");
    EXPECT_EQ(BytesText(UINT64_MAX), L"18446744 TB");
}

TEST(NumberText, Numbers) {
    EXPECT_EQ(NumberText(25), L"25");
    EXPECT_EQ(NumberText(29.97), L"29.97");
    EXPECT_EQ(NumberText(23.976023976), L"23.976");
    EXPECT_EQ(NumberText(0), L"0");
    EXPECT_EQ(NumberText(1200), L"1200");
}

#ifdef _WIN32
TEST(NumberText, ALocaleOfTheProcessChangesNothing) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany"), nullptr);
    EXPECT_EQ(std::string(std::localeconv()->decimal_point), ",");
    EXPECT_EQ(NumberText(29.97), L"29.97");
    EXPECT_EQ(BytesText(1234567), L"1.23 MB");
    std::setlocale(LC_ALL, before.c_str());
}
#endif

}  // namespace
}  // namespace tavo
