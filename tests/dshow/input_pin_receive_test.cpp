// CBaseInputPin: samples with and without properties, types on samples, refusals.
#include <thread>

#include "tests/dshow/input_pin_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(InputPinTest, ReceiveFillsPropertiesFromTheSample) {
    ConnectAndRun();
    auto sample = TestSample::Create({.size = 100});
    sample->SetTimes(5, 9);
    sample->SetStreamId(AM_STREAM_CONTROL);
    sample->SetTypeSpecificFlags(0x77);
    sample->SetDiscontinuity(TRUE);
    sample->SetActualDataLength(60);
    EXPECT_EQ(Receive(*sample), NOERROR);
    const AM_SAMPLE2_PROPERTIES& props = *pin_->SampleProps();
    EXPECT_EQ(props.cbData, sizeof(AM_SAMPLE2_PROPERTIES));
    EXPECT_EQ(props.dwTypeSpecificFlags, 0x77u);
    EXPECT_EQ(props.dwSampleFlags,
              DWORD(AM_SAMPLE_DATADISCONTINUITY | AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID));
    EXPECT_EQ(props.lActual, 60);
    EXPECT_EQ(props.tStart, 5);
    EXPECT_EQ(props.tStop, 9);
    EXPECT_EQ(props.dwStreamId, DWORD(AM_STREAM_CONTROL));
    EXPECT_EQ(props.pbBuffer, sample->data());
    EXPECT_EQ(props.cbBuffer, 100);
    EXPECT_EQ(sample->references(), 1);
    EXPECT_EQ(pin_->log.Text(), "");  // no type, nothing to check
}

TEST_F(InputPinTest, ReceiveFillsPropertiesByHand) {
    ConnectAndRun();
    auto sample = TestSample::Create({.size = 100, .sample2 = false});
    pin_->m_SampleProps.dwStreamId = 99;
    pin_->m_SampleProps.dwTypeSpecificFlags = 99;
    EXPECT_EQ(Receive(*sample), NOERROR);
    const AM_SAMPLE2_PROPERTIES& props = *pin_->SampleProps();
    EXPECT_EQ(props.cbData, sizeof(AM_SAMPLE2_PROPERTIES));
    EXPECT_EQ(props.dwSampleFlags, 0u);
    EXPECT_EQ(props.dwStreamId, DWORD(AM_STREAM_MEDIA));
    EXPECT_EQ(props.dwTypeSpecificFlags, 0u);
    EXPECT_EQ(props.pMediaType, nullptr);
    EXPECT_EQ(props.pbBuffer, sample->data());
    EXPECT_EQ(props.cbBuffer, 100);
    EXPECT_EQ(props.lActual, 100);
    sample->SetTimes(5, 9);
    sample->SetSyncPoint(TRUE);
    sample->SetPreroll(TRUE);
    sample->SetDiscontinuity(TRUE);
    EXPECT_EQ(Receive(*sample), NOERROR);
    EXPECT_EQ(props.dwSampleFlags,
              DWORD(AM_SAMPLE_SPLICEPOINT | AM_SAMPLE_PREROLL | AM_SAMPLE_DATADISCONTINUITY |
                    AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID));
    EXPECT_EQ(props.tStart, 5);
    EXPECT_EQ(props.tStop, 9);
    // A start alone counts as both: GetTime makes up the stop.
    sample->SetStartOnly(20);
    EXPECT_EQ(Receive(*sample), NOERROR);
    EXPECT_TRUE(props.dwSampleFlags & AM_SAMPLE_TIMEVALID);
    EXPECT_TRUE(props.dwSampleFlags & AM_SAMPLE_STOPVALID);
    EXPECT_EQ(props.tStart, 20);
    EXPECT_EQ(props.tStop, 21);
}

TEST_F(InputPinTest, ReceiveRefusesInItsOrder) {
    auto sample = TestSample::Create({.size = 10});
    EXPECT_EQ(pin_->Receive(nullptr), E_POINTER);
    EXPECT_EQ(Receive(*sample), VFW_E_WRONG_STATE);
    ConnectAndRun();
    pin_->BeginFlush();
    EXPECT_EQ(Receive(*sample), S_FALSE);
    pin_->EndFlush();
    EXPECT_EQ(Receive(*sample), S_OK);
}

// A sample whose properties cannot be had.
class BrokenSample final : public TestSample {
  public:
    using TestSample::TestSample;
    STDMETHODIMP GetProperties(DWORD, BYTE*) override { return E_ABORT; }
};

TEST_F(InputPinTest, FailureOfGetPropertiesIsReturned) {
    ConnectAndRun();
    auto* sample = new BrokenSample({.size = 10});
    sample->Revive();
    EXPECT_EQ(Receive(*sample), E_ABORT);
    EXPECT_EQ(sample->Release(), 0u);
}

TEST_F(InputPinTest, AcceptedTypeIsOnlyChecked) {
    ConnectAndRun();
    for (const bool sample2 : {true, false}) {
        auto sample = TestSample::Create({.size = 10, .sample2 = sample2});
        sample->AttachType(other_.Get());
        pin_->log.Clear();
        EXPECT_EQ(Receive(*sample), NOERROR);
        EXPECT_EQ(pin_->log.Text(), "CheckMediaType");
        EXPECT_EQ(MediaType(pin_->m_mt), type_);
        EXPECT_TRUE(pin_->SampleProps()->dwSampleFlags & AM_SAMPLE_TYPECHANGED);
        ASSERT_NE(pin_->SampleProps()->pMediaType, nullptr);
        EXPECT_EQ(MediaType(*pin_->SampleProps()->pMediaType), other_);
    }
}

