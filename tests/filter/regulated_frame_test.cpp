// Frames while a frame rate is set: taken, repeated and dropped, their times and flags, and what
// start, stop and flush reset.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/support/hand_clock.h"

using namespace tavo_test;

namespace {

constexpr Size kSize = {16, 8};
constexpr REFERENCE_TIME kMillisecond = 10000;

class RegulatedFrameTest : public FilterTest {
  protected:
    const PixelFormat& format_ = Format("YV12");

    // A picture that can be told from every other by each of its bytes.
    std::vector<BYTE> Picture(int number) const {
        return std::vector<BYTE>(static_cast<size_t>(RuleFrameBytes(format_, 16, 8)),
                                 static_cast<BYTE>(number));
    }
    SampleSpec Sample(int number, int startMs, int stopMs) const {
        return {.start = startMs * kMillisecond,
                .stop = stopMs * kMillisecond,
                .syncPoint = false,
                .preroll = true,
                .bytes = Picture(number)};
    }
};

struct RegulatedRig : FilterRig {
    explicit RegulatedRig(double fps, const SinkConfig& sink = {}) : FilterRig(sink) {
        settings->SetFrameRate(fps);
        EXPECT_EQ(Connect(TypeOf(Format("YV12"), kSize.width, kSize.height)), S_OK);
        EXPECT_EQ(Start(), S_OK);
    }
    // The frames since the last call: picture, start and stop in milliseconds.
    struct Slot {
        int picture;
        double start;
        double stop;
        bool operator==(const Slot&) const = default;
    };
    std::vector<Slot> Slots() {
        std::vector<Slot> slots;
        for (const ReceivedSample& sample : samples()) {
            EXPECT_EQ(sample.timeResult, S_OK);
            const BYTE picture = sample.bytes.at(0);
            EXPECT_EQ(sample.bytes, std::vector<BYTE>(sample.bytes.size(), picture));
            EXPECT_EQ(sample.actualLength, kSize.width * kSize.height * 3 / 2);
            slots.push_back({picture, static_cast<double>(sample.start) / kMillisecond,
                             static_cast<double>(sample.stop) / kMillisecond});
        }
        sink->pin().ClearSamples();
        return slots;
    }
};

std::ostream& operator<<(std::ostream& out, const RegulatedRig::Slot& slot) {
    return out << slot.picture << "@" << slot.start << "-" << slot.stop;
}

using Slots = std::vector<RegulatedRig::Slot>;

TEST_F(RegulatedFrameTest, TheFirstSampleFillsTheSlotFromZero) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}}));
}

TEST_F(RegulatedFrameTest, ASlowerInputIsRepeated) {
    RegulatedRig rig(50.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 20}}));
    EXPECT_EQ(rig.Deliver(Sample(2, 40, 80)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{2, 20, 40}, {2, 40, 60}}));
    EXPECT_EQ(rig.Deliver(Sample(3, 80, 120)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{3, 60, 80}, {3, 80, 100}}));
}

TEST_F(RegulatedFrameTest, OfAFasterInputEveryOtherPictureIsNeverShown) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(0, 0, 20)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{0, 0, 40}}));
    // The first slot came early: the next one ends with the fourth sample.
    EXPECT_EQ(rig.Deliver(Sample(1, 20, 40)), S_FALSE);
    EXPECT_EQ(rig.Deliver(Sample(2, 40, 60)), S_FALSE);
    for (int i = 3; i < 11; i += 2) {
        EXPECT_EQ(rig.Deliver(Sample(i, i * 20, i * 20 + 20)), S_FALSE);
        EXPECT_EQ(rig.Slots(), Slots{});
        EXPECT_EQ(rig.Deliver(Sample(i + 1, i * 20 + 20, i * 20 + 40)), S_OK);
        EXPECT_EQ(rig.Slots(), (Slots{{i + 1, i * 20.0 - 20, i * 20.0 + 20}}));
    }
}

