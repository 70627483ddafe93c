// Planar sources that pad their rows: the pictures that come out are those of the same samples in
// tight rows. Sources without chroma samples.
#include <algorithm>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class PaddedPlanesTest : public FilterTest {};

// A source whose buffers hold one frame between protected pages.
struct SourceRig : FilterRig {
    SourceRig(const MediaType& type, long bufferBytes, Size to)
        : FilterRig({}, {.choice = AllocatorChoice::kOwnOnly,
                         .wish = {2, bufferBytes, 1, 0},
                         .allocator = {.guard = BufferGuard::kPageAfter}}) {
        settings->SetOutputSize(to.width, to.height);
        EXPECT_EQ(Connect(type), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
    std::vector<BYTE> Scaled(const std::vector<BYTE>& frame, int method) {
        settings->SetScaleMethod(method);
        sink->pin().ClearSamples();
        EXPECT_EQ(Deliver(frame), S_OK);
        const auto received = samples();
        return received.size() == 1 ? received[0].bytes : std::vector<BYTE>();
    }
};

constexpr int kMethods[] = {VantrelMethodAuto,         VantrelMethodNearestAuto,
                            VantrelMethodBilinearAuto, VantrelMethodNearest,
                            VantrelMethodNearestMmx,   VantrelMethodBilinear,
                            VantrelMethodBilinearMmx,  VantrelMethodBilinearSse};

// What the planes of the picture cover, with the bytes of a frame that was made from tight rows.
Expected PictureOf(const PixelFormat& format, Size size, const std::vector<BYTE>& bytes) {
    Expected picture(RuleFrameBytes(format, size.width, size.height));
    for (int i = 0; i < 3; ++i) {
        const Plane plane = PlaneOf(format, i, size.width, size.height);
        const int64_t end = plane.offset + int64_t{plane.width} * plane.height;
        for (int64_t at = plane.offset; at < end; ++at) {
            picture.Set(at, bytes.at(static_cast<size_t>(at)));
        }
    }
    return picture;
}

void CheckAgainstTightRows(const PixelFormat& format, Size from, Size to) {
    SCOPED_TRACE(testing::Message() << format.name << " " << from.width << "x" << from.height
                                    << " to " << to.width << "x" << to.height);
    const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 11);
    const std::vector<BYTE> padded = PadRows(format, from, tight);
    ASSERT_NE(padded.size(), tight.size()) << "both layouts are the same at this size";
    SourceRig tightRig(TypeOf(format, from.width, from.height), static_cast<long>(tight.size()),
                       to);
    SourceRig paddedRig(PaddedTypeOf(format, from), static_cast<long>(padded.size()), to);
    for (const int method : kMethods) {
        const Expected want = PictureOf(format, to, tightRig.Scaled(tight, method));
        EXPECT_TRUE(Matches(want, paddedRig.Scaled(padded, method))) << "method " << method;
    }
}

TEST_F(PaddedPlanesTest, EveryRowOfTheTableReadsTheSamplesOfPaddedRows) {
    for (const PixelFormat& format : PlanarFormats()) {
        CheckAgainstTightRows(format, {854, 48}, {640, 36});  // both axes
        CheckAgainstTightRows(format, {175, 33}, {351, 47});  // enlarging, odd
        CheckAgainstTightRows(format, {854, 48}, {854, 36});  // height only
        CheckAgainstTightRows(format, {854, 48}, {640, 48});  // width only
        CheckAgainstTightRows(format, {640, 17}, {480, 17});  // its own row
        CheckAgainstTightRows(format, {720, 19}, {480, 19});  // likewise
        CheckAgainstTightRows(format, {426, 47}, {426, 47});  // unchanged
    }
}

TEST_F(PaddedPlanesTest, EverySizeModuloEight) {
    for (const PixelFormat& format : PlanarFormats()) {
        for (int width = 32; width < 40; ++width) {
            for (int height = 32; height < 40; ++height) {
                const Size from = {width, height};
                const auto tight = RandomFrame(format, width, height, 3);
                if (PadRows(format, from, tight).size() == tight.size()) continue;
                CheckAgainstTightRows(format, from, {24, 20});
            }
        }
    }
}

TEST_F(PaddedPlanesTest, NearestNeighbourTakesTheSamplesThatTheFormulaNames) {
    for (const PixelFormat& format : PlanarFormats()) {
        const Size from = {54, 30};
        const Size to = {38, 22};
        const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 5);
        const std::vector<BYTE> padded = PadRows(format, from, tight);
        SourceRig rig(PaddedTypeOf(format, from), static_cast<long>(padded.size()), to);
        EXPECT_TRUE(Matches(NearestPlanar(format, tight, from, to),
                            rig.Scaled(padded, VantrelMethodNearest)))
            << format.name;
    }
}