TEST_F(InputPinTest, TypesTakenByHandDoNotLeak) {
    ConnectAndRun();
    auto plain = TestSample::Create({.size = 10, .sample2 = false});
    auto typed = TestSample::Create({.size = 10, .sample2 = false});
    typed->AttachType(other_.Get());
    const long before = LiveTaskBlocks();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Receive(*typed), NOERROR);
    EXPECT_LE(LiveTaskBlocks(), before + 2);  // one record and its block at most
    EXPECT_EQ(Receive(*plain), NOERROR);
    EXPECT_EQ(LiveTaskBlocks(), before);
}

TEST_F(InputPinTest, RefusedTypeEndsTheStream) {
    FakeGraph graph;
    host_->JoinFilterGraph(graph.graph(), nullptr);
    for (const bool sample2 : {true, false}) {
        ConnectAndRun();
        auto sample = TestSample::Create({.size = 10, .sample2 = sample2});
        auto plain = TestSample::Create({.size = 10, .sample2 = sample2});
        sample->AttachType(other_.Get());
        pin_->log.Inject("CheckMediaType", E_FAIL);
        EXPECT_EQ(Receive(*sample), VFW_E_INVALIDMEDIATYPE);
        EXPECT_TRUE(pin_->m_bRunTimeError);
        EXPECT_EQ(pin_->log.Text(), "CheckMediaType EndOfStream");
        ASSERT_EQ(graph.events.size(), 1u);
        EXPECT_EQ(graph.events[0].code, EC_ERRORABORT);
        EXPECT_EQ(graph.events[0].first, LONG_PTR(VFW_E_TYPE_NOT_ACCEPTED));
        EXPECT_EQ(graph.events[0].second, 0);
        EXPECT_EQ(Receive(*plain), VFW_E_RUNTIME_ERROR);
        pin_->BeginFlush();
        pin_->EndFlush();
        EXPECT_EQ(Receive(*plain), S_OK);
        graph.events.clear();
        pin_->log.ClearInjections();
        host_->Stop();
        pin_->Disconnect();
    }
    host_->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(InputPinTest, ReceiveMultipleStopsAtTheFirstRefusal) {
    ConnectAndRun();
    auto first = TestSample::Create({.size = 10});
    auto typed = TestSample::Create({.size = 10});
    typed->AttachType(other_.Get());
    IMediaSample* samples[] = {first.Get(), first.Get(), typed.Get(), first.Get()};
    long done = 77;
    EXPECT_EQ(pin_->ReceiveMultiple(samples, 2, &done), S_OK);
    EXPECT_EQ(done, 2);
    EXPECT_EQ(pin_->ReceiveMultiple(samples, 0, &done), S_OK);
    EXPECT_EQ(done, 0);
    EXPECT_EQ(pin_->ReceiveMultiple(nullptr, 2, &done), E_POINTER);
    pin_->log.Inject("CheckMediaType", S_FALSE);
    EXPECT_EQ(pin_->ReceiveMultiple(samples, 4, &done), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(done, 2);
    pin_->BeginFlush();
    EXPECT_EQ(pin_->ReceiveMultiple(samples, 4, &done), S_FALSE);
    EXPECT_EQ(done, 0);
    pin_->EndFlush();
}

TEST_F(InputPinTest, ReceiveTakesNoLock) {
    ConnectAndRun();
    auto sample = TestSample::Create({.size = 10});
    CAutoLock held(&host_->lock);
    std::thread([&] {
        EXPECT_EQ(Receive(*sample), S_OK);
        EXPECT_EQ(pin_->ReceiveCanBlock(), S_OK);
        ALLOCATOR_PROPERTIES wish = {};
        EXPECT_EQ(pin_->GetAllocatorRequirements(&wish), E_NOTIMPL);
        EXPECT_EQ(pin_->GetAllocator(nullptr), E_POINTER);
        EXPECT_EQ(pin_->NotifyAllocator(nullptr, FALSE), E_POINTER);
    }).join();
}

TEST_F(InputPinTest, ReceiveCanBlockAsksBehindTheOutputs) {
    EXPECT_EQ(pin_->ReceiveCanBlock(), S_OK);  // no connected output
    OutputPin* first = AddPin<OutputPin>(*host_);
    OutputPin* second = AddPin<OutputPin>(*host_);
    EXPECT_EQ(pin_->ReceiveCanBlock(), S_OK);
    auto sinkA = TestSink::Create({.receiveCanBlock = S_FALSE});
    auto sinkB = TestSink::Create({.receiveCanBlock = S_FALSE});
    ASSERT_EQ(first->Connect(&sinkA->pin(), type_.Get()), NOERROR);
    EXPECT_EQ(pin_->ReceiveCanBlock(), S_FALSE);
    ASSERT_EQ(second->Connect(&sinkB->pin(), type_.Get()), NOERROR);
    EXPECT_EQ(pin_->ReceiveCanBlock(), S_FALSE);
    for (const HRESULT answer : {S_OK, E_FAIL}) {
        sinkB->pin().config.receiveCanBlock = answer;
        EXPECT_EQ(pin_->ReceiveCanBlock(), S_OK);
    }
    sinkB->pin().config.receiveCanBlock = S_FALSE;
    sinkB->pin().config.memInputPin = false;
    EXPECT_EQ(pin_->ReceiveCanBlock(), S_OK);
    for (OutputPin* out : {first, second}) EXPECT_EQ(out->Disconnect(), S_OK);
    for (TestSink* sink : {sinkA.Get(), sinkB.Get()}) {
        sink->pin().Disconnect();
        EXPECT_EQ(sink->references(), 1);
    }
}

}  // namespace
