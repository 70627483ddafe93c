// Stop, flush and queries from other threads while a sample is inside the sink.
#include <atomic>
#include <thread>

#include "tests/dshow/transform_probe.h"

using namespace tavo_test;

namespace {

class TransformThreads : public TransformTest {
  protected:
    // Returns once a sample is held inside the sink.
    void HoldASample() {
        ConnectBoth();
        PauseAll();
        sink_->pin().HoldReceive();
        streaming_ = std::thread([this] { result_ = source_->pin().Deliver({.bytes = bytes_}); });
        ASSERT_TRUE(sink_->pin().WaitUntilHeld());
    }

    std::thread streaming_;
    HRESULT result_ = E_PENDING;
};

TEST_F(TransformThreads, StopWaitsForTheSampleInProgress) {
    HoldASample();
    std::atomic<bool> stopped = false;
    std::thread stopper([&] {
        EXPECT_EQ(filter_->Stop(), S_OK);
        stopped = true;
    });
    Sleep(200);
    EXPECT_FALSE(stopped);
    EXPECT_EQ(filter_->m_State, State_Paused);  // shows nothing of the stop yet
    EXPECT_EQ(filter_->log.Count("StopStreaming"), 0);
    sink_->pin().ReleaseReceive();
    stopper.join();
    streaming_.join();
    EXPECT_EQ(result_, S_OK);
    EXPECT_EQ(filter_->m_State, State_Stopped);
    EXPECT_EQ(filter_->log.Count("StopStreaming"), 1);
    auto late = TestSample::Create({.size = 96});
    EXPECT_EQ(source_->pin().Deliver(late.Get()), VFW_E_WRONG_STATE);
}

TEST_F(TransformThreads, FlushReachesTheSinkWhileASampleIsHeld) {
    HoldASample();
    EXPECT_EQ(source_->pin().SendBeginFlush(), S_OK);  // releases the sample, as renderers do
    streaming_.join();
    EXPECT_EQ(result_, S_FALSE);
    EXPECT_EQ(source_->pin().Deliver({.bytes = bytes_}), S_FALSE);
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.bytes = bytes_}), S_OK);
    EXPECT_EQ(sink_->pin().samples().size(), 1u);
    EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
}

TEST_F(TransformThreads, QueriesGoThroughWhileASampleIsHeld) {
    HoldASample();
    FILTER_STATE state;
    EXPECT_EQ(filter_->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    EXPECT_TRUE(filter_->IsActive());
    AM_MEDIA_TYPE type = {};
    EXPECT_EQ(filter_->input()->ConnectionMediaType(&type), S_OK);
    FreeMediaType(type);
    EXPECT_EQ(filter_->input()->QueryAccept(type_.Get()), S_OK);
    EXPECT_EQ(source_->pin().SendNewSegment(0, 1, 1), S_OK);
    EXPECT_EQ(filter_->SetSyncSource(nullptr), NOERROR);
    sink_->pin().ReleaseReceive();
    streaming_.join();
}

TEST_F(TransformThreads, EndOfStreamWaitsForTheSample) {
    HoldASample();
    std::thread ender([&] { EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK); });
    Sleep(150);
    EXPECT_EQ(filter_->log.Count("EndOfStream"), 0);
    sink_->pin().ReleaseReceive();
    ender.join();
    streaming_.join();
    EXPECT_EQ(filter_->log.Count("EndOfStream"), 1);
}

TEST_F(TransformThreads, StopFreesAThreadThatWaitsForABuffer) {
    ConnectBoth();
    PauseAll();
    ComPtr<IMediaSample> taken;
    ASSERT_EQ(sinkAllocator()->GetBuffer(taken.Put(), nullptr, nullptr, 0), S_OK);
    streaming_ = std::thread([this] { result_ = source_->pin().Deliver({.bytes = bytes_}); });
    while (sinkAllocator()->requests().size() < 2) Sleep(5);
    // The sink lets go first, as graphs stop from the renderer upwards.
    EXPECT_EQ(sinkAllocator()->Decommit(), S_OK);
    EXPECT_EQ(filter_->Stop(), S_OK);
    streaming_.join();
    EXPECT_EQ(result_, VFW_E_NOT_COMMITTED);
}

TEST_F(TransformThreads, ManyStopsAndFlushesWhileStreaming) {
    ConnectBoth();
    std::atomic<bool> done = false;
    std::atomic<int> delivered = 0;
    auto sample = TestSample::Create({.size = 96});
    PauseAll();
    streaming_ = std::thread([&] {
        while (!done) {
            if (source_->pin().Deliver(sample.Get()) == S_OK) ++delivered;
            if (delivered % 16 == 0) source_->pin().SendEndOfStream();
            // Here no lock is held: where all share a processor, the others come to theirs.
            Sleep(0);
        }
    });
    std::thread flusher([&] {
        while (!done) {
            source_->pin().SendBeginFlush();
            source_->pin().SendEndFlush();
            source_->pin().SendNewSegment(0, 1, 1);
            Sleep(1);
        }
    });
    for (int i = 0; i < 60; ++i) {
        const int before = delivered;
        EXPECT_EQ(filter_->Run(0), S_OK);
        while (delivered == before) Sleep(1);
        EXPECT_EQ(filter_->Stop(), S_OK);
    }
    done = true;
    streaming_.join();
    flusher.join();
    EXPECT_GE(delivered, 60);
    EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
    EXPECT_EQ(filter_->log.Count("StartStreaming"), filter_->log.Count("StopStreaming"));
}

}  // namespace