TEST_F(RegulatedFrameTest, AGapIsFilledWithTheKeptPicture) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    EXPECT_EQ(rig.Deliver(Sample(2, 200, 240)), S_OK);
    EXPECT_EQ(rig.Slots(),
              (Slots{{1, 0, 40}, {1, 40, 80}, {1, 80, 120}, {1, 120, 160}, {2, 160, 200}}));
    EXPECT_EQ(rig.Deliver(Sample(3, 240, 280)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{3, 200, 240}}));
}

TEST_F(RegulatedFrameTest, ADroppedSampleGivesSOkOnlyForADiscontinuity) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    SampleSpec dropped = Sample(2, 10, 40);
    EXPECT_EQ(rig.Deliver(dropped), S_FALSE);
    dropped.discontinuity = true;
    EXPECT_EQ(rig.Deliver(dropped), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}}));
}

TEST_F(RegulatedFrameTest, FlagsAreFixedAndMediaTimesCountFrames) {
    RegulatedRig rig(50.0);
    SampleSpec spec = Sample(1, 0, 100);
    spec.discontinuity = true;
    spec.mediaStart = 777;
    spec.mediaEnd = 888;
    EXPECT_EQ(rig.Deliver(spec), S_OK);
    const auto samples = rig.samples();
    ASSERT_EQ(samples.size(), 4u);
    for (size_t i = 0; i < samples.size(); ++i) {
        EXPECT_TRUE(samples[i].syncPoint);
        EXPECT_FALSE(samples[i].preroll);
        EXPECT_FALSE(samples[i].discontinuity);
        EXPECT_EQ(samples[i].mediaTimeResult, S_OK);
        EXPECT_EQ(samples[i].mediaStart, static_cast<LONGLONG>(i));
        EXPECT_EQ(samples[i].mediaEnd, static_cast<LONGLONG>(i) + 1);
    }
    rig.sink->pin().ClearSamples();
    EXPECT_EQ(rig.Deliver(Sample(2, 100, 140)), S_OK);
    EXPECT_EQ(rig.samples().at(0).mediaTimeResult, VFW_E_MEDIA_TIME_NOT_SET);
}

TEST_F(RegulatedFrameTest, RepeatedFramesAreScaledFrames) {
    FilterRig rig;
    rig.settings->SetFrameRate(50.0);
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const std::vector<BYTE> frame = RandomFrame(format_, 64, 48);
    ASSERT_EQ(rig.Deliver({.start = 0, .stop = 1000000, .bytes = frame}), S_OK);
    const Expected want = NearestPlanar(format_, frame, {64, 48}, {40, 36});
    ASSERT_EQ(rig.samples().size(), 4u);
    for (const ReceivedSample& sample : rig.samples()) EXPECT_TRUE(Matches(want, sample.bytes));
}

TEST_F(RegulatedFrameTest, RatesThatCountAsOffPassSamplesAsTheyAre) {
    for (const double fps : {0.0, -1.0, 0.001, 1e12}) {
        RegulatedRig rig(fps);
        for (int i = 1; i < 4; ++i) EXPECT_EQ(rig.Deliver(Sample(i, i * 10, i * 10 + 3)), S_OK);
        EXPECT_EQ(rig.Slots(), (Slots{{1, 10, 13}, {2, 20, 23}, {3, 30, 33}}));
    }
}

TEST_F(RegulatedFrameTest, AChangedRateCountsFromTheNextSlot) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    rig.settings->SetFrameRate(100.0);
    EXPECT_EQ(rig.Deliver(Sample(2, 40, 100)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}, {1, 70, 80}, {1, 80, 90}}))
        << "the next slot keeps the end that the old rate gave it";
    rig.settings->SetFrameRate(0.0);
    EXPECT_EQ(rig.Deliver(Sample(3, 100, 140)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{3, 100, 140}}));
}

