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
        }
    }
    EXPECT_EQ(SettingText(MethodNames(), 3), L"");
}

}  // namespace
}  // namespace tavo