TEST_F(PaddedPlanesTest, ACopyThatTurnsThePictureSkipsThePadding) {
    const PixelFormat& format = Format("I420");
    const Size size = {54, 31};
    const std::vector<BYTE> tight = RandomFrame(format, size.width, size.height, 5);
    const std::vector<BYTE> padded = PadRows(format, size, tight);
    SourceRig rig(PaddedTypeOf(format, size), static_cast<long>(padded.size()),
                  {size.width, -size.height});
    EXPECT_TRUE(
        Matches(CopiedFrame(format, tight, size, true), rig.Scaled(padded, VantrelMethodAuto)));
}

TEST_F(PaddedPlanesTest, ATopDownSourceMayPadItsRowsToo) {
    const PixelFormat& format = Format("YV12");
    const Size from = {54, 30};
    const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 5);
    const std::vector<BYTE> padded = PadRows(format, from, tight);
    SourceRig rig(PaddedTypeOf(format, from, -1), static_cast<long>(padded.size()), {38, 22});
    EXPECT_TRUE(Matches(NearestPlanar(format, tight, from, {38, 22}),
                        rig.Scaled(padded, VantrelMethodNearest)));
}

TEST_F(PaddedPlanesTest, OnlyTheExactSizeMeansPaddedRows) {
    const PixelFormat& format = Format("YV12");
    const Size from = {854, 30};
    const Size to = {38, 22};
    const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 5);
    const long padded = PaddedBytes(format, from);
    for (const long stated : {padded - 1, padded + 1, padded + 4, 2 * padded, 1L}) {
        VideoSpec spec = SpecOf(format, from.width, from.height);
        spec.sizeImage = static_cast<DWORD>(stated);
        SourceRig rig(MakeVideoType(spec), 2 * padded, to);
        EXPECT_TRUE(Matches(NearestPlanar(format, tight, from, to),
                            rig.Scaled(tight, VantrelMethodNearest)))
            << stated << " bytes stated";
    }
}

TEST_F(PaddedPlanesTest, PackedAndRgbFormatsKnowNoPaddedPlanes) {
    for (const char* name : {"YUY2", "RGB24"}) {
        const PixelFormat& format = Format(name);
        VideoSpec spec = SpecOf(format, 54, 30);
        spec.sizeImage = *spec.sizeImage + 60;
        const std::vector<BYTE> frame = RandomFrame(format, 54, 30, 5);
        SourceRig rig(MakeVideoType(spec), 10000, {38, 22});
        EXPECT_TRUE(Matches(NearestFrame(format, frame, {54, 30}, {38, 22}),
                            rig.Scaled(frame, VantrelMethodNearest)))
            << name;
    }
}

// A type without a frame size leaves it to the first sample's length.
struct OpenLayoutRig : SourceRig {
    OpenLayoutRig(const PixelFormat& format, Size from, Size to)
        : SourceRig(TypeWithoutSize(format, from), 2 * PaddedBytes(format, from), to) {}

    static MediaType TypeWithoutSize(const PixelFormat& format, Size size) {
        VideoSpec spec = SpecOf(format, size.width, size.height);
        spec.sizeImage = 0;
        return MakeVideoType(spec);
    }
};

TEST_F(PaddedPlanesTest, WithoutAStatedSizeTheFirstSampleTells) {
    const Size from = {54, 30};
    const Size to = {38, 22};
    for (const PixelFormat& format : PlanarFormats()) {
        const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 5);
        const std::vector<BYTE> padded = PadRows(format, from, tight);
        const Expected want = NearestPlanar(format, tight, from, to);

        OpenLayoutRig paddedRig(format, from, to);
        for (int frame = 0; frame < 3; ++frame) {
            EXPECT_TRUE(Matches(want, paddedRig.Scaled(padded, VantrelMethodNearest)))
                << format.name;
        }
        OpenLayoutRig tightRig(format, from, to);
        EXPECT_TRUE(Matches(want, tightRig.Scaled(tight, VantrelMethodNearest))) << format.name;
    }
}

TEST_F(PaddedPlanesTest, LaterSamplesDoNotChangeTheLayout) {
    const PixelFormat& format = Format("YV12");
    const Size from = {54, 30};
    const Size to = {38, 22};
    const std::vector<BYTE> tight = RandomFrame(format, from.width, from.height, 5);
    OpenLayoutRig rig(format, from, to);
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    const Expected want = NearestPlanar(format, tight, from, to);
    for (const long length : {0L, PaddedBytes(format, from), 7L}) {
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.Deliver({.bytes = tight, .actualLength = length}), S_OK);
        EXPECT_TRUE(Matches(want, rig.samples().at(0).bytes)) << length;
    }
}

