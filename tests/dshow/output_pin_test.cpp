// CBaseOutputPin: the agreement on an allocator, its life, and delivery to the peer.
#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/test_sink.h"

using namespace tavo_test;

namespace {

class OutputPinTest : public DshowTest {
  protected:
    OutputPinTest() {
        pin_->types = {type_};
        pin_->log.Forward(&log_, "");
    }
    ~OutputPinTest() override {
        if (pin_->IsConnected()) {
            host_->Stop();
            EXPECT_EQ(pin_->Disconnect(), S_OK);
            EXPECT_EQ(sink_->pin().Disconnect(), S_OK);
        }
        EXPECT_EQ(pin_->m_pAllocator, nullptr);
        EXPECT_EQ(pin_->m_pInputPin, nullptr);
        EXPECT_EQ(RefCount(host_.Get()), 1u);
    }
    void MakeSink(const SinkConfig& config) {
        sink_ = TestSink::Create(config);
        sink_->pin().calls().Forward(&log_, "sink.");
    }
    HRESULT ConnectTo() { return pin_->Connect(&sink_->pin(), type_.Get()); }
    void ExpectNothingHeld() {
        EXPECT_FALSE(pin_->IsConnected());
        EXPECT_EQ(pin_->m_pAllocator, nullptr);
        EXPECT_EQ(pin_->m_pInputPin, nullptr);
        EXPECT_EQ(sink_->references(), 1);
    }

    const MediaType type_ = MakeVideoType({.width = 8, .height = 4});
    CallLog log_;
    ComPtr<TestSink> sink_;
    ComPtr<HostFilter> host_ = MakeHost();
    OutputPin* pin_ = AddPin<OutputPin>(*host_);
};

TEST_F(OutputPinTest, PeersAllocatorIsTakenWhenItSuits) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    ASSERT_EQ(ConnectTo(), NOERROR);
    EXPECT_EQ(log_.Text(),
              "CheckConnect CheckMediaType SetMediaType sink.ReceiveConnection CompleteConnect "
              "sink.GetAllocatorRequirements sink.GetAllocator DecideBufferSize "
              "sink.NotifyAllocator");
    EXPECT_EQ(pin_->m_pAllocator, sink_->pin().ownAllocator());
    EXPECT_EQ(sink_->pin().allocator(), pin_->m_pAllocator);
    EXPECT_FALSE(sink_->pin().readOnly());
    EXPECT_FALSE(sink_->pin().ownAllocator()->committed());
    EXPECT_EQ(pin_->m_pInputPin, static_cast<IMemInputPin*>(&sink_->pin()));
    EXPECT_EQ(sink_->references(), 3);  // m_Connected and m_pInputPin
}

TEST_F(OutputPinTest, OwnAllocatorWhenThePeerHasNone) {
    MakeSink({});
    ASSERT_EQ(ConnectTo(), NOERROR);
    EXPECT_EQ(pin_->log.Count("DecideBufferSize"), 1);
    EXPECT_EQ(pin_->log.Count("InitAllocator"), 1);
    EXPECT_NE(pin_->m_pAllocator, nullptr);
    EXPECT_EQ(sink_->pin().allocator(), pin_->m_pAllocator);
    ALLOCATOR_PROPERTIES granted = {};
    EXPECT_EQ(pin_->m_pAllocator->GetProperties(&granted), S_OK);
    EXPECT_EQ(granted.cbBuffer, 96);
    EXPECT_EQ(granted.cBuffers, 2);
}

TEST_F(OutputPinTest, RequirementsReachDecideBufferSize) {
    MakeSink(
        {.allocator = SinkAllocator::kOwn, .requirements = ALLOCATOR_PROPERTIES{5, 1000, 64, 8}});
    ASSERT_EQ(ConnectTo(), NOERROR);
    ASSERT_EQ(pin_->decided.size(), 1u);
    EXPECT_EQ(pin_->decided[0].cBuffers, 5);
    EXPECT_EQ(pin_->decided[0].cbBuffer, 1000);
    EXPECT_EQ(pin_->decided[0].cbAlign, 64);
    EXPECT_EQ(pin_->decided[0].cbPrefix, 8);
}

TEST_F(OutputPinTest, WithoutRequirementsTheRecordIsEmptyButForTheAlignment) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    ASSERT_EQ(ConnectTo(), NOERROR);
    ASSERT_EQ(pin_->decided.size(), 1u);
    EXPECT_EQ(pin_->decided[0].cBuffers, 0);
    EXPECT_EQ(pin_->decided[0].cbBuffer, 0);
    EXPECT_EQ(pin_->decided[0].cbAlign, 1);
    EXPECT_EQ(pin_->decided[0].cbPrefix, 0);
}

