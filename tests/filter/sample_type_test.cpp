// Media types that arrive on samples, from upstream and through the sink's buffers.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class SampleTypeTest : public FilterTest {
  protected:
    const PixelFormat& format_ = Format("YV12");

    SampleSpec SampleOf(const PixelFormat& format, Size size, bool withType,
                        bool sample2 = true) const {
        SampleSpec spec;
        spec.bytes = RandomFrame(format, size.width, size.height,
                                 static_cast<uint32_t>(size.width * 1000 + size.height));
        if (withType) spec.type = TypeOf(format, size.width, size.height);
        // Ends at a protected page: reading with the size of another frame would not pass.
        spec.freestanding = SampleConfig{.size = static_cast<long>(spec.bytes.size()),
                                         .sample2 = sample2,
                                         .guard = BufferGuard::kPageAfter};
        return spec;
    }

    void ExpectNearest(FilterRig& rig, const SampleSpec& spec, Size from, Size to) const {
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.Deliver(spec), S_OK);
        ASSERT_EQ(rig.samples().size(), 1u);
        EXPECT_TRUE(Matches(NearestPlanar(format_, spec.bytes, from, to), rig.samples()[0].bytes));
        EXPECT_FALSE(rig.samples()[0].type);
    }
};

TEST_F(SampleTypeTest, AnInputTypeCountsFromItsSampleOn) {
    for (const bool sample2 : {true, false}) {
        FilterRig rig;
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        rig.settings->SetOutputSize(40, 36);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        const MediaType outputType = rig.ConnectionTypeOf(rig.output.Get());
        ASSERT_EQ(rig.Start(), S_OK);
        for (const Size& size : {Size{64, 48}, Size{320, 240}, Size{16, 8}, Size{39, 37},
                                 Size{64, 48}, Size{720, 576}}) {
            SCOPED_TRACE(size.width);
            ExpectNearest(rig, SampleOf(format_, size, true, sample2), size, {40, 36});
            ExpectNearest(rig, SampleOf(format_, size, false, sample2), size, {40, 36});
            EXPECT_EQ(rig.ConnectionTypeOf(rig.input.Get()),
                      TypeOf(format_, size.width, size.height));
            EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), outputType);
        }
    }
}

TEST_F(SampleTypeTest, AnInputTypeOfTheOutputsSizeIsCopiedFromThereOn) {
    for (const PixelFormat& format : AllFormats()) {
        FilterRig rig;
        rig.settings->SetOutputSize(40, 36);
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        for (const bool withType : {true, false}) {
            const SampleSpec spec = SampleOf(format, {40, 36}, withType);
            rig.sink->pin().ClearSamples();
            ASSERT_EQ(rig.Deliver(spec), S_OK) << format.name;
            EXPECT_TRUE(
                Matches(CopiedFrame(format, spec.bytes, {40, 36}), rig.samples().at(0).bytes))
                << format.name;
        }
    }
}

TEST_F(SampleTypeTest, ARefusedInputTypeEndsTheStreamUntilAFlush) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const SampleSpec good = SampleOf(format_, {64, 48}, false);
    for (const MediaType& type :
         {TypeOf(Format("YUY2"), 64, 48), TypeOf(format_, 64, 0), TypeOf(format_, -64, 48),
          MakeVideoType({.subtype = SubtypeOf(format_), .formatBytes = 40}),
          MakePartialType(MEDIATYPE_Video)}) {
        SampleSpec bad = good;
        bad.type = type;
        EXPECT_EQ(rig.Deliver(bad), VFW_E_INVALIDMEDIATYPE);
        EXPECT_EQ(rig.Deliver(good), VFW_E_RUNTIME_ERROR);
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        EXPECT_EQ(rig.Deliver(good), S_OK);
        EXPECT_EQ(rig.ConnectionTypeOf(rig.input.Get()), TypeOf(format_, 64, 48));
    }
    EXPECT_EQ(rig.samples().size(), 5u);
}

TEST_F(SampleTypeTest, AnInputTypeThatCannotBeFollowedFailsFramesUntilOneCan) {
    FilterRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    rig.settings->SetVideoType(
        3);  // lifts the demand for a header: the type passes, but has no size
    SampleSpec spec = SampleOf(format_, {64, 48}, false);
    spec.type = MakePartialType(MEDIATYPE_Video, SubtypeOf(format_), FORMAT_None);
    EXPECT_TRUE(FAILED(rig.Deliver(spec)));
    EXPECT_TRUE(rig.samples().empty());
    ExpectNearest(rig, SampleOf(format_, {100, 80}, true), {100, 80}, {40, 36});
    ExpectNearest(rig, SampleOf(format_, {64, 48}, true), {64, 48}, {40, 36});
}

