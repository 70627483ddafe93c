// Which row of the kernel table a frame needs, by what this version has and lacks; and frames of
// unchanged size, which are copied.
#include <climits>

#include "tests/filter/support/expected_pixels.h"
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/this_version.h"

using namespace tavo_test;

namespace {

class KernelChoiceTest : public FilterTest {};

struct Rows {
    const char* format;
    int copy, vertical, horizontal720, horizontal640, horizontal, both;
};

constexpr Rows kRows[] = {
    {"YV12", 0, 8, 24, 25, 26, 32},   {"IYUV", 0, 8, 24, 25, 26, 32},
    {"I420", 0, 8, 24, 25, 26, 32},   {"YVU9", 0, 8, 24, 25, 26, 32},
    {"RGB24", 2, 7, 21, 22, 23, 31},  {"RGB555", 2, 6, 18, 19, 20, 30},
    {"RGB565", 2, 5, 15, 16, 17, 29}, {"YUY2", 1, 4, 12, 13, 14, 28},
    {"YVYU", 1, 4, 12, 13, 14, 28},   {"YUYV", 1, 4, 12, 13, 14, 28},
    {"UYVY", 1, 3, 9, 10, 11, 27},
};

struct Change {
    Size from;
    Size to;
    int Rows::*row;
};

constexpr Change kChanges[] = {
    {{64, 48}, {64, 48}, &Rows::horizontal},  // with an explicit method; copied otherwise
    {{64, 48}, {64, 24}, &Rows::vertical},
    {{64, 48}, {64, 96}, &Rows::vertical},
    {{64, 48}, {32, 48}, &Rows::horizontal},
    {{64, 48}, {96, 48}, &Rows::horizontal},
    {{720, 16}, {480, 16}, &Rows::horizontal720},
    {{640, 16}, {480, 16}, &Rows::horizontal640},
    {{640, 16}, {482, 16}, &Rows::horizontal},
    {{722, 16}, {480, 16}, &Rows::horizontal},
    {{640, 16}, {480, 12}, &Rows::both},
    {{720, 16}, {480, 32}, &Rows::both},
    {{64, 48}, {32, 24}, &Rows::both},
};

bool IsAutomatic(int method) { return method < 5; }

TEST_F(KernelChoiceTest, AFrameSucceedsExactlyWhereItsRowHasKernels) {
    for (const Rows& rows : kRows) {
        const PixelFormat& format = Format(rows.format);
        for (const Change& change : kChanges) {
            FilterRig rig({.keepBytes = false});
            rig.settings->SetOutputSize(change.to.width, change.to.height);
            ASSERT_EQ(rig.Connect(TypeOf(format, change.from.width, change.from.height)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            const bool sameSize =
                change.from.width == change.to.width && change.from.height == change.to.height;
            for (const int method : {0, 1, 2, 5, 6, 7, 10, 11, 12}) {
                rig.settings->SetScaleMethod(method);
                rig.sink->pin().ClearSamples();
                const int row = sameSize && IsAutomatic(method) ? rows.copy : rows.*change.row;
                EXPECT_EQ(rig.Deliver(SampleSpec{}), HasKernels(row) ? S_OK : E_FAIL)
                    << format.name << " " << change.from.width << "x" << change.from.height
                    << " to " << change.to.width << "x" << change.to.height << ", method "
                    << method;
                EXPECT_EQ(rig.samples().size(), HasKernels(row) ? 1u : 0u);
            }
        }
    }
}

TEST_F(KernelChoiceTest, SameSizeWithAnAutoMethodCopiesEveryFormat) {
    constexpr Size kSizes[] = {{64, 48}, {352, 288}, {22, 6}, {6, 22}};
    for (const PixelFormat& format : AllFormats()) {
        for (const Size& size : kSizes) {
            FilterRig rig;
            ASSERT_EQ(rig.Connect(TypeOf(format, size.width, size.height)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            for (const int method : {0, 1, 2, 3, 4, 8, 9, 13, -1, INT_MAX, INT_MIN}) {
                rig.settings->SetScaleMethod(method);
                rig.sink->pin().ClearSamples();
                const std::vector<BYTE> frame =
                    RandomFrame(format, size.width, size.height, static_cast<uint32_t>(method));
                ASSERT_EQ(rig.Deliver(frame), S_OK);
                EXPECT_TRUE(Matches(CopiedFrame(format, frame, size), rig.samples().at(0).bytes))
                    << format.name << " " << size.width << ", method " << method;
            }
        }
    }
}

TEST_F(KernelChoiceTest, ANegativeOutputHeightTurnsACopyWhereTheFormatKeepsTheSign) {
    for (const PixelFormat& format : AllFormats()) {
        for (const int method : {0, 1, 2}) {
            FilterRig rig;
            rig.settings->SetScaleMethod(method);
            rig.settings->SetOutputSize(38, -22);
            ASSERT_EQ(rig.Connect(TypeOf(format, 38, 22)), S_OK);
            EXPECT_EQ(rig.sink->pin().connectionType().Bitmap()->biHeight, -22);
            ASSERT_EQ(rig.Start(), S_OK);
            const std::vector<BYTE> frame = RandomFrame(format, 38, 22);
            ASSERT_EQ(rig.Deliver(frame), S_OK);
            EXPECT_TRUE(Matches(CopiedFrame(format, frame, {38, 22}, format.keepsHeightSign),
                                rig.samples().at(0).bytes))
                << format.name << ", method " << method;
        }
    }
}

TEST_F(KernelChoiceTest, ATopDownSourceCountsAsSmallerThanAnyOutput) {
    for (const Rows& rows : kRows) {
        const PixelFormat& format = Format(rows.format);
        FilterRig rig;
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, -48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(RandomFrame(format, 64, 48)),
                  HasKernels(rows.vertical) ? S_OK : E_FAIL)
            << format.name << ": the same size is no copy, the height counts as changed";
    }
}

TEST_F(KernelChoiceTest, SetOutputSizeWaitsForTheNextOutputType) {
    const PixelFormat& format = Format("YV12");
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const std::vector<BYTE> frame = RandomFrame(format, 64, 48);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    rig.settings->SetOutputSize(1000, 1000);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    EXPECT_EQ(rig.samples().at(1).actualLength, 64 * 48 * 3 / 2);
    EXPECT_TRUE(Matches(CopiedFrame(format, frame, {64, 48}), rig.samples().at(1).bytes));
    // Also across a stop.
    ASSERT_EQ(rig.Stop(), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    EXPECT_EQ(rig.samples().at(2).actualLength, 64 * 48 * 3 / 2);
    ASSERT_EQ(rig.Stop(), S_OK);
    rig.DisconnectOutput();
    rig.settings->SetOutputSize(32, 24);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    EXPECT_EQ(rig.samples().at(3).actualLength, 32 * 24 * 3 / 2);
}

TEST_F(KernelChoiceTest, AnotherSourceUnderAConnectedOutputIsScaledToTheOutputsSize) {
    const PixelFormat& format = Format("YV12");
    FilterRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    rig.DisconnectInput();
    ASSERT_EQ(rig.ConnectInput(TypeOf(format, 100, 80)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const std::vector<BYTE> frame = RandomFrame(format, 100, 80);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    EXPECT_TRUE(
        Matches(NearestPlanar(format, frame, {100, 80}, {64, 48}), rig.samples().at(0).bytes));
}

TEST_F(KernelChoiceTest, ADeeperTypeIsScaledLikeAnyOther) {
    const PixelFormat& format = Format("YV12");
    VideoSpec spec = SpecOf(format, 64, 48);
    spec.bitCount = 16;
    spec.sizeImage = 64 * 48 * 2;
    FilterRig rig;
    rig.settings->SetOutputSize(40, 36);
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    ASSERT_EQ(rig.Connect(MakeVideoType(spec)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const std::vector<BYTE> frame = RandomBytes(64 * 48 * 2, 3);
    ASSERT_EQ(rig.Deliver(frame), S_OK);
    EXPECT_EQ(rig.samples().at(0).actualLength, 40 * 36 * 2);
    EXPECT_TRUE(
        Matches(NearestPlanar(format, frame, {64, 48}, {40, 36}), rig.samples().at(0).bytes));
}

}  // namespace
