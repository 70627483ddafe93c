// Subtypes and the formats behind them.
#include "filter/type_picture.h"

#include <climits>

#include "picture/subtype.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/known_format.h"

using namespace tavo_test;

namespace {

TEST(TypePictureTest, EveryFormatIsKnownUnderItsSubtypeAndSetting) {
    for (const PixelFormat& format : AllFormats()) {
        EXPECT_EQ(tavo::FormatOfSubtype(SubtypeOf(format)), KnownFormat(format)) << format.name;
        if (format.setting > 0) {
            EXPECT_EQ(SubtypeOfSetting(format.setting), SubtypeOf(format));
        }
    }
    EXPECT_EQ(tavo::FormatOfSubtype(MEDIASUBTYPE_RGB32), nullptr);
    EXPECT_EQ(tavo::FormatOfSubtype(GUID_NULL), nullptr);
    for (const int code : {-1, 0, 11, 12, INT_MAX, INT_MIN})
        EXPECT_EQ(SubtypeOfSetting(code), GUID_NULL);
}

}  // namespace
