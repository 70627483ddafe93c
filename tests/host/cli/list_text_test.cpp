// What --list prints.

#include "host/cli/list_text.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

TEST(ListText, Settings) {
    EXPECT_EQ(SettingsListText(),
              L"Formats, for --format\n"
              L"  0   AUTO                    all of these\n"
              L"  1   YV12                    FourCC YV12, 12 bits\n"
              L"  2   IYUV                    FourCC IYUV, 12 bits\n"
              L"  3   YVU9                    FourCC YVU9, 9 bits\n"
              L"  4   YUY2                    FourCC YUY2, 16 bits\n"
              L"  5   YUYV                    FourCC YUYV, 16 bits\n"
              L"  6   YVYU                    FourCC YVYU, 16 bits\n"
              L"  7   UYVY                    FourCC UYVY, 16 bits\n"
              L"  8   RGB24                   no FourCC, 24 bits\n"
              L"  9   RGB555                  no FourCC, 16 bits\n"
              L"  10  RGB565                  no FourCC, 16 bits\n"
              L"  2   I420                    FourCC I420, 12 bits; the setting is that of IYUV\n"
              L"\n"
              L"Methods, for --method\n"
              L"  0   AUTO\n"
              L"  1   Nearest Neighbor AUTO   nearest-auto\n"
              L"  2   Bi-Linear AUTO          bilinear-auto\n"
              L"  5   Nearest Neighbor        nearest\n"
              L"  6   Nearest Neighbor MMX    nearest-mmx\n"
              L"  7   Nearest Neighbor SSE    nearest-sse\n"
              L"  10  Bi-Linear               bilinear\n"
              L"  11  Bi-Linear MMX           bilinear-mmx\n"
              L"  12  Bi-Linear SSE           bilinear-sse\n"
              L"\n"
              L"Types of format blocks, for --type\n"
              L"  0   AUTO                    either; RGB only in a VIDEOINFOHEADER\n"
              L"  1   MPEG1                   VIDEOINFOHEADER\n"
              L"  2   MPEG2                   VIDEOINFOHEADER2\n"
              L"\n"
              L"These options take the numbers and the names, in any case.\n");
}

TEST(ListText, Names) {
    EXPECT_EQ(NameListText(L"Filters", {L"One", L"Two"}), L"\nFilters\n  One\n  Two\n");
    EXPECT_EQ(NameListText(L"Filters", {}), L"\nFilters\n  none\n");
}

}  // namespace
}  // namespace tavo