TEST_F(RegulatedFrameTest, AFlushBeginsAnew) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 200)), S_OK);
    EXPECT_EQ(rig.Slots().size(), 4u);
    EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(rig.Deliver(Sample(9, 0, 40)), S_FALSE);
    EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(rig.Deliver(Sample(2, 0, 40)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{2, 0, 40}}));
}

TEST_F(RegulatedFrameTest, AStopBeginsAnew) {
    RegulatedRig rig(25.0);
    for (int round = 1; round < 4; ++round) {
        EXPECT_EQ(rig.Deliver(Sample(round, 0, 100)), S_OK);
        EXPECT_EQ(rig.Slots(), (Slots{{round, 0, 40}, {round, 40, 80}}));
        ASSERT_EQ(rig.Stop(), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
    }
}

TEST_F(RegulatedFrameTest, APauseKeepsTheSlots) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    ASSERT_EQ(rig.filter->Pause(), S_OK);
    EXPECT_EQ(rig.Deliver(Sample(2, 80, 120)), S_OK);
    ASSERT_EQ(rig.filter->Run(0), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}, {2, 40, 80}}));
}

// A sample that counts what it is asked.
class AskedSample final : public TestSample {
  public:
    using TestSample::TestSample;
    STDMETHODIMP IsSyncPoint() override {
        asked += "sync ";
        return TestSample::IsSyncPoint();
    }
    STDMETHODIMP IsPreroll() override {
        asked += "preroll ";
        return TestSample::IsPreroll();
    }
    STDMETHODIMP IsDiscontinuity() override {
        asked += "discontinuity ";
        return TestSample::IsDiscontinuity();
    }
    std::string asked;
};

TEST_F(RegulatedFrameTest, EverySampleIsAskedForItsFlagsOnce) {
    RegulatedRig rig(50.0);
    const SampleConfig config = {.size = static_cast<long>(RuleFrameBytes(format_, 16, 8))};
    auto* const sample = new AskedSample(config);
    sample->Revive();
    const auto owner = ComPtr<TestSample>::Adopt(sample);
    // Three slots, then none.
    for (const HRESULT result : {S_OK, S_FALSE}) {
        sample->asked.clear();
        sample->SetTimes(0, 80 * kMillisecond);
        EXPECT_EQ(rig.source->pin().Deliver(sample), result);
        EXPECT_EQ(sample->asked, "sync preroll discontinuity ");
    }
    EXPECT_EQ(rig.samples().size(), 3u);
}

TEST_F(RegulatedFrameTest, AFailingSinkDoesNotEndTheSlots) {
    RegulatedRig rig(25.0);
    rig.sink->pin().calls().Inject("Receive", E_FAIL, 2, 1);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 180)), S_OK) << "the last slot's result counts";
    EXPECT_EQ(rig.sink->pin().calls().Count("Receive"), 4);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}, {1, 120, 160}}));
}

TEST_F(RegulatedFrameTest, ARepeatIntoASampleThatIsTooSmallFails) {
    RegulatedRig rig(25.0, {.allocator = SinkAllocator::kOwn});
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    ASSERT_EQ(rig.filter->Pause(), S_OK);
    // The allocator hands out short buffers from its next commit on.
    rig.sink->pin().ownAllocator()->SetConfig({.claimedSize = 10});
    ASSERT_EQ(rig.sink->pin().ownAllocator()->Decommit(), S_OK);
    ASSERT_EQ(rig.sink->pin().ownAllocator()->Commit(), S_OK);
    EXPECT_EQ(rig.Deliver(Sample(2, 200, 240)), E_FAIL);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}}));
}

TEST_F(RegulatedFrameTest, WithoutAKeptFrameNothingIsRepeated) {
    RegulatedRig rig(25.0);
    SampleSpec bad = Sample(1, 0, 200);
    bad.bytes.clear();
    bad.freestanding = SampleConfig{.size = 10};
    EXPECT_EQ(rig.Deliver(bad), E_FAIL) << "no slot of it has a picture";
    EXPECT_EQ(rig.Slots(), Slots{});
    EXPECT_EQ(rig.Deliver(Sample(2, 240, 280)), S_OK);
    for (const RegulatedRig::Slot& slot : rig.Slots()) EXPECT_EQ(slot.picture, 2);
}

