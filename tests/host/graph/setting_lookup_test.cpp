// Names and codes of the settings.

#include "host/graph/setting_lookup.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

TEST(SettingNames, CodesAndTexts) {
    EXPECT_EQ(MethodNames().size(), 9u);
    EXPECT_EQ(FormatNames().size(), 11u);
    EXPECT_EQ(TypeNames().size(), 3u);
    for (const auto names : {MethodNames(), FormatNames(), TypeNames()}) {
        for (const SettingName& entry : names) {
            EXPECT_EQ(FindSetting(names, entry.name), entry.code);
            EXPECT_EQ(SettingText(names, entry.code), entry.name);
            EXPECT_EQ(FindSetting(names, std::to_wstring(entry.code)), entry.code);
            const std::wstring_view other = ShortName(names, entry.code);
            EXPECT_TRUE(other.empty() || FindSetting(names, other) == entry.code);
        }
    }
    EXPECT_EQ(SettingText(MethodNames(), 3), L"");
    EXPECT_EQ(ShortName(MethodNames(), 10), L"bilinear");
    EXPECT_EQ(ShortName(TypeNames(), 1), L"");
    for (const wchar_t* bad : {L"3", L"05", L"+5", L" 5", L"5 ", L"-1", L"13"}) {
        EXPECT_EQ(FindSetting(MethodNames(), bad), std::nullopt) << bad;
    }
}

}  // namespace
}  // namespace tavo
