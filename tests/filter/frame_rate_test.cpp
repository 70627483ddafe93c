// The frame rate, as it is read back and as the offered type shows it, and the statistics.
#include <cfloat>
#include <cmath>
#include <limits>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"

using namespace tavo_test;

namespace {

class FrameRateTest : public FilterTest {};

constexpr REFERENCE_TIME kTypeDuration = 123456;

class RateRig : public FilterRig {
  public:
    RateRig() {
        VideoSpec spec = SpecOf(Format("YV12"), 64, 48);
        spec.timePerFrame = kTypeDuration;
        ConnectInput(MakeVideoType(spec));
    }
    double Rate() const {
        double fps = -1;
        settings->GetFrameRate(&fps);
        return fps;
    }
    REFERENCE_TIME OfferedDuration() const { return OfferedTypes().at(0).Video()->AvgTimePerFrame; }
};

TEST_F(FrameRateTest, ZeroAndNegativeRatesTurnTheRegulatorOff) {
    RateRig rig;
    for (const double fps : {0.0, -0.0, -5.0, -1e300}) {
        rig.settings->SetFrameRate(25.0);
        EXPECT_EQ(rig.OfferedDuration(), 400000);
        EXPECT_EQ(rig.settings->SetFrameRate(fps), 1);
        EXPECT_EQ(rig.Rate(), 0.0);
        EXPECT_EQ(rig.OfferedDuration(), kTypeDuration) << "the duration of the input stays";
    }
}

TEST_F(FrameRateTest, RatesThatNoDurationCanExpressCountAsOff) {
    RateRig rig;
    const double infinity = std::numeric_limits<double>::infinity();
    const double bad[] = {std::nan(""), -std::nan(""), infinity,     -infinity, 0.00999,
                          0.005,        DBL_MIN,       DBL_TRUE_MIN, 1.1e7,     1e8,
                          1e17,         1e19,          1e300,        DBL_MAX};
    for (const double fps : bad) {
        rig.settings->SetFrameRate(25.0);
        EXPECT_EQ(rig.settings->SetFrameRate(fps), 1);
        EXPECT_EQ(rig.Rate(), 0.0) << fps;
        EXPECT_EQ(rig.OfferedDuration(), kTypeDuration) << fps;
    }
}

struct RateCase {
    double fps;
    REFERENCE_TIME duration;
};

constexpr RateCase kRates[] = {
    {29.97, 333667},     {29.975, 333667},  {29.98, 333555}, {25.0, 400000},  {24.0, 416666},
    {23.976, 417188},    {30.0, 333333},    {59.94, 166833}, {60.0, 166666},  {0.01, 1000000000},
    {0.015, 1000000000}, {0.02, 500000000}, {1.0, 10000000}, {12.5, 800000},  {100.0, 100000},
    {1000.0, 10000},     {1e6, 10},         {1e7, 1},        {33.33, 300030}, {14.985, 667556},
};

TEST_F(FrameRateTest, DurationsCountInHundredthsOfAFrame) {
    RateRig rig;
    for (const RateCase& rate : kRates) {
        EXPECT_EQ(rig.settings->SetFrameRate(rate.fps), 1);
        EXPECT_EQ(rig.Rate(), rate.fps);
        EXPECT_EQ(rig.OfferedDuration(), rate.duration) << rate.fps;
    }
}

#if defined(__i386__)
uint16_t X87Control() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}
void SetX87Control(uint16_t word) { asm volatile("fldcw %0" : : "m"(word)); }

TEST_F(FrameRateTest, DurationsDoNotDependOnThePrecisionThatTheHostLeft) {
    RateRig rig;
    const uint16_t saved = X87Control();
    for (const uint16_t word : {0x007f, 0x027f, 0x037f, 0x077f, 0x0b7f, 0x0e7f}) {
        for (const RateCase& rate : kRates) {
            SetX87Control(word);
            rig.settings->SetFrameRate(rate.fps);
            const uint16_t left = X87Control();
            SetX87Control(saved);
            EXPECT_EQ(left & 0x0f7f, word) << "the control word is the host's";
            EXPECT_EQ(rig.OfferedDuration(), rate.duration) << rate.fps << " under " << word;
        }
    }
}
#endif

TEST_F(FrameRateTest, TheDurationIsWrittenIntoEitherFormatBlock) {
    FilterRig rig;
    rig.settings->SetFrameRate(50.0);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("UYVY"), 64, 48, FORMAT_VideoInfo2)), S_OK);
    EXPECT_EQ(rig.OfferedTypes().at(0).Video2()->AvgTimePerFrame, 200000);
}

struct Statistics {
    double moduleTime = -1;
    double systemFps = -1;
    double generateFps = -1;

    explicit Statistics(FilterRig& rig) {
        EXPECT_EQ(rig.settings->GetModuleTime(&moduleTime), 1);
        EXPECT_EQ(rig.settings->GetSystemFps(&systemFps), 1);
        EXPECT_EQ(rig.settings->GetGenerateFps(&generateFps), 1);
    }
};

