// What the filter asks of the platform to keep time: the period of its timer, and a clock of its
// own where the graph has none. A stopped filter holds neither.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/multimedia_time.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/hand_clock.h"

using namespace tavo_test;

namespace {

class TimerPeriodTest : public FilterTest {
  protected:
    void Connect(FilterRig& rig) { ASSERT_EQ(rig.Connect(TypeOf(format_, 16, 8)), S_OK); }
    // A sample without times: the clock says where it lies.
    HRESULT DeliverUntimed(FilterRig& rig) { return rig.Deliver(RandomFrame(format_, 16, 8)); }
    // Periods that were begun and have not been ended.
    int HeldPeriods() const {
        int held = 0;
        const std::string periods = time_.Periods();
        for (size_t at = 0; at < periods.size(); at = periods.find(',', at) + 2) {
            held += periods.compare(at, 5, "begin") == 0 ? 1 : -1;
        }
        return held;
    }

    const PixelFormat& format_ = Format("YV12");
    MultimediaTime time_;
};

TEST_F(TimerPeriodTest, IsAMillisecondFromStartToStop) {
    FilterRig rig;
    Connect(rig);
    EXPECT_EQ(time_.Periods(), "");
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(time_.Periods(), "begin 1, ");
    EXPECT_EQ(DeliverUntimed(rig), S_OK);
    ASSERT_EQ(rig.filter->Pause(), S_OK);
    ASSERT_EQ(rig.filter->Run(0), S_OK);
    EXPECT_EQ(time_.Periods(), "begin 1, ");
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(time_.Periods(), "begin 1, end 1, ");
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(time_.Periods(), "begin 1, end 1, begin 1, end 1, ");
}

TEST_F(TimerPeriodTest, NoClockOfItsOwnWhereNobodyNeedsOne) {
    HandClock clock;
    {
        FilterRig rig;
        Connect(rig);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(DeliverUntimed(rig), S_OK);
        ASSERT_EQ(rig.Stop(), S_OK);
        rig.settings->SetFrameRate(25.0);
        ASSERT_EQ(rig.filter->SetSyncSource(&clock), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(DeliverUntimed(rig), S_FALSE);
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        ASSERT_EQ(rig.Stop(), S_OK);
        ASSERT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
    }
    EXPECT_EQ(time_.Threads(), 0);
    EXPECT_EQ(time_.Periods(), "begin 1, end 1, begin 1, end 1, ");
    EXPECT_EQ(clock.references, 1);
}

TEST_F(TimerPeriodTest, ItsOwnClockIsMadeOnceAndGoesWithTheStop) {
    FilterRig rig;
    rig.settings->SetFrameRate(25.0);
    Connect(rig);
    for (int round = 1; round <= 3; ++round) {
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(time_.Threads(), round);
        EXPECT_EQ(HeldPeriods(), 2) << "the filter's and the clock's";
        for (int i = 0; i < 5; ++i) EXPECT_TRUE(SUCCEEDED(DeliverUntimed(rig)));
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        EXPECT_TRUE(SUCCEEDED(DeliverUntimed(rig)));
        EXPECT_EQ(time_.Threads(), round);
        ASSERT_EQ(rig.Stop(), S_OK);
        EXPECT_EQ(HeldPeriods(), 0);
    }
}

TEST_F(TimerPeriodTest, ItsOwnClockGoesWithTheStopAlsoWhenTheRegulatorIsOffByThen) {
    FilterRig rig;
    rig.settings->SetFrameRate(25.0);
    Connect(rig);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(HeldPeriods(), 2);
    rig.settings->SetFrameRate(0.0);
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(HeldPeriods(), 0);
}

TEST_F(TimerPeriodTest, ASourceThatGoesOnAfterItWasPartedStartsNothing) {
    FilterRig rig;
    rig.settings->SetFrameRate(25.0);
    Connect(rig);
    ASSERT_EQ(rig.input->Disconnect(), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(DeliverUntimed(rig), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(rig.source->pin().SendEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_TRUE(rig.samples().empty());
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(time_.Threads(), 0);
    EXPECT_EQ(HeldPeriods(), 0);
}

TEST_F(TimerPeriodTest, GoesWithAPauseThatFails) {
    FilterRig rig({.allocator = SinkAllocator::kOwn});
    rig.settings->SetFrameRate(25.0);
    Connect(rig);
    CallLog& allocator = rig.sink->pin().ownAllocator()->calls();
    allocator.Inject("Commit", E_OUTOFMEMORY);
    EXPECT_EQ(rig.filter->Pause(), E_OUTOFMEMORY);
    EXPECT_EQ(HeldPeriods(), 0);
    EXPECT_EQ(rig.filter->Run(0), E_OUTOFMEMORY);
    EXPECT_EQ(HeldPeriods(), 0);
    allocator.ClearInjections();
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_TRUE(SUCCEEDED(DeliverUntimed(rig)));
    EXPECT_EQ(HeldPeriods(), 2);
    ASSERT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(HeldPeriods(), 0);
}

TEST_F(TimerPeriodTest, AFlushOfAStoppedFilterMakesNoClock) {
    FilterRig rig;
    rig.settings->SetFrameRate(25.0);
    Connect(rig);
    const auto flush = [&] {
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    };
    flush();
    EXPECT_EQ(time_.Threads(), 0);
    EXPECT_EQ(time_.Periods(), "");
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Stop(), S_OK);
    flush();
    // Nor does a change of clocks, which moves the time that a flush has read.
    ASSERT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(time_.Threads(), 1);
    EXPECT_EQ(HeldPeriods(), 0);
}

}  // namespace
