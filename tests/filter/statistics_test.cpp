// The statistics, to the last digit: the time stands in the test's hand.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/multimedia_time.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/hand_clock.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

class ExactStatisticsTest : public FilterTest {
  protected:
    ~ExactStatisticsTest() override { EXPECT_EQ(clock_.references, 1); }

    // With a clock of the graph's, so that the filter makes none, which would read the time as
    // well.
    void Start(FilterRig& rig, double fps, DWORD now) {
        rig.settings->SetFrameRate(fps);
        ASSERT_EQ(rig.filter->SetSyncSource(&clock_), S_OK);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 16, 8)), S_OK);
        time_.Next({now});
        ASSERT_EQ(rig.Start(), S_OK);
        ASSERT_EQ(time_.Left(), 0u);
    }
    void End(FilterRig& rig) {
        EXPECT_EQ(time_.Left(), 0u) << "each frame reads the time twice";
        EXPECT_EQ(rig.Stop(), S_OK);
        EXPECT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
    }
    HRESULT Deliver(FilterRig& rig, std::initializer_list<DWORD> readings) {
        time_.Next(readings);
        return rig.Deliver(frame_);
    }
    // One sample that lasts for so many slots at 50 frames per second.
    HRESULT DeliverSlots(FilterRig& rig, int slots, std::initializer_list<DWORD> readings) {
        time_.Next(readings);
        return rig.Deliver({.start = 0, .stop = (slots + 1) * 20 * kMs, .bytes = frame_});
    }

    static double ModuleTime(const FilterRig& rig) {
        double value = -1;
        EXPECT_EQ(rig.settings->GetModuleTime(&value), 1);
        return value;
    }
    static double SystemFps(const FilterRig& rig) {
        double value = -1;
        EXPECT_EQ(rig.settings->GetSystemFps(&value), 1);
        return value;
    }
    static double GenerateFps(const FilterRig& rig) {
        double value = -1;
        EXPECT_EQ(rig.settings->GetGenerateFps(&value), 1);
        return value;
    }

    const PixelFormat& format_ = Format("YV12");
    const std::vector<BYTE> frame_ = RandomFrame(format_, 16, 8);
    HandClock clock_;
    MultimediaTime time_;
};

TEST_F(ExactStatisticsTest, ModuleTimeIsTheMeanOfTheFrames) {
    FilterRig rig;
    Start(rig, 0.0, 1000);
    EXPECT_EQ(Deliver(rig, {1010, 1017}), S_OK);
    EXPECT_EQ(ModuleTime(rig), 7.0);
    EXPECT_EQ(Deliver(rig, {1020, 1040}), S_OK);
    EXPECT_EQ(ModuleTime(rig), 13.5);
    EXPECT_EQ(Deliver(rig, {1100, 1133}), S_OK);
    EXPECT_EQ(ModuleTime(rig), 20.0);
    EXPECT_EQ(time_.Readings(), 7);
    End(rig);
}

TEST_F(ExactStatisticsTest, AFailedFrameTakesTimeButIsNoFrame) {
    FilterRig rig;
    Start(rig, 0.0, 1000);
    EXPECT_EQ(Deliver(rig, {1010, 1020}), S_OK);
    time_.Next({1030, 1060});
    EXPECT_EQ(rig.Deliver({.freestanding = SampleConfig{.size = 10}}), E_FAIL);
    EXPECT_EQ(ModuleTime(rig), 40.0);
    EXPECT_EQ(Deliver(rig, {1200, 1200}), S_OK);
    EXPECT_EQ(ModuleTime(rig), 20.0);
    EXPECT_EQ(SystemFps(rig), 10.0) << "two frames in 200 ms";
    End(rig);
}

TEST_F(ExactStatisticsTest, ARepeatTakesTimeButIsNoFrame) {
    FilterRig rig;
    Start(rig, 50.0, 1000);
    EXPECT_EQ(DeliverSlots(rig, 5, {1000, 1008, 1010, 1011, 1020, 1022, 1030, 1033, 1040, 1050}),
              S_OK);
    EXPECT_EQ(rig.samples().size(), 5u);
    EXPECT_EQ(ModuleTime(rig), 8.0 + 1 + 2 + 3 + 10);
    EXPECT_EQ(SystemFps(rig), 20.0) << "one frame in 50 ms";
    EXPECT_EQ(GenerateFps(rig), 100.0) << "five slots in 50 ms";
    End(rig);
}

TEST_F(ExactStatisticsTest, TheTimeRunsFromTheStartToTheEndOfTheLastFrame) {
    FilterRig rig;
    Start(rig, 0.0, 5000);
    EXPECT_EQ(SystemFps(rig), 0.0);
    EXPECT_EQ(Deliver(rig, {5100, 5250}), S_OK);
    EXPECT_EQ(SystemFps(rig), 4.0);
    EXPECT_EQ(Deliver(rig, {5300, 5800}), S_OK);
    EXPECT_EQ(SystemFps(rig), 2.5);
    End(rig);
}

TEST_F(ExactStatisticsTest, TheTimeMayWrap) {
    FilterRig rig;
    Start(rig, 0.0, 0xffffff00);
    EXPECT_EQ(Deliver(rig, {0xfffffff0, 0x00000020}), S_OK);
    EXPECT_EQ(ModuleTime(rig), 48.0);
    EXPECT_EQ(Deliver(rig, {0x00000030, 0x00000090}), S_OK);
    EXPECT_EQ(SystemFps(rig), 5.0) << "two frames in 400 ms";
    End(rig);
}

TEST_F(ExactStatisticsTest, AFlushForgetsTheGeneratedFramesAtOnce) {
    FilterRig rig;
    Start(rig, 50.0, 1000);
    EXPECT_EQ(DeliverSlots(rig, 2, {1010, 1020, 1030, 1040}), S_OK);
    EXPECT_EQ(GenerateFps(rig), 50.0);
    EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(GenerateFps(rig), 0.0) << "not only with the next sample";
    EXPECT_EQ(SystemFps(rig), 25.0);
    EXPECT_EQ(ModuleTime(rig), 20.0);
    EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(DeliverSlots(rig, 1, {1090, 1100}), S_OK);
    EXPECT_EQ(GenerateFps(rig), 10.0);
    End(rig);
}

}  // namespace