TEST_F(SampleTypeTest, ATypeOnASampleThatTheRegulatorDropsIsNotLost) {
    FilterRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    rig.settings->SetFrameRate(25.0);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    SampleSpec first = SampleOf(format_, {64, 48}, false);
    first.start = 0;
    first.stop = 400000;
    ASSERT_EQ(rig.Deliver(first), S_OK);
    SampleSpec dropped = SampleOf(format_, {90, 70}, true);
    dropped.start = 400000;
    dropped.stop = 500000;
    EXPECT_EQ(rig.Deliver(dropped), S_FALSE);
    EXPECT_EQ(rig.samples().size(), 1u);
    SampleSpec next = SampleOf(format_, {90, 70}, false);
    next.start = 800000;
    next.stop = 1200000;
    ASSERT_EQ(rig.Deliver(next), S_OK);
    ASSERT_EQ(rig.samples().size(), 2u);
    EXPECT_TRUE(Matches(NearestPlanar(format_, next.bytes, {90, 70}, {40, 36}),
                        rig.samples().back().bytes));
}

// The page may be open while the video plays, with another format chosen.
TEST_F(SampleTypeTest, TheTypeOfTheConnectionStaysAcceptedWhateverTheSettingsAre) {
    FilterRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const MediaType type = TypeOf(format_, 64, 48);
    const MediaType outputType = rig.ConnectionTypeOf(rig.output.Get());
    rig.settings->SetOutputFormat(VantrelFormatRgb24);
    rig.settings->SetVideoType(VantrelTypeMpeg2);
    EXPECT_EQ(rig.input->QueryAccept(type.Get()), S_OK);
    EXPECT_EQ(rig.output->QueryAccept(outputType.Get()), S_OK);
    ExpectNearest(rig, SampleOf(format_, {64, 48}, true), {64, 48}, {40, 36});
    // Another one is tested, and refused.
    EXPECT_EQ(rig.input->QueryAccept(TypeOf(format_, 32, 48).Get()), S_FALSE);
    EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG});
    ExpectNearest(rig, SampleOf(format_, {64, 48}, true), {64, 48}, {40, 36});
}

// A sink whose buffers hold more than the frames that it asked for first.
struct DynamicSinkRig : FilterRig {
    explicit DynamicSinkRig(const MediaType& type)
        : FilterRig({.allocator = SinkAllocator::kOwn,
                     .ownAllocator = {.guard = BufferGuard::kPageAfter, .size = 64 * 48 * 3}}) {
        settings->SetScaleMethod(VantrelMethodNearest);
        EXPECT_EQ(Connect(type), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
    void Ask(const MediaType& type) { sink->pin().ownAllocator()->AttachTypeOnce(*type); }
};

TEST_F(SampleTypeTest, AnOutputTypeCountsFromItsSampleOn) {
    DynamicSinkRig rig(TypeOf(format_, 64, 48));
    const std::vector<BYTE> frame = RandomFrame(format_, 64, 48);
    for (const Size& size : {Size{40, 36}, Size{20, 72}, Size{72, 20}}) {
        const MediaType asked = TypeOf(format_, size.width, size.height);
        rig.Ask(asked);
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.Deliver(frame), S_OK);
        ASSERT_EQ(rig.Deliver(frame), S_OK);
        const auto samples = rig.samples();
        ASSERT_EQ(samples.size(), 2u);
        ASSERT_TRUE(samples[0].type);
        EXPECT_EQ(*samples[0].type, asked) << "the sink is told that its wish was followed";
        EXPECT_FALSE(samples[1].type);
        for (const ReceivedSample& sample : samples) {
            EXPECT_EQ(sample.actualLength, RuleFrameBytes(format_, size.width, size.height));
            EXPECT_TRUE(Matches(NearestPlanar(format_, frame, {64, 48}, size), sample.bytes));
        }
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), asked);
        EXPECT_EQ(rig.OutputSize(), std::pair(size.width, size.height));
    }
}