TEST_F(OutputPinTest, PeerRefusesItsOwnAllocatorOnce) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    sink_->pin().calls().Inject("NotifyAllocator", E_ABORT, 1);
    pin_->keepRecord = false;
    ASSERT_EQ(ConnectTo(), NOERROR);
    EXPECT_NE(pin_->m_pAllocator, sink_->pin().ownAllocator());
    EXPECT_EQ(sink_->pin().allocator(), pin_->m_pAllocator);
    ASSERT_EQ(pin_->decided.size(), 2u);
    EXPECT_EQ(pin_->decided[1].cbBuffer, 96);  // the record as the first call left it
    EXPECT_EQ(pin_->decided[1].cBuffers, 2);
    EXPECT_EQ(RefCount(sink_->pin().ownAllocator()), 1u);
}

TEST_F(OutputPinTest, DecideBufferSizeFailsOnThePeersAllocator) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    pin_->log.Inject("DecideBufferSize", E_ABORT, 1);
    ASSERT_EQ(ConnectTo(), NOERROR);
    EXPECT_EQ(pin_->log.Count("InitAllocator"), 1);
    EXPECT_EQ(sink_->pin().calls().Count("NotifyAllocator"), 1);
    EXPECT_NE(pin_->m_pAllocator, sink_->pin().ownAllocator());
}

TEST_F(OutputPinTest, EveryAllocatorRefused) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    sink_->pin().calls().Inject("NotifyAllocator", E_ABORT);
    EXPECT_EQ(ConnectTo(), E_ABORT);
    EXPECT_EQ(sink_->pin().calls().Count("NotifyAllocator"), 2);
    EXPECT_EQ(sink_->pin().calls().Count("Disconnect"), 1);
    EXPECT_FALSE(sink_->pin().connected());
    ExpectNothingHeld();
    EXPECT_EQ(RefCount(sink_->pin().ownAllocator()), 1u);
}

TEST_F(OutputPinTest, LastFailureIsTheResult) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    sink_->pin().calls().Inject("NotifyAllocator", E_ABORT);
    pin_->log.Inject("InitAllocator", E_OUTOFMEMORY);
    EXPECT_EQ(ConnectTo(), E_OUTOFMEMORY);
    ExpectNothingHeld();
    pin_->log.ClearInjections();
    pin_->log.Inject("DecideBufferSize", E_UNEXPECTED, -1, 1);
    EXPECT_EQ(ConnectTo(), E_UNEXPECTED);
    ExpectNothingHeld();
}

TEST_F(OutputPinTest, PeerWithoutMemInputPin) {
    MakeSink({.memInputPin = false});
    EXPECT_EQ(ConnectTo(), E_NOINTERFACE);
    EXPECT_EQ(log_.Text(), "CheckConnect BreakConnect- BreakConnect-");
    ExpectNothingHeld();
}

TEST_F(OutputPinTest, FailedAttemptsLeaveNoInputPin) {
    MakeSink({});
    sink_->pin().calls().Inject("ReceiveConnection", E_ABORT);
    EXPECT_EQ(ConnectTo(), E_ABORT);
    ExpectNothingHeld();
    pin_->log.Inject("CheckMediaType", E_ABORT);
    EXPECT_EQ(ConnectTo(), E_ABORT);
    ExpectNothingHeld();
}

TEST_F(OutputPinTest, CommittedBetweenPauseAndStop) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    ASSERT_EQ(ConnectTo(), NOERROR);
    TestAllocator* allocator = sink_->pin().ownAllocator();
    EXPECT_EQ(host_->Pause(), S_OK);
    EXPECT_TRUE(allocator->committed());
    EXPECT_EQ(host_->Run(0), S_OK);
    EXPECT_EQ(host_->Pause(), S_OK);
    EXPECT_EQ(allocator->calls().Count("Commit"), 1);
    EXPECT_EQ(host_->Stop(), S_OK);
    EXPECT_FALSE(allocator->committed());
    EXPECT_EQ(allocator->calls().Count("Decommit"), 1);
    allocator->calls().Inject("Commit", E_OUTOFMEMORY);
    EXPECT_EQ(host_->Pause(), E_OUTOFMEMORY);
    EXPECT_EQ(host_->m_State, State_Stopped);
    allocator->calls().Inject("Decommit", E_ABORT, 1);
    EXPECT_EQ(pin_->Inactive(), E_ABORT);
}

