// What goes with a frame from the input sample to the output sample, buffers of wrong sizes, and
// the events of a stream.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class SamplePropertiesTest : public FilterTest {
  protected:
    const PixelFormat& format_ = Format("YV12");
    const MediaType type_ = TypeOf(format_, 16, 8);
    const std::vector<BYTE> frame_ = RandomFrame(format_, 16, 8);
};

// A rig whose samples on either side have IMediaSample2 or not.
struct PropertyRig : FilterRig {
    PropertyRig(bool sourceSample2, bool sinkSample2, const MediaType& type)
        : FilterRig(
              {.allocator = SinkAllocator::kOwn, .ownAllocator = {.sample2 = sinkSample2}},
              {.choice = AllocatorChoice::kOwnOnly, .allocator = {.sample2 = sourceSample2}}) {
        EXPECT_EQ(Connect(type), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
};

TEST_F(SamplePropertiesTest, TimesMediaTimesAndFlagsGoWithTheFrame) {
    for (const bool sourceSample2 : {false, true}) {
        for (const bool sinkSample2 : {false, true}) {
            PropertyRig rig(sourceSample2, sinkSample2, type_);
            for (int bits = 0; bits < 32; ++bits) {
                SCOPED_TRACE(testing::Message() << sourceSample2 << sinkSample2 << " " << bits);
                SampleSpec spec = {.syncPoint = (bits & 1) != 0,
                                   .preroll = (bits & 2) != 0,
                                   .discontinuity = (bits & 4) != 0,
                                   .bytes = frame_};
                if (bits & 8) {
                    spec.start = 1000 + bits;
                    spec.stop = 2000 + bits;
                }
                if (bits & 16) {
                    spec.mediaStart = 70 + bits;
                    spec.mediaEnd = 80 + bits;
                }
                rig.sink->pin().ClearSamples();
                ASSERT_EQ(rig.Deliver(spec), S_OK);
                const ReceivedSample got = rig.samples().at(0);
                EXPECT_EQ(got.syncPoint, spec.syncPoint);
                EXPECT_EQ(got.preroll, spec.preroll);
                EXPECT_EQ(got.discontinuity, spec.discontinuity);
                EXPECT_EQ(got.timeResult, spec.start ? S_OK : VFW_E_SAMPLE_TIME_NOT_SET);
                if (spec.start) {
                    EXPECT_EQ(got.start, *spec.start);
                    EXPECT_EQ(got.stop, *spec.stop);
                }
                EXPECT_EQ(got.mediaTimeResult, spec.mediaStart ? S_OK : VFW_E_MEDIA_TIME_NOT_SET);
                if (spec.mediaStart) {
                    EXPECT_EQ(got.mediaStart, *spec.mediaStart);
                    EXPECT_EQ(got.mediaEnd, *spec.mediaEnd);
                }
                EXPECT_FALSE(got.type);
                EXPECT_EQ(got.actualLength, RuleFrameBytes(format_, 16, 8));
            }
        }
    }
}

TEST_F(SamplePropertiesTest, ASampleWithAStartOnlyStaysOne) {
    PropertyRig rig(true, true, type_);
    ASSERT_EQ(rig.Deliver({.start = 1000, .bytes = frame_}), S_OK);
    EXPECT_EQ(rig.samples().at(0).timeResult, VFW_S_NO_STOP_TIME);
    EXPECT_EQ(rig.samples().at(0).start, 1000);
}

// Answers that are neither yes nor no, and buffers that cannot be had.
struct Oddities {
    HRESULT syncPoint = S_OK;
    HRESULT preroll = S_FALSE;
    HRESULT discontinuity = S_FALSE;
    HRESULT pointer = S_OK;
    bool nullPointer = false;
};

class OddSample final : public TestSample {
  public:
    OddSample(const SampleConfig& config, const Oddities& oddities)
        : TestSample(config), oddities_(oddities) {
        Revive();
    }
    STDMETHODIMP IsSyncPoint() override { return oddities_.syncPoint; }
    STDMETHODIMP IsPreroll() override { return oddities_.preroll; }
    STDMETHODIMP IsDiscontinuity() override { return oddities_.discontinuity; }
    STDMETHODIMP GetPointer(BYTE** buffer) override {
        if (FAILED(oddities_.pointer)) return oddities_.pointer;
        TestSample::GetPointer(buffer);
        if (oddities_.nullPointer) *buffer = nullptr;
        return S_OK;
    }

  private:
    const Oddities oddities_;
};

HRESULT DeliverOdd(FilterRig& rig, const MediaType& type, const Oddities& oddities) {
    const SampleConfig config = {.size = static_cast<long>(type->lSampleSize)};
    const auto sample = ComPtr<TestSample>::Adopt(new OddSample(config, oddities));
    return rig.source->pin().Deliver(sample.Get());
}

TEST_F(SamplePropertiesTest, AFlagThatIsNeitherYesNorNoEndsTheFrame) {
    PropertyRig rig(true, true, type_);
    EXPECT_EQ(DeliverOdd(rig, type_, {}), S_OK);
    EXPECT_EQ(DeliverOdd(rig, type_, {.syncPoint = E_FAIL}), E_UNEXPECTED);
    EXPECT_EQ(DeliverOdd(rig, type_, {.preroll = E_NOTIMPL}), E_UNEXPECTED);
    EXPECT_EQ(DeliverOdd(rig, type_, {.discontinuity = 2}), E_UNEXPECTED);
    EXPECT_EQ(rig.samples().size(), 1u);
}

TEST_F(SamplePropertiesTest, AnInputWithoutABufferFailsTheFrame) {
    PropertyRig rig(true, true, type_);
    EXPECT_EQ(DeliverOdd(rig, type_, {.pointer = E_ACCESSDENIED}), E_ACCESSDENIED);
    EXPECT_EQ(DeliverOdd(rig, type_, {.nullPointer = true}), E_FAIL);
    EXPECT_TRUE(rig.samples().empty());
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
}

TEST_F(SamplePropertiesTest, ASampleSmallerThanItsFrameFailsWithEFail) {
    for (const PixelFormat& format : AllFormats()) {
        const long whole = static_cast<long>(RuleFrameBytes(format, 16, 8));
        for (const long size : {0L, 1L, whole / 2, whole - 1, -1L, whole, whole + 1}) {
            FilterRig input({}, {.choice = AllocatorChoice::kOwnOnly,
                                 .allocator = {.bufferSize = whole + 1, .claimedSize = size}});
            ASSERT_EQ(input.Connect(TypeOf(format, 16, 8)), S_OK);
            ASSERT_EQ(input.Start(), S_OK);
            EXPECT_EQ(input.Deliver(SampleSpec{.actualLength = 0}), size < whole ? E_FAIL : S_OK)
                << format.name << ", input of " << size;
            EXPECT_EQ(input.samples().size(), size < whole ? 0u : 1u);

            FilterRig output({.allocator = SinkAllocator::kOwn,
                              .ownAllocator = {.bufferSize = whole + 1, .claimedSize = size}});
            ASSERT_EQ(output.Connect(TypeOf(format, 16, 8)), S_OK);
            ASSERT_EQ(output.Start(), S_OK);
            EXPECT_EQ(output.Deliver(SampleSpec{}), size < whole ? E_FAIL : S_OK)
                << format.name << ", output of " << size;
            EXPECT_EQ(output.samples().size(), size < whole ? 0u : 1u);
        }
    }
}

TEST_F(SamplePropertiesTest, AShortActualLengthInAWholeBufferIsNoReasonToFail) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    for (const long length : {0L, 1L, 100L}) {
        EXPECT_EQ(rig.Deliver({.bytes = frame_, .actualLength = length}), S_OK);
        EXPECT_TRUE(Matches(CopiedFrame(format_, frame_, {16, 8}), rig.samples().back().bytes));
    }
}

TEST_F(SamplePropertiesTest, TheActualLengthIsThatOfTheFrameInLargerBuffers) {
    FilterRig rig({.allocator = SinkAllocator::kOwn,
                   .ownAllocator = {.sizeChange = 1000, .actualLength = 5}});
    ASSERT_EQ(rig.Connect(type_), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_EQ(rig.samples().at(0).actualLength, RuleFrameBytes(format_, 16, 8));
    EXPECT_EQ(rig.samples().at(0).size, RuleFrameBytes(format_, 16, 8) + 1000);
}

TEST_F(SamplePropertiesTest, TheResultOfTheSinkGoesUpstream) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    rig.sink->pin().calls().Inject("Receive", E_ABORT, 1);
    EXPECT_EQ(rig.Deliver(frame_), E_ABORT);
    rig.sink->pin().calls().Inject("Receive", S_FALSE, 1);
    EXPECT_EQ(rig.Deliver(frame_), S_FALSE);
    rig.sink->pin().calls().ClearInjections();
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
}

TEST_F(SamplePropertiesTest, AFailedFrameDoesNotEndTheStream) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver({.freestanding = SampleConfig{.size = 10}}), E_FAIL);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_EQ(rig.samples().size(), 1u);
}