TEST_F(SampleTypeTest, AnOutputTypeThatCannotBeFollowedFailsOnlyItsFrame) {
    DynamicSinkRig rig(TypeOf(format_, 64, 48));
    rig.settings->SetScaleMethod(VantrelMethodAuto);
    const MediaType before = rig.ConnectionTypeOf(rig.output.Get());
    const std::vector<BYTE> frame = RandomFrame(format_, 64, 48);
    for (const MediaType& type :
         {TypeOf(Format("IYUV"), 64, 48), TypeOf(Format("RGB24"), 16, 16), TypeOf(format_, 0, 48),
          MakeVideoType({.subtype = SubtypeOf(format_), .formatBytes = 40}), MediaType()}) {
        rig.Ask(type);
        rig.sink->pin().ClearSamples();
        EXPECT_TRUE(FAILED(rig.Deliver(frame)));
        EXPECT_TRUE(rig.samples().empty());
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), before);
        ASSERT_EQ(rig.Deliver(frame), S_OK);
        EXPECT_TRUE(Matches(CopiedFrame(format_, frame, {64, 48}), rig.samples().at(0).bytes));
    }
}

TEST_F(SampleTypeTest, AnOutputTypeLargerThanTheBufferFailsTheFrame) {
    DynamicSinkRig rig(TypeOf(format_, 64, 48));
    rig.Ask(TypeOf(format_, 640, 480));
    EXPECT_EQ(rig.Deliver(RandomFrame(format_, 64, 48)), E_FAIL);
    EXPECT_TRUE(rig.samples().empty());
    rig.Ask(TypeOf(format_, 40, 36));
    EXPECT_EQ(rig.Deliver(RandomFrame(format_, 64, 48)), S_OK);
}

TEST_F(SampleTypeTest, AnOutputTypeOfOddPackedWidthIsRefused) {
    DynamicSinkRig rig(TypeOf(Format("YUY2"), 64, 48));
    rig.settings->SetScaleMethod(VantrelMethodAuto);
    rig.Ask(TypeOf(Format("YUY2"), 63, 48));
    EXPECT_EQ(rig.Deliver(RandomFrame(Format("YUY2"), 64, 48)), E_FAIL);
    EXPECT_EQ(rig.Deliver(RandomFrame(Format("YUY2"), 64, 48)), S_OK);
}

TEST_F(SampleTypeTest, BothTypesMayChangeInOneFrame) {
    DynamicSinkRig rig(TypeOf(format_, 64, 48));
    rig.Ask(TypeOf(format_, 30, 20));
    const SampleSpec spec = SampleOf(format_, {100, 80}, true);
    ASSERT_EQ(rig.Deliver(spec), S_OK);
    EXPECT_TRUE(Matches(NearestPlanar(format_, spec.bytes, {100, 80}, {30, 20}),
                        rig.samples().at(0).bytes));
}

// The size asked for changes with every buffer: with those of repeated frames too.
TEST_F(SampleTypeTest, AChangeOfTypeWhileRegulatedNeverShowsAKeptFrameOfAnotherSize) {
    constexpr Size kSizes[] = {{40, 36}, {30, 20}, {72, 20}};
    DynamicSinkRig rig(TypeOf(format_, 64, 48));
    rig.settings->SetFrameRate(50.0);
    size_t asked = 0;
    const auto ask = [&](IMediaSample*) {
        const Size& size = kSizes[asked++ % 3];
        rig.Ask(TypeOf(format_, size.width, size.height));
        return S_OK;
    };
    ask(nullptr);
    rig.sink->pin().config.onReceive = ask;
    const std::vector<BYTE> frame = RandomFrame(format_, 64, 48);
    ASSERT_EQ(rig.Deliver({.start = 0, .stop = 2000000, .bytes = frame}), S_OK);
    const auto samples = rig.samples();
    ASSERT_EQ(samples.size(), 9u);
    for (size_t i = 0; i < samples.size(); ++i) {
        const Size& size = kSizes[i % 3];
        EXPECT_EQ(samples[i].actualLength, RuleFrameBytes(format_, size.width, size.height));
        EXPECT_TRUE(Matches(NearestPlanar(format_, frame, {64, 48}, size), samples[i].bytes));
        EXPECT_EQ(samples[i].start, static_cast<REFERENCE_TIME>(i) * 200000);
    }
}

}  // namespace