TEST_F(OutputPinTest, DisconnectDecommitsAndReleases) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    ASSERT_EQ(ConnectTo(), NOERROR);
    TestAllocator* allocator = sink_->pin().ownAllocator();
    ASSERT_EQ(allocator->Commit(), S_OK);
    allocator->calls().Inject("Decommit", E_ABORT, 1);
    EXPECT_EQ(pin_->Disconnect(), E_ABORT);  // with everything kept
    EXPECT_TRUE(pin_->IsConnected());
    EXPECT_EQ(pin_->m_pAllocator, allocator);
    EXPECT_NE(pin_->m_pInputPin, nullptr);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_FALSE(allocator->committed());
    EXPECT_EQ(sink_->pin().Disconnect(), S_OK);
    EXPECT_EQ(RefCount(allocator), 1u);
    EXPECT_EQ(sink_->references(), 1);
}

TEST_F(OutputPinTest, Unconnected) {
    EXPECT_EQ(pin_->Active(), VFW_E_NO_ALLOCATOR);
    pin_->m_bRunTimeError = true;
    EXPECT_EQ(pin_->Inactive(), VFW_E_NO_ALLOCATOR);
    EXPECT_FALSE(pin_->m_bRunTimeError);
    IMediaSample* sample = nullptr;
    EXPECT_EQ(pin_->GetDeliveryBuffer(&sample, nullptr, nullptr, 0), E_NOINTERFACE);
    EXPECT_EQ(pin_->Deliver(sample), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin_->DeliverEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin_->DeliverBeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin_->DeliverEndFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin_->DeliverNewSegment(0, 1, 1.0), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin_->EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(pin_->BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(pin_->EndFlush(), E_UNEXPECTED);
    EXPECT_EQ(pin_->BreakConnect(), NOERROR);
    EXPECT_EQ(pin_->BreakConnect(), NOERROR);
}

TEST_F(OutputPinTest, Delivery) {
    MakeSink({.allocator = SinkAllocator::kOwn});
    ASSERT_EQ(ConnectTo(), NOERROR);
    host_->Pause();
    TestAllocator* allocator = sink_->pin().ownAllocator();
    ComPtr<IMediaSample> sample;
    REFERENCE_TIME start = 3, stop = 4;
    ASSERT_EQ(pin_->GetDeliveryBuffer(sample.Put(), &start, &stop, AM_GBF_NOWAIT), S_OK);
    EXPECT_EQ(allocator->requests().back().start, 3);
    EXPECT_EQ(allocator->requests().back().stop, 4);
    EXPECT_EQ(allocator->requests().back().flags, DWORD(AM_GBF_NOWAIT));
    EXPECT_EQ(pin_->Deliver(sample.Get()), S_OK);
    EXPECT_EQ(RefCount(sample.Get()), 1u);  // not released
    sink_->pin().calls().Inject("Receive", S_FALSE);
    EXPECT_EQ(pin_->Deliver(sample.Get()), S_FALSE);
    EXPECT_EQ(pin_->DeliverNewSegment(1, 2, 0.5), S_OK);
    EXPECT_EQ(pin_->DeliverBeginFlush(), S_OK);
    EXPECT_TRUE(sink_->pin().flushing());
    EXPECT_EQ(pin_->DeliverEndFlush(), S_OK);
    EXPECT_EQ(pin_->DeliverEndOfStream(), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    ASSERT_EQ(sink_->pin().segments().size(), 1u);
    EXPECT_EQ(sink_->pin().segments()[0].rate, 0.5);
    for (const char* name : {"EndOfStream", "BeginFlush", "EndFlush", "NewSegment"})
        sink_->pin().calls().Inject(name, E_ABORT);
    EXPECT_EQ(pin_->DeliverEndOfStream(), E_ABORT);
    EXPECT_EQ(pin_->DeliverBeginFlush(), E_ABORT);
    EXPECT_EQ(pin_->DeliverEndFlush(), E_ABORT);
    EXPECT_EQ(pin_->DeliverNewSegment(1, 2, 1), E_ABORT);
}

TEST_F(OutputPinTest, BothEndsOfTheLayerConnect) {
    ComPtr<HostFilter> peer = MakeHost();
    InputPin* input = AddPin<InputPin>(*peer);
    ASSERT_EQ(pin_->Connect(input, nullptr), NOERROR);
    EXPECT_NE(pin_->m_pAllocator, nullptr);
    EXPECT_EQ(input->m_pAllocator, pin_->m_pAllocator);
    EXPECT_EQ(pin_->log.Count("InitAllocator"), 0);  // the input's own one
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(input->Disconnect(), S_OK);
    EXPECT_EQ(input->m_pAllocator, nullptr);
    EXPECT_EQ(RefCount(peer.Get()), 1u);
}

}  // namespace
