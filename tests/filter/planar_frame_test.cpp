// Scaled frames against the formulas: all methods, luma and both chroma planes of the four planar
// subtypes, and the pixels of the other formats.
#include <climits>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class PlanarFrameTest : public FilterTest {};

struct Scaling {
    Size from;
    Size to;
};

// Both axes change in each: the row of the kernel table that planar formats have today.
constexpr Scaling kScalings[] = {
    {{64, 48}, {32, 24}},     {{64, 48}, {128, 96}},   {{352, 288}, {176, 144}},
    {{176, 144}, {200, 150}}, {{100, 80}, {333, 211}}, {{37, 29}, {53, 41}},
    {{640, 20}, {480, 16}},   {{720, 20}, {480, 18}},  {{16, 16}, {17, 15}},
    {{300, 200}, {31, 17}},   {{64, 48}, {96, 24}},    {{64, 48}, {16, 96}},
};

// A rig that stays connected while the method changes.
class ScalingRig : public FilterRig {
  public:
    ScalingRig(const PixelFormat& format, const Scaling& scaling)
        : source_(RandomFrame(format, scaling.from.width, scaling.from.height, 7)) {
        settings->SetOutputSize(scaling.to.width, scaling.to.height);
        EXPECT_EQ(Connect(TypeOf(format, scaling.from.width, scaling.from.height)), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
    const std::vector<BYTE>& SourceBytes() const { return source_; }
    std::vector<BYTE> Scaled(int method) {
        settings->SetScaleMethod(method);
        sink->pin().ClearSamples();
        EXPECT_EQ(Deliver(source_), S_OK);
        const auto received = samples();
        EXPECT_EQ(received.size(), 1u);
        return received.empty() ? std::vector<BYTE>() : received[0].bytes;
    }

  private:
    std::vector<BYTE> source_;
};

template <typename Check>
void ForEachScaling(Check check) {
    for (const PixelFormat& format : PlanarFormats()) {
        for (const Scaling& scaling : kScalings) {
            SCOPED_TRACE(testing::Message()
                         << format.name << " " << scaling.from.width << "x" << scaling.from.height
                         << " to " << scaling.to.width << "x" << scaling.to.height);
            ScalingRig rig(format, scaling);
            check(format, scaling, rig);
        }
    }
}

TEST_F(PlanarFrameTest, NearestNeighbourTakesTheMappedSampleInEveryPlane) {
    ForEachScaling([](const PixelFormat& format, const Scaling& scaling, ScalingRig& rig) {
        const Expected want = NearestPlanar(format, rig.SourceBytes(), scaling.from, scaling.to);
        for (const int method : {VantrelMethodNearest, VantrelMethodNearestMmx,
                                 VantrelMethodNearestSse, VantrelMethodNearestAuto}) {
            EXPECT_TRUE(Matches(want, rig.Scaled(method))) << "method " << method;
        }
    });
}

TEST_F(PlanarFrameTest, BilinearFollowsTheFormula) {
    ForEachScaling([](const PixelFormat& format, const Scaling& scaling, ScalingRig& rig) {
        const Expected want = BilinearPlanar(format, rig.SourceBytes(), scaling.from, scaling.to);
        for (const int method : {VantrelMethodBilinear, VantrelMethodBilinearMmx,
                                 VantrelMethodBilinearSse, VantrelMethodBilinearAuto}) {
            EXPECT_TRUE(Matches(want, rig.Scaled(method))) << "method " << method;
        }
    });
}

TEST_F(PlanarFrameTest, EveryMemberOfAMethodGivesTheSameBytesUpToTheEdges) {
    ForEachScaling([](const PixelFormat& format, const Scaling& scaling, ScalingRig& rig) {
        // Only what the planes cover: the rest of a buffer is nobody's.
        const Expected everywhere = NearestPlanar(
            format, std::vector<BYTE>(rig.SourceBytes().size()), scaling.from, scaling.to);
        Expected want(static_cast<int64_t>(everywhere.bytes.size()));
        const std::vector<BYTE> portable = rig.Scaled(VantrelMethodBilinear);
        for (size_t i = 0; i < everywhere.bytes.size() && i < portable.size(); ++i)
            if (everywhere.settled[i]) want.Set(static_cast<int64_t>(i), portable[i]);
        EXPECT_TRUE(Matches(want, rig.Scaled(VantrelMethodBilinearMmx)));
        EXPECT_TRUE(Matches(want, rig.Scaled(VantrelMethodBilinearSse)));
    });
}

TEST_F(PlanarFrameTest, MethodAutoAndUnknownCodesAreOneOfTheTwo) {
    const PixelFormat& format = Format("YV12");
    ScalingRig rig(format, {{64, 48}, {40, 36}});
    const std::vector<BYTE> automatic = rig.Scaled(VantrelMethodAuto);
    EXPECT_TRUE(automatic == rig.Scaled(VantrelMethodBilinearAuto) ||
                automatic == rig.Scaled(VantrelMethodNearestAuto));
    for (const int code : {3, 4, 8, 9, 13, 100, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(rig.Scaled(code), automatic) << "code " << code;
}

TEST_F(PlanarFrameTest, ATopDownSourceIsScaledOnBothAxesAsItLiesInMemory) {
    for (const char* name : {"YV12", "IYUV", "YVU9", "I420"}) {
        const PixelFormat& format = Format(name);
        const std::vector<BYTE> source = RandomFrame(format, 64, -48);
        FilterRig rig;
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        rig.settings->SetOutputSize(32, 0);
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, -48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(source), S_OK);
        ASSERT_EQ(rig.samples().size(), 1u);
        // I420 alone keeps the negative height of the output, and so turns the picture.
        EXPECT_TRUE(
            Matches(NearestPlanar(format, source, {64, 48}, {32, 48}, format.keepsHeightSign),
                    rig.samples()[0].bytes))
            << name;
    }
}

TEST_F(PlanarFrameTest, ANegativeOutputHeightTurnsI420AndNoOtherPlanarFormat) {
    for (const PixelFormat& format : PlanarFormats()) {
        ScalingRig rig(format, {{64, 48}, {40, -36}});
        EXPECT_TRUE(Matches(
            NearestPlanar(format, rig.SourceBytes(), {64, 48}, {40, 36}, format.keepsHeightSign),
            rig.Scaled(VantrelMethodNearest)))
            << format.name;
        EXPECT_TRUE(Matches(
            BilinearPlanar(format, rig.SourceBytes(), {64, 48}, {40, 36}, format.keepsHeightSign),
            rig.Scaled(VantrelMethodBilinear)))
            << format.name;
    }
}

TEST_F(PlanarFrameTest, TheMethodCanChangeFromFrameToFrame) {
    const PixelFormat& format = Format("IYUV");
    ScalingRig rig(format, {{64, 48}, {40, 36}});
    const Expected nearest = NearestPlanar(format, rig.SourceBytes(), {64, 48}, {40, 36});
    const Expected bilinear = BilinearPlanar(format, rig.SourceBytes(), {64, 48}, {40, 36});
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Matches(nearest, rig.Scaled(VantrelMethodNearest)));
        EXPECT_TRUE(Matches(bilinear, rig.Scaled(VantrelMethodBilinear)));
        EXPECT_FALSE(Matches(bilinear, rig.Scaled(VantrelMethodNearest)));
    }
}

class PixelFrameTest : public FilterTest {};

TEST_F(PixelFrameTest, NearestNeighbourTakesTheMappedPixelInEveryFormat) {
    for (const PixelFormat& format : AllFormats()) {
        for (const Scaling& scaling : kScalings) {
            if (format.layout == Layout::kPacked && scaling.to.width % 2) continue;
            ScalingRig rig(format, scaling);
            const Expected want = NearestFrame(format, rig.SourceBytes(), scaling.from, scaling.to);
            for (const int method : {VantrelMethodNearest, VantrelMethodNearestMmx,
                                     VantrelMethodNearestSse, VantrelMethodNearestAuto}) {
                EXPECT_TRUE(Matches(want, rig.Scaled(method)))
                    << format.name << " to " << scaling.to.width << ", method " << method;
            }
        }
    }
}

TEST_F(PixelFrameTest, BilinearRgb24FollowsTheFormula) {
    for (const Scaling& scaling : kScalings) {
        ScalingRig rig(Format("RGB24"), scaling);
        const Expected want = BilinearRgb24(rig.SourceBytes(), scaling.from, scaling.to);
        for (const int method : {VantrelMethodBilinear, VantrelMethodBilinearMmx}) {
            EXPECT_TRUE(Matches(want, rig.Scaled(method)))
                << "to " << scaling.to.width << ", method " << method;
        }
    }
}

}  // namespace
