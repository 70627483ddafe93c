// The table of formats, and the sizes of frames.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>

#include "picture/picture.h"
#include "tests/picture/support/known_format.h"

using namespace tavo;
using tavo_test::AllFormats;
using tavo_test::KnownFormat;
using tavo_test::PixelFormat;

namespace {

TEST(PictureFormatTest, EveryFormatIsKnownByItsFourCcOrItsSetting) {
    for (const PixelFormat& format : AllFormats()) {
        const PictureFormat* const found = KnownFormat(format);
        ASSERT_NE(found, nullptr) << format.name;
        EXPECT_EQ(found->compression, format.compression);
        EXPECT_EQ(found->bitsPerPixel, format.bits);
        EXPECT_EQ(found->chromaShift, format.chromaShift);
        EXPECT_EQ(found->keepsHeightSign, format.keepsHeightSign);
        if (format.setting > 0) {
            EXPECT_EQ(FormatOfSetting(format.setting), found);
        }
    }
    EXPECT_EQ(AllPictureFormats().size(), AllFormats().size());
    EXPECT_EQ(FormatOfFourCc(FourCc('A', 'B', 'C', 'D')), nullptr);
    for (const uint32_t noCode : {kCompressionRgb, kCompressionBitFields})
        EXPECT_EQ(FormatOfFourCc(noCode), nullptr);
    for (const int code : {-1, 0, 11, 12, INT_MAX, INT_MIN})
        EXPECT_EQ(FormatOfSetting(code), nullptr);
}

TEST(PictureFormatTest, FramesHaveTheSizesOfTheRule) {
    for (const PixelFormat& format : AllFormats()) {
        const PictureFormat* const known = KnownFormat(format);
        for (int width = 1; width < 70; width += 3) {
            for (const int height : {1, 2, 5, -7, 48}) {
                for (const int bits : {format.bits, 24, 32}) {
                    if (bits < format.bits) continue;
                    const Picture picture = {known, width, height, bits};
                    EXPECT_EQ(FrameBytes(picture),
                              tavo_test::RuleFrameBytes(format, width, height, bits));
                    EXPECT_EQ(KernelBytes(picture), tavo_test::PictureBytes(format, width, height));
                    EXPECT_LE(KernelBytes(picture), FrameBytes(picture));
                }
            }
        }
    }
}

TEST(PictureFormatTest, ExtremePicturesAreUnusableAndOverflowNothing) {
    const int extremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 46341, 65536, INT_MAX - 1, INT_MAX};
    for (const PixelFormat& format : AllFormats()) {
        const PictureFormat* const known = KnownFormat(format);
        for (const int width : extremes) {
            for (const int height : extremes) {
                for (const int bits : {0, format.bits - 1, format.bits, 65535}) {
                    const Picture picture = {known, width, height, bits};
                    const double pixels = static_cast<double>(width) * height;
                    const double bytes = std::abs(pixels) * bits / 8;
                    const bool mayBe =
                        width > 0 && height != 0 && bits >= format.bits && bytes < 2147483648.0;
                    if (IsUsablePicture(picture)) {
                        EXPECT_TRUE(mayBe) << width << "x" << height << "x" << bits;
                        EXPECT_LT(FrameBytes(picture), INT_MAX);
                    }
                }
            }
        }
    }
}

}  // namespace
