// What a new output type and a second start change while the stream runs, seen from inside.
#include <cstring>

#include "resample/kernel_table.h"
#include "tests/filter/support/inside_filter.h"
#include "tests/filter/support/multimedia_time.h"
#include "tests/support/hand_clock.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

class MidStreamTest : public InsideFilterTest {
  protected:
    MidStreamTest() : time_(GetModuleHandleW(nullptr)) {}

    // At 25 frames per second, by a clock of the graph's.
    void Start(FilterRig& rig) {
        rig.Use(owner);
        rig.settings->SetFrameRate(25.0);
        ASSERT_EQ(rig.filter->SetSyncSource(&clock_), S_OK);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        time_.Next({1000});
        ASSERT_EQ(rig.Start(), S_OK);
    }
    HRESULT Deliver(FilterRig& rig, int startMs, std::initializer_list<DWORD> readings) {
        time_.Next(readings);
        return rig.Deliver({.start = startMs * kMs,
                            .stop = (startMs + 40) * kMs,
                            .bytes = RandomFrame(format_, 64, 48)});
    }
    void End(FilterRig& rig) {
        EXPECT_EQ(rig.Stop(), S_OK);
        EXPECT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
        EXPECT_EQ(clock_.references, 1);
    }
    // Of the module, the system and the regulator.
    std::vector<double> Statistics() const {
        std::vector<double> values(3, -1.0);
        inside->GetModuleTime(&values[0]);
        inside->GetSystemFps(&values[1]);
        inside->GetGenerateFps(&values[2]);
        return values;
    }

    const PixelFormat& format_ = Format("YV12");
    HandClock clock_;
    MultimediaTime time_;
};

TEST_F(MidStreamTest, AnOutputTypeStartsTheStatisticsAnew) {
    FilterRig rig;
    Start(rig);
    EXPECT_EQ(Deliver(rig, 0, {1090, 1100}), S_OK);
    EXPECT_EQ(Deliver(rig, 80, {1160, 1200}), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{25.0, 10.0, 10.0}));
    const CMediaType type = TypeFor("YV12");
    EXPECT_EQ(inside->SetMediaType(PINDIR_OUTPUT, &type), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{0.0, 0.0, 0.0}));
    // The time goes on from the start of the stream.
    EXPECT_EQ(Deliver(rig, 0, {1393, 1400}), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{7.0, 2.5, 2.5}));
    End(rig);
}

TEST_F(MidStreamTest, AnOutputTypeStartsTheSlotsAnew) {
    FilterRig rig;
    Start(rig);
    EXPECT_EQ(Deliver(rig, 0, {}), S_OK);
    EXPECT_EQ(Deliver(rig, 80, {}), S_OK);
    EXPECT_EQ(rig.samples().back().start, 40 * kMs);
    rig.sink->pin().ClearSamples();
    const CMediaType type = TypeFor("YV12");
    EXPECT_EQ(inside->SetMediaType(PINDIR_OUTPUT, &type), S_OK);
    EXPECT_EQ(Deliver(rig, 120, {}), S_OK);
    const std::vector<ReceivedSample> samples = rig.samples();
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].start, 0);
    EXPECT_EQ(samples[2].stop, 120 * kMs);
    End(rig);
}

TEST_F(MidStreamTest, ASecondStartCountsAnew) {
    FilterRig rig;
    Start(rig);
    EXPECT_EQ(Deliver(rig, 0, {1090, 1100}), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{10.0, 10.0, 10.0}));
    time_.Next({2000});
    EXPECT_EQ(inside->StartStreaming(), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{0.0, 0.0, 0.0}));
    EXPECT_EQ(Deliver(rig, 0, {2195, 2200}), S_OK);
    EXPECT_EQ(Statistics(), (std::vector<double>{5.0, 5.0, 5.0}));
    EXPECT_EQ(time_.Periods(), "begin 1, ") << "raised once for both";
    End(rig);
    EXPECT_EQ(time_.Periods(), "begin 1, end 1, ");
}

TEST_F(MidStreamTest, AFilterThatGoesWithoutAStopLowersTheTimerPeriod) {
    inside->GetPin(0);
    EXPECT_EQ(inside->StartStreaming(), S_OK);
    owner.Reset();
    EXPECT_EQ(time_.Periods(), "begin 1, end 1, ");
}

TEST_F(MidStreamTest, EveryFilterFillsTheKernelTable) {
    constexpr size_t kBytes = sizeof tavo::KernelTable;
    std::vector<BYTE> filled(kBytes);
    std::memcpy(filled.data(), tavo::KernelTable, kBytes);
    for (int round = 0; round < 2; ++round) {
        for (auto& row : tavo::KernelTable) row[tavo::SlotAuto] = tavo::KernelEntry();
        ASSERT_NE(std::memcmp(filled.data(), tavo::KernelTable, kBytes), 0);
        owner.Reset();
        Make();
        EXPECT_EQ(std::memcmp(filled.data(), tavo::KernelTable, kBytes), 0);
    }
}

}  // namespace
