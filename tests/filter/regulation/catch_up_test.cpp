// A sample far ahead makes the regulator send every slot up to it. Whatever ends the stream ends
// that too, at once.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/patience.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// So many slots lie before it that merely to walk over them would take days.
constexpr int64_t kFarAhead = 200'000'000 * kHour;

// Nothing but counting: the sink keeps no record of the frames. It is not quick, so that there are
// not too many of them where the test has to wait for a processor.
SinkConfig CountingSink(std::atomic<int>& frames) {
    return {.onReceive = [&frames](IMediaSample*) {
        if (++frames > 1000) Sleep(1);
        return S_FALSE;
    }};
}

// Delivers a sample that lies far ahead, on a thread of its own.
class CatchUp {
  public:
    explicit CatchUp(TestSource& source)
        : thread_([this, &source] {
              ComApartment com;
              result = source.pin().Deliver(SpecOf(Timed(1, kFarAhead, kFarAhead + kMs)));
              over = true;
          }) {}
    ~CatchUp() {
        if (thread_.joinable()) thread_.join();
    }
    bool Ends() {
        return WaitUntil([this] { return over.load(); });
    }

    std::atomic<bool> over = false;
    std::atomic<HRESULT> result = E_PENDING;

  private:
    std::thread thread_;
};

class CatchUpTest : public FilterTest {
  protected:
    CatchUpTest() { checksTaskMemory_ = false; }

    void SetUp() override {
        FilterTest::SetUp();
        rig_ = std::make_unique<FilterRig>(CountingSink(frames_));
    }
    void TearDown() override {
        rig_.reset();
        FilterTest::TearDown();
    }
    void Start() {
        rig_->settings->SetFrameRate(25.0);
        ASSERT_EQ(rig_->Connect(ScenarioType()), S_OK);
        ASSERT_EQ(rig_->Start(), S_OK);
    }
    void WaitForFrames(int count) {
        ASSERT_TRUE(WaitUntil([this, count] { return frames_ >= count; }));
    }
    // What a sample at zero leads to: the first slot, if the regulator begins anew.
    void ExpectBeginsAnew() {
        std::vector<OutputFrame> frames;
        rig_->sink->pin().config.onReceive = [&frames](IMediaSample* sample) {
            frames.push_back(ReadFrame(sample));
            return S_OK;
        };
        EXPECT_EQ(rig_->Deliver(SpecOf(Timed(9, 0, 40 * kMs))), S_OK);
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(
            frames[0],
            (OutputFrame{
                .picture = 9, .time = {{0, 40 * kMs}}, .syncPoint = true, .mediaTime = {{0, 1}}}));
    }

    std::atomic<int> frames_ = 0;
    std::unique_ptr<FilterRig> rig_;
};

TEST_F(CatchUpTest, AStopEndsIt) {
    Start();
    for (int round = 0; round < 3; ++round) {
        frames_ = 0;
        CatchUp sample(*rig_->source);
        WaitForFrames(100);
        EXPECT_EQ(rig_->filter->Stop(), S_OK);
        const int sent = frames_;
        EXPECT_TRUE(sample.Ends());
        EXPECT_EQ(frames_, sent) << "the stop has waited for the last one";
        ASSERT_EQ(rig_->Stop(), S_OK);
        ASSERT_EQ(rig_->Start(), S_OK);
    }
    ExpectBeginsAnew();
}

TEST_F(CatchUpTest, AFlushEndsIt) {
    Start();
    for (int round = 0; round < 3; ++round) {
        frames_ = 0;
        CatchUp sample(*rig_->source);
        WaitForFrames(100);
        EXPECT_EQ(rig_->source->pin().SendBeginFlush(), S_OK);
        const int sent = frames_;
        EXPECT_TRUE(sample.Ends());
        EXPECT_LE(frames_, sent + 1) << "only the one that was under way";
        EXPECT_EQ(rig_->source->pin().SendEndFlush(), S_OK);
    }
    ExpectBeginsAnew();
}

// The flush is over before the frame that it met comes back from downstream.
TEST_F(CatchUpTest, AFlushThatIsAlreadyOverEndsIt) {
    rig_->sink->pin().config.flushReleasesHold = false;
    Start();
    rig_->sink->pin().HoldReceive();
    CatchUp sample(*rig_->source);
    ASSERT_TRUE(rig_->sink->pin().WaitUntilHeld());
    EXPECT_EQ(rig_->source->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(rig_->source->pin().SendEndFlush(), S_OK);
    rig_->sink->pin().ReleaseReceive();
    EXPECT_TRUE(sample.Ends());
    EXPECT_LE(frames_, 1) << "only the one that was under way";
    ExpectBeginsAnew();
}

TEST_F(CatchUpTest, SwitchingTheRegulatorOffEndsIt) {
    Start();
    CatchUp sample(*rig_->source);
    WaitForFrames(100);
    rig_->settings->SetFrameRate(0.0);
    const int sent = frames_;
    EXPECT_TRUE(sample.Ends());
    EXPECT_LE(frames_, sent + 1) << "only the one that was under way";
    EXPECT_EQ(sample.result, S_FALSE) << "what the sink said to the last frame";
}

TEST_F(CatchUpTest, ADisconnectAfterTheStopFindsNothingLeft) {
    Start();
    CatchUp sample(*rig_->source);
    WaitForFrames(10);
    ASSERT_EQ(rig_->Stop(), S_OK);
    EXPECT_TRUE(sample.Ends());
    rig_->DisconnectOutput();
    rig_->DisconnectInput();
}

}  // namespace