// The rates that a count of frames can have, given what is known of the time they took.
struct RateBounds {
    double low;
    double high;
};

class StatisticsTest : public FilterTest {
  protected:
    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 720;

    // Starts the rig and delivers frames until the last but one is that old; ten at least.
    void Stream(FilterRig& rig, DWORD milliseconds = 400) {
        const std::vector<BYTE> frame = RandomFrame(Format("YV12"), kWidth, kHeight);
        frames = 0;
        beforeStart = timeGetTime();
        ASSERT_EQ(rig.Start(), S_OK);
        afterStart = timeGetTime();
        do {
            beforeLast = timeGetTime();
            const REFERENCE_TIME start = frames * REFERENCE_TIME{400000};
            ASSERT_EQ(rig.Deliver({.start = start, .stop = start + 400000, .bytes = frame}), S_OK);
            ++frames;
        } while (beforeLast - afterStart < milliseconds || frames < 10);
        afterLast = timeGetTime();
    }

    // Two milliseconds for the grain of the clock.
    RateBounds RateOf(double count) const {
        return {count * 1000 / (afterLast - beforeStart + 2),
                count * 1000 / (beforeLast - afterStart - 2)};
    }

    int frames = 0;
    DWORD beforeStart = 0;
    DWORD afterStart = 0;
    DWORD beforeLast = 0;
    DWORD afterLast = 0;
};

TEST_F(StatisticsTest, AllAreZeroBeforeAnyFrame) {
    FilterRig rig({.keepBytes = false});
    rig.settings->SetFrameRate(25.0);
    Statistics unconnected(rig);
    EXPECT_EQ(unconnected.moduleTime, 0.0);
    EXPECT_EQ(unconnected.systemFps, 0.0);
    EXPECT_EQ(unconnected.generateFps, 0.0);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), kWidth, kHeight)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    Sleep(20);
    Statistics started(rig);
    EXPECT_EQ(started.moduleTime, 0.0);
    EXPECT_EQ(started.systemFps, 0.0);
    EXPECT_EQ(started.generateFps, 0.0);
}

TEST_F(StatisticsTest, CountFramesAgainstTheClock) {
    FilterRig rig({.keepBytes = false});
    rig.settings->SetOutputSize(1000, 700);
    rig.settings->SetScaleMethod(VantrelMethodBilinear);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), kWidth, kHeight)), S_OK);
    Stream(rig);
    Statistics now(rig);
    EXPECT_GT(now.moduleTime, 0.0);
    EXPECT_LE(now.moduleTime * frames, afterLast - afterStart + 2);
    EXPECT_GE(now.systemFps, RateOf(frames).low);
    EXPECT_LE(now.systemFps, RateOf(frames).high);
    EXPECT_EQ(now.generateFps, 0.0) << "the regulator is off";
}

TEST_F(StatisticsTest, GenerateFpsCountsDeliveredFramesOfTheRegulator) {
    FilterRig rig({.keepBytes = false});
    rig.settings->SetFrameRate(50.0);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), kWidth, kHeight)), S_OK);
    Stream(rig);
    Statistics now(rig);
    const auto delivered = static_cast<double>(rig.samples().size());
    EXPECT_GT(delivered, 1.5 * frames) << "every frame at 25 becomes two at 50";
    EXPECT_GE(now.generateFps, RateOf(delivered).low);
    EXPECT_LE(now.generateFps, RateOf(delivered).high);
    EXPECT_LT(now.systemFps, now.generateFps) << "repeated frames are not scaled again";
    rig.settings->SetFrameRate(0.0);
    EXPECT_EQ(Statistics(rig).generateFps, 0.0);
}

TEST_F(StatisticsTest, AllReadZeroAfterTheStop) {
    FilterRig rig({.keepBytes = false});
    rig.settings->SetFrameRate(50.0);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), kWidth, kHeight)), S_OK);
    Stream(rig, 100);
    EXPECT_GT(Statistics(rig).systemFps, 0.0);
    ASSERT_EQ(rig.Stop(), S_OK);
    Statistics stopped(rig);
    EXPECT_EQ(stopped.moduleTime, 0.0);
    EXPECT_EQ(stopped.systemFps, 0.0);
    EXPECT_EQ(stopped.generateFps, 0.0);
}

TEST_F(StatisticsTest, EveryStartCountsAnew) {
    FilterRig rig({.keepBytes = false});
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), kWidth, kHeight)), S_OK);
    Stream(rig, 100);
    ASSERT_EQ(rig.Stop(), S_OK);
    Sleep(300);
    Stream(rig, 300);
    EXPECT_GE(Statistics(rig).systemFps, RateOf(frames).low)
        << "the pause between the two does not count";
    EXPECT_LE(Statistics(rig).systemFps, RateOf(frames).high);
}

}  // namespace
