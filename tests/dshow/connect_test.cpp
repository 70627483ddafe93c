// The leading pin's side of a connection: each step with a failure injected, what is undone, and
// which code comes out.
#include <atomic>
#include <thread>

#include "tests/dshow/connect_fixture.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

TEST_F(Connect, OrderOfSuccess) {
    EXPECT_EQ(ConnectTo(type_.Get()), NOERROR);
    EXPECT_EQ(log_.Text(),
              "CheckConnect CheckMediaType SetMediaType sink.ReceiveConnection CompleteConnect");
    EXPECT_EQ(pin_->GetConnected(), static_cast<IPin*>(&sink_->pin()));
    EXPECT_EQ(MediaType(pin_->m_mt), type_);
    EXPECT_EQ(sink_->pin().connectionType(), type_);
    EXPECT_EQ(sink_->references(), 2);
    EXPECT_EQ(RefCount(host_.Get()), 2u);
}

TEST_F(Connect, NullPin) {
    EXPECT_EQ(pin_->Connect(nullptr, type_.Get()), E_POINTER);
    EXPECT_EQ(log_.Text(), "");
}

TEST_F(Connect, AlreadyConnectedComesBeforeNotStopped) {
    ASSERT_EQ(ConnectTo(type_.Get()), NOERROR);
    log_.Clear();
    EXPECT_EQ(ConnectTo(type_.Get()), VFW_E_ALREADY_CONNECTED);
    host_->Pause();
    log_.Clear();
    EXPECT_EQ(ConnectTo(type_.Get()), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(log_.Text(), "");
    EXPECT_TRUE(pin_->IsConnected());
}

TEST_F(Connect, NotStopped) {
    for (const bool running : {false, true}) {
        running ? host_->Run(0) : host_->Pause();
        EXPECT_EQ(ConnectTo(type_.Get()), VFW_E_NOT_STOPPED);
        EXPECT_EQ(log_.Text(), "");
    }
    pin_->SetReconnectWhenActive(true);
    EXPECT_EQ(ConnectTo(type_.Get()), NOERROR);
    EXPECT_EQ(pin_->Disconnect(), VFW_E_NOT_STOPPED);  // the flag does not help here
}

TEST_F(Connect, PeerOfTheSameDirection) {
    PlainPin* other = AddPin<PlainPin>(*host_, PINDIR_OUTPUT, L"other");
    EXPECT_EQ(pin_->Connect(other, type_.Get()), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(log_.Text(), "CheckConnect BreakConnect- BreakConnect-");
    EXPECT_EQ(RefCount(host_.Get()), 1u);
}

TEST_F(Connect, FailureOfCheckConnect) {
    for (const HRESULT failure : {E_FAIL, E_ABORT}) {
        log_.Clear();
        pin_->log.Inject("CheckConnect", failure);
        EXPECT_EQ(ConnectTo(type_.Get()), failure);
        EXPECT_EQ(log_.Text(), "CheckConnect BreakConnect- BreakConnect-");
        ExpectUnconnected();
    }
}

TEST_F(Connect, FailureOfCheckMediaType) {
    const struct {
        HRESULT given, expected;
    } rows[] = {{S_FALSE, VFW_E_TYPE_NOT_ACCEPTED},
                {VFW_S_NO_MORE_ITEMS, VFW_E_TYPE_NOT_ACCEPTED},
                {E_FAIL, VFW_E_TYPE_NOT_ACCEPTED},
                {E_INVALIDARG, VFW_E_TYPE_NOT_ACCEPTED},
                {VFW_E_TYPE_NOT_ACCEPTED, VFW_E_TYPE_NOT_ACCEPTED},
                {E_OUTOFMEMORY, E_OUTOFMEMORY},
                {E_ABORT, E_ABORT}};
    for (const auto& row : rows) {
        log_.Clear();
        pin_->log.Inject("CheckMediaType", row.given);
        EXPECT_EQ(ConnectTo(type_.Get()), row.expected) << std::hex << row.given;
        EXPECT_EQ(log_.Text(), "CheckConnect CheckMediaType BreakConnect- BreakConnect-");
        ExpectUnconnected();
    }
}

TEST_F(Connect, FailureOfSetMediaType) {
    pin_->log.Inject("SetMediaType", E_ABORT);
    EXPECT_EQ(ConnectTo(type_.Get()), E_ABORT);
    EXPECT_EQ(log_.Text(), "CheckConnect CheckMediaType SetMediaType BreakConnect+ BreakConnect-");
    ExpectUnconnected();
}

TEST_F(Connect, FailureOfTheReceivingPin) {
    for (const HRESULT failure : {E_FAIL, VFW_E_TYPE_NOT_ACCEPTED, E_ABORT}) {
        log_.Clear();
        sink_->pin().calls().Inject("ReceiveConnection", failure);
        EXPECT_EQ(ConnectTo(type_.Get()), failure);
        EXPECT_EQ(log_.Text(),
                  "CheckConnect CheckMediaType SetMediaType sink.ReceiveConnection BreakConnect+ "
                  "BreakConnect-");
        ExpectUnconnected();
    }
}

TEST_F(Connect, FailureOfCompleteConnect) {
    pin_->log.Inject("CompleteConnect", E_ABORT);
    EXPECT_EQ(ConnectTo(type_.Get()), E_ABORT);
    EXPECT_EQ(log_.Text(),
              "CheckConnect CheckMediaType SetMediaType sink.ReceiveConnection CompleteConnect "
              "sink.Disconnect BreakConnect+ BreakConnect-");
    ExpectUnconnected();
    EXPECT_FALSE(sink_->pin().connected());
}

TEST_F(Connect, AnySuccessBecomesNoerror) {
    pin_->log.Inject("CompleteConnect", S_FALSE);
    EXPECT_EQ(ConnectTo(type_.Get()), NOERROR);
    EXPECT_TRUE(pin_->IsConnected());
}

TEST_F(Connect, CompleteTypeIsTheOnlyOneTried) {
    pin_->types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32})};
    sink_->pin().offered = {MakeVideoType({.width = 64})};
    sink_->pin().calls().Inject("ReceiveConnection", VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(ConnectTo(type_.Get()), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(sink_->pin().calls().Count("ReceiveConnection"), 1);
    EXPECT_EQ(sink_->pin().calls().Count("EnumMediaTypes"), 0);
    EXPECT_EQ(pin_->log.Count("GetMediaType(0)"), 0);
    // An open subtype alone does not make a type partial.
    const MediaType open = MakePartialType(MEDIATYPE_Video, GUID_NULL, FORMAT_VideoInfo);
    EXPECT_EQ(ConnectTo(open.Get()), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(sink_->pin().calls().Count("ReceiveConnection"), 2);
    EXPECT_EQ(sink_->pin().calls().Count("EnumMediaTypes"), 0);
}

TEST_F(Connect, FilterLockIsHeldWhileThePeerIsCalled) {
    std::atomic<bool> entered = false;
    std::thread other;
    sink_->pin().config.accept = [&](const AM_MEDIA_TYPE&) {
        other = std::thread([&] {
            CAutoLock guard(&host_->lock);
            entered = true;
        });
        Sleep(150);
        EXPECT_FALSE(entered);
        return true;
    };
    EXPECT_EQ(ConnectTo(type_.Get()), NOERROR);
    other.join();
    EXPECT_TRUE(entered);
    sink_->pin().config.accept = nullptr;
}

TEST_F(Connect, WithoutMemoryForTheType) {
    FailTaskMemory fail;
    EXPECT_EQ(ConnectTo(type_.Get()), E_OUTOFMEMORY);
    EXPECT_FALSE(pin_->IsConnected());
}

TEST_F(Connect, DisconnectUnconnected) {
    EXPECT_EQ(pin_->Disconnect(), S_FALSE);
    EXPECT_EQ(log_.Text(), "");
    host_->Pause();
    EXPECT_EQ(pin_->Disconnect(), VFW_E_NOT_STOPPED);
}

TEST_F(Connect, DisconnectEndsThisSideOnly) {
    ASSERT_EQ(ConnectTo(type_.Get()), NOERROR);
    log_.Clear();
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(log_.Text(), "BreakConnect+");
    EXPECT_FALSE(pin_->IsConnected());
    EXPECT_TRUE(sink_->pin().connected());
    EXPECT_EQ(sink_->references(), 1);
    EXPECT_EQ(pin_->Disconnect(), S_FALSE);
    EXPECT_EQ(sink_->pin().Disconnect(), S_OK);
}

TEST_F(Connect, DisconnectRefusedByBreakConnect) {
    ASSERT_EQ(ConnectTo(type_.Get()), NOERROR);
    pin_->log.Inject("BreakConnect+", E_ABORT);
    EXPECT_EQ(pin_->Disconnect(), E_ABORT);
    EXPECT_TRUE(pin_->IsConnected());
    EXPECT_EQ(sink_->references(), 2);
    pin_->log.ClearInjections();
}

TEST_F(Connect, DisconnectWhileActive) {
    ASSERT_EQ(ConnectTo(type_.Get()), NOERROR);
    host_->Pause();
    log_.Clear();
    EXPECT_EQ(pin_->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(log_.Text(), "");
    EXPECT_TRUE(pin_->IsConnected());
}

TEST_F(Connect, ConnectedPinsKeepEachOtherAlive) {
    ComPtr<HostFilter> peer = MakeHost();
    PlainPin* input = AddPin<PlainPin>(*peer, PINDIR_INPUT, L"in");
    ASSERT_EQ(pin_->Connect(input, type_.Get()), NOERROR);
    EXPECT_EQ(RefCount(host_.Get()), 2u);
    EXPECT_EQ(RefCount(peer.Get()), 2u);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(RefCount(peer.Get()), 1u);
    EXPECT_EQ(RefCount(host_.Get()), 2u);
    EXPECT_EQ(input->Disconnect(), S_OK);
    EXPECT_EQ(RefCount(host_.Get()), 1u);
}

}  // namespace