TEST_F(RegulatedFrameTest, AKeptFrameThatATypeTookAwayIsNotRepeated) {
    RegulatedRig rig(25.0);
    EXPECT_EQ(rig.Deliver(Sample(1, 0, 40)), S_OK);
    EXPECT_EQ(rig.Slots(), (Slots{{1, 0, 40}}));
    rig.settings->SetVideoType(3);  // lets a type without a size pass
    SampleSpec lost = Sample(2, 40, 60);
    lost.type = MakePartialType(MEDIATYPE_Video, SubtypeOf(format_), FORMAT_None);
    EXPECT_TRUE(FAILED(rig.Deliver(lost)));
    SampleSpec found = Sample(3, 240, 280);
    found.type = TypeOf(format_, kSize.width, kSize.height);
    rig.Deliver(found);
    for (const RegulatedRig::Slot& slot : rig.Slots())
        EXPECT_TRUE(slot.picture == 1 || slot.picture == 3) << slot;
}

TEST_F(RegulatedFrameTest, ASampleWithoutTimesIsPlacedByTheClockOfTheGraph) {
    HandClock clock;
    clock.now = 5000 * kMillisecond;
    {
        FilterRig rig;
        rig.settings->SetFrameRate(25.0);
        ASSERT_EQ(rig.filter->SetSyncSource(&clock), S_OK);
        ASSERT_EQ(rig.Connect(TypeOf(format_, kSize.width, kSize.height)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        clock.now = 5030 * kMillisecond;
        ASSERT_EQ(rig.Deliver(SampleSpec{.bytes = Picture(1)}), S_OK);
        ASSERT_EQ(rig.samples().size(), 1u);
        EXPECT_EQ(rig.samples()[0].start, 0);
        EXPECT_EQ(rig.samples()[0].stop, 40 * kMillisecond);
        // From 90 to 130: the slot that ends at 120 is the first that the sample reaches into.
        clock.now = 5130 * kMillisecond;
        ASSERT_EQ(rig.Deliver(SampleSpec{.bytes = Picture(2)}), S_OK);
        const auto samples = rig.samples();
        ASSERT_EQ(samples.size(), 3u);
        EXPECT_EQ(samples[1].start, 40 * kMillisecond);
        EXPECT_EQ(samples[1].bytes.at(0), 1);
        EXPECT_EQ(samples[2].start, 80 * kMillisecond);
        EXPECT_EQ(samples[2].bytes.at(0), 2);
        // A start alone is no time either.
        clock.now = 5150 * kMillisecond;
        EXPECT_EQ(rig.Deliver({.start = 9000000, .bytes = Picture(3)}), S_FALSE);
        EXPECT_EQ(rig.samples().size(), 3u);
        rig.Stop();
        ASSERT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
    }
    EXPECT_EQ(clock.references, 1);
}

TEST_F(RegulatedFrameTest, WithoutAClockOfTheGraphTheFilterUsesItsOwn) {
    for (int round = 0; round < 3; ++round) {
        const DWORD began = timeGetTime();
        RegulatedRig rig(100.0);
        EXPECT_TRUE(SUCCEEDED(rig.Deliver(SampleSpec{.bytes = Picture(1)})));
        Sleep(100);
        ASSERT_EQ(rig.Deliver(SampleSpec{.bytes = Picture(2)}), S_OK);
        const double elapsed = timeGetTime() - began;
        const Slots slots = rig.Slots();
        EXPECT_GE(slots.size(), 8u);
        EXPECT_LE(slots.size() * 10.0, elapsed + 30);
        for (size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i].start, i * 10.0);
        EXPECT_EQ(rig.Stop(), S_OK);
    }
}

}  // namespace
