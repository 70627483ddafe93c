// The codes of the names on the command line are those of the filter's interface.

#include <gtest/gtest.h>

#include "host/graph/setting_lookup.h"
#include "settings/vantrel_settings.h"

namespace tavo {
namespace {

TEST(SettingCodes, Methods) {
    EXPECT_EQ(FindSetting(MethodNames(), L"AUTO"), VantrelMethodAuto);
    EXPECT_EQ(FindSetting(MethodNames(), L"Nearest Neighbor AUTO"), VantrelMethodNearestAuto);
    EXPECT_EQ(FindSetting(MethodNames(), L"Bi-Linear AUTO"), VantrelMethodBilinearAuto);
    EXPECT_EQ(FindSetting(MethodNames(), L"Nearest Neighbor"), VantrelMethodNearest);
    EXPECT_EQ(FindSetting(MethodNames(), L"Nearest Neighbor MMX"), VantrelMethodNearestMmx);
    EXPECT_EQ(FindSetting(MethodNames(), L"Nearest Neighbor SSE"), VantrelMethodNearestSse);
    EXPECT_EQ(FindSetting(MethodNames(), L"Bi-Linear"), VantrelMethodBilinear);
    EXPECT_EQ(FindSetting(MethodNames(), L"Bi-Linear MMX"), VantrelMethodBilinearMmx);
    EXPECT_EQ(FindSetting(MethodNames(), L"Bi-Linear SSE"), VantrelMethodBilinearSse);
}

TEST(SettingCodes, Formats) {
    EXPECT_EQ(FindSetting(FormatNames(), L"AUTO"), VantrelFormatAuto);
    EXPECT_EQ(FindSetting(FormatNames(), L"YV12"), VantrelFormatYv12);
    EXPECT_EQ(FindSetting(FormatNames(), L"IYUV"), VantrelFormatIyuv);
    EXPECT_EQ(FindSetting(FormatNames(), L"YVU9"), VantrelFormatYvu9);
    EXPECT_EQ(FindSetting(FormatNames(), L"YUY2"), VantrelFormatYuy2);
    EXPECT_EQ(FindSetting(FormatNames(), L"YUYV"), VantrelFormatYuyv);
    EXPECT_EQ(FindSetting(FormatNames(), L"YVYU"), VantrelFormatYvyu);
    EXPECT_EQ(FindSetting(FormatNames(), L"UYVY"), VantrelFormatUyvy);
    EXPECT_EQ(FindSetting(FormatNames(), L"RGB24"), VantrelFormatRgb24);
    EXPECT_EQ(FindSetting(FormatNames(), L"RGB555"), VantrelFormatRgb555);
    EXPECT_EQ(FindSetting(FormatNames(), L"RGB565"), VantrelFormatRgb565);
}

TEST(SettingCodes, Types) {
    EXPECT_EQ(FindSetting(TypeNames(), L"AUTO"), VantrelTypeAuto);
    EXPECT_EQ(FindSetting(TypeNames(), L"MPEG1"), VantrelTypeMpeg1);
    EXPECT_EQ(FindSetting(TypeNames(), L"MPEG2"), VantrelTypeMpeg2);
}

}  // namespace
}  // namespace tavo
