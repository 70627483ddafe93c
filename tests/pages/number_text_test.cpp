// Numbers as text, in the locale of C and in a German one.
#include "pages/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

using namespace tavo;

namespace {

class NumberText : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_ALL, GetParam()), nullptr); }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }

    static std::string Format(double value, int decimals) {
        char text[kNumberCapacity];
        FormatNumber(value, decimals, text);
        return text;
    }
};

TEST_P(NumberText, Format) {
    EXPECT_EQ(Format(0.0, 2), "0.00");
    EXPECT_EQ(Format(29.97, 2), "29.97");
    EXPECT_EQ(Format(-12.3456, 3), "-12.346");
    EXPECT_EQ(Format(0.0004, 3), "0.000");
    EXPECT_EQ(Format(1e300, 2).size(), 304u);
    EXPECT_EQ(Format(1e300, 2).substr(301), ".00");
    EXPECT_EQ(Format(-1.7976931348623157e308, 3).size(), 314u);
    EXPECT_EQ(Format(HUGE_VAL, 2).find('.'), std::string::npos);
    EXPECT_EQ(Format(std::nan(""), 3).find('.'), std::string::npos);
}

struct Read {
    const char* text;
    double value;
    size_t length;
};

TEST_P(NumberText, Parse) {
    for (const Read& r : {Read{"29.97", 29.97, 5}, {"15fps", 15.0, 2},
                          {"abc", 0.0, 0},         {"", 0.0, 0},
                          {"-3", -3.0, 2},         {"+4.5", 4.5, 4},
                          {" \t12.5 x", 12.5, 6},  {"1e2", 100.0, 3},
                          {"1e-2", 0.01, 4},       {"1E+2x", 100.0, 4},
                          {"1e", 1.0, 1},          {"1e+", 1.0, 1},
                          {".5", 0.5, 2},          {"5.", 5.0, 2},
                          {".", 0.0, 0},           {"-", 0.0, 0},
                          {"1.2.3", 1.2, 3},       {"24,9", 24.0, 2},
                          {"0x10", 0.0, 1},        {"inf", 0.0, 0},
                          {"nan", 0.0, 0},         {"0000000000000000000751", 751.0, 22}}) {
        const ReadNumber number = ParseNumber(r.text);
        EXPECT_EQ(number.value, r.value) << r.text;
        EXPECT_EQ(number.length, r.length) << r.text;
    }
    EXPECT_TRUE(std::signbit(ParseNumber("-0").value));
    EXPECT_EQ(ParseNumber("1e999").value, HUGE_VAL);
    EXPECT_EQ(ParseNumber("1e-999999999999").value, 0.0);
}

// What is shown is read again as the double that is nearest to it.
TEST_P(NumberText, RoundTrip) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const auto hundredths = static_cast<int>(random() % 100'000'000);
        const double value = hundredths / 100.0;
        const std::string text = Format(value, 2);
        EXPECT_EQ(ParseNumber(text.c_str()).value, value) << text;
        EXPECT_EQ(ParseNumber(text.c_str()).length, text.size());
    }
}

TEST_P(NumberText, WholeNumbers) {
    for (const char* text :
         {"0", "-0", "+5", " 640 ", "2147483647", "-2147483648", "0000000000001"})
        EXPECT_TRUE(IsWholeNumber(text)) << text;
    for (const char* text : {"", " ", "-", "x", "12x", "1.0", "1,0", "1 2", "2147483648",
                             "-2147483649", "99999999999999999999999999", "--1"})
        EXPECT_FALSE(IsWholeNumber(text)) << text;
}

INSTANTIATE_TEST_SUITE_P(Locales, NumberText, testing::Values("C", "German_Germany.1252"),
                         [](const auto& info) { return std::string(info.param).substr(0, 6); });

}  // namespace