TEST_F(PaddedPlanesTest, ATypeOnASampleBringsItsOwnLayout) {
    const PixelFormat& format = Format("I420");
    const Size size = {54, 30};
    const std::vector<BYTE> tight = RandomFrame(format, size.width, size.height, 5);
    const std::vector<BYTE> padded = PadRows(format, size, tight);
    SourceRig rig(TypeOf(format, 54, 30), static_cast<long>(padded.size()), {38, 22});
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    const Expected want = NearestPlanar(format, tight, size, {38, 22});
    for (const bool pads : {true, false, true}) {
        const MediaType type = pads ? PaddedTypeOf(format, size) : TypeOf(format, 54, 30);
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.Deliver({.bytes = pads ? padded : tight, .type = type}), S_OK);
        EXPECT_TRUE(Matches(want, rig.samples().at(0).bytes)) << (pads ? "padded" : "tight");
    }
}

TEST_F(PaddedPlanesTest, ABufferShorterThanThePaddedFrameFails) {
    const PixelFormat& format = Format("YV12");
    const Size from = {54, 30};
    const long padded = PaddedBytes(format, from);
    SourceRig rig(PaddedTypeOf(format, from), padded - 1, {38, 22});
    EXPECT_EQ(rig.Deliver(std::vector<BYTE>(static_cast<size_t>(padded) - 1)), E_FAIL);
    EXPECT_TRUE(rig.samples().empty());
}

TEST_F(PaddedPlanesTest, TheTypeOffered) {
    FilterRig rig;
    rig.settings->SetOutputSize(854, 480);
    ASSERT_EQ(rig.ConnectInput(PaddedTypeOf(Format("I420"), {854, 480})), S_OK);
    ASSERT_EQ(rig.OfferedTypes().size(), 1u);
    EXPECT_EQ(rig.OfferedTypes()[0].Bitmap()->biSizeImage, 614880u) << "the output is tight";
}

TEST_F(PaddedPlanesTest, WithoutChromaSamplesTheLumaIsScaled) {
    struct Shape {
        const char* format;
        Size from;
        Size to;
    };
    const Shape shapes[] = {
        {"YV12", {16, 1}, {8, 1}},   {"YV12", {16, 1}, {24, 1}}, {"IYUV", {1, 16}, {1, 11}},
        {"I420", {1, 1}, {1, 1}},    {"YVU9", {2, 16}, {2, 24}}, {"YVU9", {16, 3}, {11, 3}},
        {"YVU9", {3, 3}, {3, 2}},    {"YV12", {16, 1}, {32, 3}}, {"YV12", {16, 16}, {8, 1}},
        {"YVU9", {16, 16}, {3, 16}}, {"I420", {16, 1}, {16, 1}}};
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(testing::Message()
                     << shape.format << " " << shape.from.width << "x" << shape.from.height
                     << " to " << shape.to.width << "x" << shape.to.height);
        const PixelFormat& format = Format(shape.format);
        const Size from = shape.from;
        const Size to = shape.to;
        const std::vector<BYTE> frame = RandomFrame(format, from.width, from.height, 9);
        SourceRig rig(TypeOf(format, from.width, from.height), static_cast<long>(frame.size()), to);
        for (const int method :
             {VantrelMethodNearest, VantrelMethodNearestMmx, VantrelMethodNearestAuto}) {
            const std::vector<BYTE> bytes = rig.Scaled(frame, method);
            ASSERT_EQ(bytes.size(),
                      static_cast<size_t>(RuleFrameBytes(format, to.width, to.height)));
            for (int y = 0; y < to.height; ++y) {
                for (int x = 0; x < to.width; ++x) {
                    const int at =
                        y * from.height / to.height * from.width + x * from.width / to.width;
                    EXPECT_EQ(bytes[static_cast<size_t>(y * to.width + x)],
                              frame[static_cast<size_t>(at)])
                        << "sample " << x << ", " << y;
                }
            }
        }
    }
}

TEST_F(PaddedPlanesTest, AnOutputWithChromaOfASourceWithoutIsGrey) {
    const PixelFormat& format = Format("YV12");
    const std::vector<BYTE> frame = RandomFrame(format, 16, 1, 9);
    SourceRig rig(TypeOf(format, 16, 1), static_cast<long>(frame.size()), {8, 4});
    for (const int method : {VantrelMethodNearest, VantrelMethodBilinear}) {
        const std::vector<BYTE> bytes = rig.Scaled(frame, method);
        ASSERT_EQ(bytes.size(), 48u);
        EXPECT_TRUE(std::all_of(bytes.begin() + 32, bytes.end(),
                                [](BYTE sample) { return sample == 128; }));
    }
}

}  // namespace
