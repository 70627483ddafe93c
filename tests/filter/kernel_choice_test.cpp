// There is a kernel for every format and change of size; frames of unchanged size are copied.
#include <climits>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class KernelChoiceTest : public FilterTest {};

struct Change {
    Size from;
    Size to;
};

constexpr Change kChanges[] = {
    {{64, 48}, {64, 48}},  // copied, but with an explicit method
    {{64, 48}, {64, 24}},   {{64, 48}, {64, 96}},   {{64, 48}, {32, 48}},   {{64, 48}, {96, 48}},
    {{720, 16}, {480, 16}}, {{640, 16}, {480, 16}}, {{640, 16}, {482, 16}}, {{722, 16}, {480, 16}},
    {{640, 16}, {480, 12}}, {{720, 16}, {480, 32}}, {{64, 48}, {32, 24}},
};

TEST_F(KernelChoiceTest, EveryFormatAndChangeOfSizeHasKernels) {
    for (const PixelFormat& format : AllFormats()) {
        for (const Change& change : kChanges) {
            FilterRig rig({.keepBytes = false});
            rig.settings->SetOutputSize(change.to.width, change.to.height);
            ASSERT_EQ(rig.Connect(TypeOf(format, change.from.width, change.from.height)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            for (const int method : {0, 1, 2, 5, 6, 7, 10, 11, 12}) {
                rig.settings->SetScaleMethod(method);
                rig.sink->pin().ClearSamples();
                EXPECT_EQ(rig.Deliver(SampleSpec{}), S_OK)
                    << format.name << " " << change.from.width << "x" << change.from.height
                    << " to " << change.to.width << "x" << change.to.height << ", method "
                    << method;
                EXPECT_EQ(rig.samples().size(), 1u);
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
    for (const PixelFormat& format : AllFormats()) {
        FilterRig rig;
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, -48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(RandomFrame(format, 64, 48)), S_OK)
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
