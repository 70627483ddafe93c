// States of the transform filter with every set of connected pins.
#include <atomic>
#include <thread>

#include "tests/dshow/fakes.h"
#include "tests/dshow/transform_probe.h"

using namespace tavo_test;

namespace {

class TransformState : public TransformTest {
  protected:
    int Sent(const char* name) { return sink_->pin().calls().Count(name); }
};

TEST_F(TransformState, WithoutPinsAtAll) {
    ComPtr<ProbeTransform> bare = MakeTransform();
    EXPECT_EQ(bare->Pause(), NOERROR);
    EXPECT_EQ(bare->m_State, State_Paused);
    EXPECT_EQ(bare->Run(0), NOERROR);
    EXPECT_EQ(bare->m_State, State_Running);
    EXPECT_EQ(bare->Pause(), NOERROR);
    EXPECT_EQ(bare->m_State, State_Paused);
    EXPECT_EQ(bare->Stop(), NOERROR);
    EXPECT_EQ(bare->m_State, State_Stopped);
    EXPECT_EQ(bare->Stop(), NOERROR);
    EXPECT_EQ(bare->log.Text(), "");
}

TEST_F(TransformState, Unconnected) {
    filter_->GetPin(0);
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_TRUE(filter_->m_bEOSDelivered);
    EXPECT_EQ(filter_->Run(0), NOERROR);
    EXPECT_EQ(filter_->Stop(), NOERROR);
    EXPECT_FALSE(filter_->m_bEOSDelivered);
    EXPECT_EQ(filter_->log.Text(), "");
}

TEST_F(TransformState, OnlyTheInput) {
    MakeSource({.choice = AllocatorChoice::kOwnOnly});
    ASSERT_EQ(ConnectInput(), S_OK);
    filter_->log.Clear();
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(filter_->m_State, State_Paused);
    EXPECT_EQ(filter_->Run(0), NOERROR);
    EXPECT_EQ(filter_->m_State, State_Running);
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(filter_->Stop(), NOERROR);
    EXPECT_EQ(filter_->log.Text(), "");  // no StartStreaming, no StopStreaming
    EXPECT_FALSE(filter_->m_bEOSDelivered);
    // Nothing was made inactive.
    EXPECT_EQ(source_->pin().testAllocator()->calls().Count("Decommit"), 0);
}

TEST_F(TransformState, OnlyTheOutputSendsTheEndOnce) {
    ConnectBoth();
    ASSERT_EQ(filter_->input()->Disconnect(), S_OK);
    ASSERT_EQ(source_->pin().Disconnect(), S_OK);
    filter_->log.Clear();
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(Sent("EndOfStream"), 1);
    EXPECT_TRUE(filter_->m_bEOSDelivered);
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(filter_->Run(0), NOERROR);
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(Sent("EndOfStream"), 1);
    EXPECT_EQ(filter_->Stop(), NOERROR);
    EXPECT_FALSE(filter_->m_bEOSDelivered);
    sink_->pin().calls().Inject("EndOfStream", E_ABORT);
    EXPECT_EQ(filter_->Run(0), NOERROR);  // by way of Pause; the sink's answer is dropped
    EXPECT_EQ(Sent("EndOfStream"), 2);
    EXPECT_EQ(filter_->Stop(), NOERROR);
    EXPECT_EQ(filter_->log.Count("StartStreaming") + filter_->log.Count("StopStreaming"), 0);
}

TEST_F(TransformState, BothConnected) {
    ConnectBoth();
    bool committedAtStart = true;
    FILTER_STATE stateAtStart = State_Running;
    filter_->onStart = [&] {
        committedAtStart = sinkAllocator()->committed();
        stateAtStart = filter_->m_State;
    };
    EXPECT_EQ(filter_->Pause(), S_OK);
    EXPECT_FALSE(committedAtStart);
    EXPECT_EQ(stateAtStart, State_Stopped);
    EXPECT_TRUE(sinkAllocator()->committed());
    EXPECT_EQ(filter_->m_State, State_Paused);
    EXPECT_EQ(filter_->Pause(), S_OK);
    EXPECT_EQ(filter_->Run(3), S_OK);
    EXPECT_EQ(filter_->m_State, State_Running);
    EXPECT_EQ(filter_->Pause(), S_OK);
    EXPECT_EQ(filter_->m_State, State_Paused);
    EXPECT_EQ(filter_->log.Text(), "StartStreaming");
    bool committedAtStop = true;
    filter_->onStop = [&] { committedAtStop = sinkAllocator()->committed(); };
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_FALSE(committedAtStop);
    EXPECT_EQ(filter_->log.Text(), "StartStreaming StopStreaming");
    EXPECT_EQ(filter_->m_State, State_Stopped);
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_EQ(filter_->log.Text(), "StartStreaming StopStreaming");
    EXPECT_EQ(filter_->Run(0), S_OK);
    EXPECT_EQ(filter_->log.Text(), "StartStreaming StopStreaming StartStreaming");
    EXPECT_EQ(Sent("EndOfStream"), 0);
}

TEST_F(TransformState, StartStreamingFails) {
    ConnectBoth();
    filter_->log.Inject("StartStreaming", E_ABORT, 1);
    EXPECT_EQ(filter_->Pause(), E_ABORT);
    EXPECT_EQ(filter_->m_State, State_Stopped);
    EXPECT_FALSE(sinkAllocator()->committed());
    filter_->log.Inject("StartStreaming", E_FAIL, 1);
    EXPECT_EQ(filter_->Run(0), E_FAIL);
    EXPECT_EQ(filter_->m_State, State_Stopped);
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_EQ(filter_->log.Count("StopStreaming"), 0);
    EXPECT_EQ(filter_->Pause(), S_OK);
}

TEST_F(TransformState, CommitFailsAfterStartStreaming) {
    ConnectBoth();
    sinkAllocator()->calls().Inject("Commit", E_OUTOFMEMORY, 1);
    EXPECT_EQ(filter_->Pause(), E_OUTOFMEMORY);
    EXPECT_EQ(filter_->m_State, State_Stopped);
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_EQ(filter_->log.Text(), "StartStreaming");
    EXPECT_EQ(filter_->Pause(), S_OK);  // a second start in a row
    EXPECT_EQ(filter_->log.Text(), "StartStreaming StartStreaming");
}

TEST_F(TransformState, StopStreamingFails) {
    ConnectBoth();
    EXPECT_EQ(filter_->Run(0), S_OK);
    filter_->log.Inject("StopStreaming", E_ABORT, 1);
    EXPECT_EQ(filter_->Stop(), E_ABORT);
    EXPECT_EQ(filter_->m_State, State_Running);
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_EQ(filter_->m_State, State_Stopped);
}

TEST_F(TransformState, InactiveResultsAreDropped) {
    MakeSource({.choice = AllocatorChoice::kOwnOnly});
    ConnectBoth();
    EXPECT_EQ(filter_->Pause(), S_OK);
    sinkAllocator()->calls().Inject("Decommit", E_ABORT, 1);
    source_->pin().testAllocator()->calls().Inject("Decommit", E_ABORT, 1);
    EXPECT_EQ(filter_->Stop(), S_OK);
    EXPECT_EQ(filter_->m_State, State_Stopped);
}

TEST_F(TransformState, PauseForgetsSkippedSamples) {
    ConnectBoth();
    for (const bool again : {false, true}) {
        filter_->m_bSampleSkipped = TRUE;
        filter_->m_bQualityChanged = TRUE;
        EXPECT_EQ(filter_->Pause(), S_OK) << again;
        EXPECT_FALSE(filter_->m_bSampleSkipped);
        EXPECT_FALSE(filter_->m_bQualityChanged);
    }
}

TEST_F(TransformState, LocksHeldAroundStartAndStopStreaming) {
    ConnectBoth();
    std::thread other;
    std::atomic<bool> entered = false;
    const auto expectLocked = [&](CCritSec* lock) {
        entered = false;
        other = std::thread([&, lock] {
            CAutoLock guard(lock);
            entered = true;
        });
        Sleep(120);
        EXPECT_FALSE(entered);
    };
    for (CCritSec* lock : {&filter_->m_csFilter, &filter_->m_csReceive}) {
        filter_->onStart = filter_->onStop = [&] { expectLocked(lock); };
        EXPECT_EQ(filter_->Pause(), S_OK);
        other.join();
        EXPECT_EQ(filter_->Stop(), S_OK);
        other.join();
    }
    filter_->onStart = filter_->onStop = nullptr;
}

TEST_F(TransformState, ConnectingWhilePaused) {
    MakeSource();
    MakeSink();
    filter_->outputs = {type_};
    EXPECT_EQ(filter_->Pause(), NOERROR);
    EXPECT_EQ(ConnectInput(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(ConnectOutput(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(filter_->Stop(), NOERROR);
    ConnectBoth();
    EXPECT_EQ(filter_->Pause(), S_OK);
    EXPECT_EQ(filter_->input()->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(filter_->output()->Disconnect(), VFW_E_NOT_STOPPED);
}

}  // namespace
