// RGB555 and RGB565: figures worked by hand.

#include "resample/rgb16/rgb16_kernels.h"
#include "tests/kernel_check/figures.h"

namespace tavo::test {
namespace {

constexpr NamedKernel kBoth555[] = {NAMED(ScaleBilinear_RGB555_Portable),
                                    NAMED(ScaleBilinear_RGB555_MMX),
                                    NAMED(ScaleBilinear_RGB555_SSE)};
constexpr NamedKernel kBoth565[] = {NAMED(ScaleBilinear_RGB565_Portable),
                                    NAMED(ScaleBilinear_RGB565_MMX),
                                    NAMED(ScaleBilinear_RGB565_SSE)};
constexpr NamedKernel kH555[] = {NAMED(ScaleBilinearH_RGB555_Portable),
                                 NAMED(ScaleBilinearH_RGB555_MMX),
                                 NAMED(ScaleBilinearH_RGB555_SSE)};
constexpr NamedKernel kH565[] = {NAMED(ScaleBilinearH_RGB565_Portable),
                                 NAMED(ScaleBilinearH_RGB565_MMX),
                                 NAMED(ScaleBilinearH_RGB565_SSE)};

Picture WhiteWithBit15(int width, int height) {
    return {Format::Rgb555, width, height,
            Bytes(static_cast<size_t>(StrideOf(Format::Rgb555, width) * height), 0xff)};
}

// True when every pixel has the value.
bool AllAre(const Picture& picture, int word) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.Word(y, x) != word) return false;
        }
    }
    return true;
}

// Both axes

TEST_P(Figures, Rgb555BilinearNeverSetsBit15) {
    const Picture source = WhiteWithBit15(7, 5);
    for (const NamedKernel& k : kBoth555) {
        for (const Size& size : {Size{20, 12}, Size{7, 5}, Size{3, 2}}) {
            EXPECT_TRUE(AllAre(Scale(k.kernel, source, size), 0x7fff)) << k.name;
        }
    }
}

TEST_P(Figures, Rgb555NearestCopiesBit15) {
    const Picture source = WhiteWithBit15(7, 5);
    for (const NamedKernel& k :
         {NAMED(ScaleNearest_RGB16_Portable), NAMED(ScaleNearest_RGB16_MMX)}) {
        EXPECT_TRUE(AllAre(Scale(k.kernel, source, {20, 12}), 0xffff)) << k.name;
    }
}

// A picture of which only the bits of one field are set, at random, stays of that field.
void ExpectFieldStaysAlone(const NamedKernel& k, Format format, int mask) {
    Picture source = RandomPicture(format, 23, 9, static_cast<uint64_t>(mask));
    for (size_t i = 0; i < source.bytes.size(); i += 2) {
        source.bytes[i] &= static_cast<uint8_t>(mask);
        source.bytes[i + 1] &= static_cast<uint8_t>(mask >> 8);
    }
    for (const Size& size : {Size{40, 20}, Size{11, 4}}) {
        const Picture out = Scale(k.kernel, source, size);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                ASSERT_EQ(out.Word(y, x) & ~mask, 0) << k.name << " mask " << mask;
            }
        }
    }
}

TEST_P(Figures, Rgb16PureColoursKeepTheOtherFieldsAtZero) {
    for (const NamedKernel& k : kBoth555) {
        for (int mask : {0x001f, 0x03e0, 0x7c00}) ExpectFieldStaysAlone(k, Format::Rgb555, mask);
    }
    for (const NamedKernel& k : kBoth565) {
        for (int mask : {0x001f, 0x07e0, 0xf800}) ExpectFieldStaysAlone(k, Format::Rgb565, mask);
    }
}

TEST_P(Figures, Rgb565GreenIsBlendedOnItsSixBits) {
    // Green 1 and 4 of 64: halfway lies 2, which five bits could not tell from 3.
    const Picture source = MakePicture(Format::Rgb565, 2, {{0x20, 0, 0x80, 0}, {0x20, 0, 0x80, 0}});
    for (const NamedKernel& k : kBoth565) {
        const Picture out =
            ScaleWith(k.kernel, source, {2, 2}, {{0, 1}, {128, 0}}, {{0, 1}, {0, 0}});
        EXPECT_EQ(out.Word(0, 0), 2 << 5) << k.name;
    }
}

TEST_P(Figures, Rgb16LastRowBlendsBackToTheUpperLeftPixel) {
    // Blue 4 and 20: right = 20 + (-16 * 64 >> 8) = 16; 4 + (12 * 128 >> 8) = 10.
    for (const NamedKernel& k : kBoth555) {
        const Picture out = ScaleWith(k.kernel, MakeWords(Format::Rgb555, {4, 20}), {2, 1},
                                      {{0, 1}, {128, 0}}, {{0}, {64}});
        EXPECT_EQ(out.Word(0, 0), 10) << k.name;
    }
    for (const NamedKernel& k : kBoth565) {
        const Picture out = ScaleWith(k.kernel, MakeWords(Format::Rgb565, {4, 20}), {2, 1},
                                      {{0, 1}, {128, 0}}, {{0}, {64}});
        EXPECT_EQ(out.Word(0, 0), 10) << k.name;
    }
}