TEST_F(SamplePropertiesTest, SamplesAreRefusedWhileStoppedAndFlushing) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    const SampleSpec spec = {.freestanding = SampleConfig{.size = 16 * 8 * 3 / 2}};
    EXPECT_EQ(rig.Deliver(spec), VFW_E_WRONG_STATE);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver(spec), S_OK);
    EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(rig.Deliver(spec), S_FALSE);
    EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(rig.Deliver(spec), S_OK);
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(rig.Deliver(spec), VFW_E_WRONG_STATE);
    EXPECT_EQ(rig.source->pin().input()->Receive(nullptr), E_POINTER);
}

TEST_F(SamplePropertiesTest, StreamEventsReachTheSinkOnce) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.source->pin().SendNewSegment(10, 20, 0.5), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_EQ(rig.source->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    for (const char* call : {"EndOfStream", "BeginFlush", "EndFlush"})
        EXPECT_EQ(rig.sink->pin().calls().Count(call), 1) << call;
    const std::vector<Segment> segments = rig.sink->pin().segments();
    ASSERT_EQ(segments.size(), 1u);
    EXPECT_EQ(segments[0].start, 10);
    EXPECT_EQ(segments[0].stop, 20);
    EXPECT_EQ(segments[0].rate, 0.5);
}

TEST_F(SamplePropertiesTest, AnotherStreamsSamplesPassThroughUntouched) {
    PropertyRig rig(true, true, type_);
    ASSERT_EQ(rig.Deliver({.bytes = {1, 2, 3}, .streamId = AM_STREAM_CONTROL}), S_OK);
    const ReceivedSample got = rig.samples().at(0);
    EXPECT_EQ(got.streamId, DWORD{AM_STREAM_CONTROL});
    EXPECT_EQ(got.bytes, (std::vector<BYTE>{1, 2, 3}));
}

TEST_F(SamplePropertiesTest, QualityNoticesGoToTheSource) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(type_), S_OK);
    const auto control = rig.output.As<IQualityControl>(IID_IQualityControl);
    ASSERT_TRUE(control);
    EXPECT_EQ(control->Notify(rig.sink.Get(), Quality{Famine, 900, 5, 6}), S_OK);
    ASSERT_EQ(rig.source->pin().notices().size(), 1u);
    EXPECT_EQ(rig.source->pin().notices()[0].quality.Proportion, 900);
    EXPECT_EQ(rig.source->pin().notices()[0].sender, rig.filter.Get());
}

}  // namespace
