// Sinks whose surfaces have rows longer than the picture: the picture keeps its size, and its rows
// lie where the surface has them.
#include "tests/filter/support/surface_rig.h"

using namespace tavo_test;

namespace {

constexpr Size kFrom = {64, 48};
constexpr Size kTo = {40, 36};
constexpr REFERENCE_TIME kFrameTime = 400'000;

class SurfaceTest : public FilterTest {
  protected:
    static SinkConfig OneBuffer() {
        return {.allocator = SinkAllocator::kOwn,
                .ownAllocator = {
                    .guard = BufferGuard::kPageAfter, .count = 1, .size = (64 + 64) * 48 * 3}};
    }

    static SampleSpec FrameAt(int number, const std::vector<BYTE>& bytes) {
        return {.start = number * kFrameTime, .stop = (number + 1) * kFrameTime, .bytes = bytes};
    }
};

TEST_F(SurfaceTest, SurfacesChangeWithEveryBuffer) {
    constexpr int kFrames = 200;
    for (const PixelFormat& format : AllFormats()) {
        std::vector<std::vector<BYTE>> frames;
        std::vector<Expected> wanted;
        for (uint32_t i = 0; i < 4; ++i) {
            frames.push_back(RandomFrame(format, kFrom.width, kFrom.height, i));
            wanted.push_back(NearestFrame(format, frames.back(), kFrom, kTo));
        }
        for (const double fps : {0.0, 50.0}) {
            SCOPED_TRACE(std::string(format.name) + (fps > 0 ? ", regulated" : ""));
            SurfaceRig rig(format, OneBuffer());
            rig.settings->SetFrameRate(fps);
            rig.surfaces = {{8}, {24, true}, {24}, {0, true}};
            ASSERT_EQ(rig.Begin(kFrom, kTo), S_OK);
            for (int i = 0; i < kFrames; ++i) {
                ASSERT_EQ(rig.Deliver(FrameAt(i, frames[i % 4])), S_OK);
            }
            // The second frame and all later ones fill two slots.
            const size_t slots = fps > 0 ? 2 * kFrames - 1 : kFrames;
            ASSERT_EQ(rig.pictures.size(), slots);
            for (size_t i = 0; i < slots; ++i) {
                const DrawnPicture& picture = rig.pictures[i];
                const size_t frame = fps > 0 ? (i + 1) / 2 : i;
                ASSERT_TRUE(Matches(wanted[frame % 4], picture.bytes)) << i;
                EXPECT_TRUE(picture.type) << "the sink is told that its wish was followed";
                EXPECT_TRUE(picture.isClean) << i;
                if (fps > 0) {
                    EXPECT_EQ(picture.start, static_cast<REFERENCE_TIME>(i) * kFrameTime / 2);
                }
            }
            EXPECT_EQ(rig.OutputSize(), std::pair(kTo.width, kTo.height));
            EXPECT_EQ(rig.sink->pin().ownAllocator()->damagedSamples(), 0);
        }
    }
}

// The usual way: the type comes on the first buffer and stays.
TEST_F(SurfaceTest, APitchStaysWithoutFurtherTypesAndOverAStop) {
    for (const PixelFormat& format : AllFormats()) {
        SCOPED_TRACE(format.name);
        for (const Size to : {kTo, Size{40, 48}, Size{40, 36}, kFrom}) {
            const std::vector<BYTE> frame = RandomFrame(format, kFrom.width, kFrom.height);
            SurfaceRig plain(format, OneBuffer());
            ASSERT_EQ(plain.Begin(kFrom, to), S_OK);
            plain.settings->SetScaleMethod(VantrelMethodAuto);
            ASSERT_EQ(plain.Deliver(frame), S_OK);

            SurfaceRig rig(format, OneBuffer());
            rig.surfaces = {{20}};
            ASSERT_EQ(rig.Begin(kFrom, to), S_OK);
            rig.settings->SetScaleMethod(VantrelMethodAuto);
            ASSERT_EQ(rig.Deliver(frame), S_OK);
            rig.surfaces.clear();
            ASSERT_EQ(rig.Deliver(frame), S_OK);
            ASSERT_EQ(rig.Stop(), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            ASSERT_EQ(rig.Deliver(frame), S_OK);
            ASSERT_EQ(rig.pictures.size(), 3u);
            for (const DrawnPicture& picture : rig.pictures) {
                EXPECT_EQ(picture.bytes, plain.pictures.at(0).bytes);
                EXPECT_TRUE(picture.isClean);
            }
            EXPECT_EQ(rig.OutputSize(), std::pair(to.width, to.height));
        }
    }
}

// A type on a buffer, and the size that comes of it.
struct Wish {
    LONG width;
    LONG height;
    RECT source;
    RECT target;
    Size size;
};

TEST_F(SurfaceTest, OnlyTheNegotiatedPictureInAWiderBitmapStatesAPitch) {
    const RECT none = {};
    const RECT whole = {0, 0, kTo.width, kTo.height};
    const Wish wishes[] = {
        {52, 36, whole, whole, kTo},
        {52, 36, none, whole, kTo},
        {52, 36, whole, none, kTo},
        {52, 36, {0, 0, 7, 7}, whole, kTo},
        {52, 36, none, none, {52, 36}},
        {52, 36, whole, {0, 0, 52, 36}, {52, 36}},
        {52, 36, {0, 0, 52, 36}, none, {52, 36}},
        {52, 36, whole, {0, 0, 44, 36}, {52, 36}},
        {52, 36, whole, {4, 0, 44, 36}, {52, 36}},
        {52, 40, whole, whole, {52, 40}},
        {32, 36, whole, whole, {32, 36}},
        {52, 36, whole, {0, 0, 40, 0}, kTo},  // an empty one: the source counts
    };
    const PixelFormat& format = Format("YUY2");
    for (const Wish& wish : wishes) {
        FilterRig rig(OneBuffer());
        rig.settings->SetOutputSize(kTo.width, kTo.height);
        ASSERT_EQ(rig.Connect(TypeOf(format, kFrom.width, kFrom.height)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        VideoSpec spec = SpecOf(format, wish.width, wish.height);
        spec.source = wish.source;
        spec.target = wish.target;
        const MediaType type = MakeVideoType(spec);
        EXPECT_EQ(rig.output->QueryAccept(type.Get()), S_OK);
        rig.sink->pin().ownAllocator()->AttachTypeOnce(*type);
        ASSERT_EQ(rig.Deliver(RandomFrame(format, kFrom.width, kFrom.height)), S_OK);
        EXPECT_EQ(rig.OutputSize(), std::pair(wish.size.width, wish.size.height));
        EXPECT_EQ(rig.samples().at(0).actualLength, wish.width * 2 * wish.height);
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), type);
    }
}

TEST_F(SurfaceTest, ASurfaceLargerThanTheBufferFailsTheFrame) {
    const PixelFormat& format = Format("RGB24");
    for (const double fps : {0.0, 25.0}) {
        SinkConfig config = OneBuffer();
        config.ownAllocator.size = 152 * 35 + 40 * 3;
        SurfaceRig rig(format, config);
        rig.settings->SetFrameRate(fps);
        rig.surfaces = {{12}};
        ASSERT_EQ(rig.Begin(kFrom, kTo), S_OK);
        const std::vector<BYTE> frame = RandomFrame(format, kFrom.width, kFrom.height);
        EXPECT_EQ(rig.Deliver(FrameAt(0, frame)), E_FAIL);
        EXPECT_TRUE(rig.pictures.empty());
        rig.surfaces.clear();
        // One whose last row ends with the buffer is large enough.
        rig.sink->pin().ownAllocator()->AttachTypeOnce(*rig.TypeFor(kTo, {10}));
        EXPECT_EQ(rig.Deliver(FrameAt(3, frame)), S_OK);
        EXPECT_GE(rig.pictures.size(), 1u);
    }
}

}  // namespace