// Width only

TEST_P(Figures, Rgb555BilinearOfWidthClearsBit15) {
    for (const NamedKernel& k : kH555) {
        EXPECT_TRUE(AllAre(Scale(k.kernel, WhiteWithBit15(9, 2), {22, 2}), 0x7fff)) << k.name;
        EXPECT_TRUE(AllAre(Scale(k.kernel, WhiteWithBit15(9, 2), {4, 2}), 0x7fff)) << k.name;
    }
    for (const NamedKernel& k : {NAMED(ScaleBilinearH640To480_RGB555_Portable),
                                 NAMED(ScaleBilinearH640To480_RGB555_MMX)}) {
        EXPECT_TRUE(AllAre(Scale(k.kernel, WhiteWithBit15(640, 2), {480, 2}), 0x7fff)) << k.name;
    }
    for (const NamedKernel& k :
         {NAMED(ScaleBilinearH720To480_RGB555_Portable), NAMED(ScaleBilinearH720To480_RGB555_MMX),
          NAMED(ScaleBilinearH720To480_RGB555_SSE)}) {
        EXPECT_TRUE(AllAre(Scale(k.kernel, WhiteWithBit15(720, 2), {480, 2}), 0x7fff)) << k.name;
    }
}

TEST_P(Figures, Rgb565BlackAndWhiteAtHalfWeightGive7bef) {
    const Picture source = MakeWords(Format::Rgb565, {0x0000, 0xffff});
    for (const NamedKernel& k : kH565) {
        const Picture out = ScaleRowWith(k.kernel, source, {{0, 1}, {128, 128}});
        EXPECT_EQ(out.Word(0, 0), 0x7bef) << k.name;
        EXPECT_EQ(out.Word(0, 1), 0xffff) << k.name;
    }
}

TEST_P(Figures, Rgb16ThreeToTwoHalvesOfBlue1And2AreTruncatedOrRoundedUp) {
    const auto half = [](ScaleKernel kernel, Format format) {
        return Scale(kernel, MakeWords(format, {0, 1, 2}), {2, 1}).Word(0, 1);
    };
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB555_Portable, Format::Rgb555), 1);
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB555_MMX, Format::Rgb555), 1);
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB555_SSE, Format::Rgb555), 2);
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB565_Portable, Format::Rgb565), 1);
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB565_MMX, Format::Rgb565), 1);
    EXPECT_EQ(half(ScaleBilinearH720To480_RGB565_SSE, Format::Rgb565), 2);
}

TEST_P(Figures, Rgb16ThreeToTwoBlendsTheRowEndToo) {
    const Picture source = MakeWords(Format::Rgb565, {1, 2, 3, 9, 10, 20});
    for (const NamedKernel& k : {NAMED(ScaleBilinearH720To480_RGB565_Portable),
                                 NAMED(ScaleBilinearH720To480_RGB565_MMX)}) {
        const Picture out = Scale(k.kernel, source, {4, 1});
        EXPECT_EQ(out.Word(0, 2), 9) << k.name;
        EXPECT_EQ(out.Word(0, 3), 15) << k.name;
    }
}

TEST_P(Figures, Rgb16FourToThreeNearestKeepsTheFirstThreeWords) {
    const Picture source = RandomPicture(Format::Rgb555, 640, 2, 11);
    for (const NamedKernel& k :
         {NAMED(ScaleNearestH640To480_RGB16_Portable), NAMED(ScaleNearestH640To480_RGB16_MMX)}) {
        const Picture out = Scale(k.kernel, source, {480, 2});
        for (int y : {0, 1}) {
            for (int x = 0; x < 480; ++x) {
                ASSERT_EQ(out.Word(y, x), source.Word(y, x / 3 * 4 + x % 3)) << k.name << ' ' << x;
            }
        }
    }
}

TEST_P(Figures, Rgb16FourToThreeBlendsInThirds) {
    // 10 + (10 * 85 >> 8) = 13 and 20 + (10 * 170 >> 8) = 26, up to the end of the row.
    const Picture source = MakeWords(Format::Rgb565, {5, 10, 20, 30});
    for (const NamedKernel& k : {NAMED(ScaleBilinearH640To480_RGB565_Portable),
                                 NAMED(ScaleBilinearH640To480_RGB565_MMX)}) {
        const Picture out = Scale(k.kernel, source, {3, 1});
        EXPECT_EQ(out.Word(0, 0), 5) << k.name;
        EXPECT_EQ(out.Word(0, 1), 13) << k.name;
        EXPECT_EQ(out.Word(0, 2), 26) << k.name;
    }
}

}  // namespace
}  // namespace tavo::test
