// The receiving pin's side of a connection: each step with a failure injected.
#include <atomic>
#include <thread>

#include "tests/dshow/probes.h"
#include "tests/support/task_memory.h"
#include "tests/support/test_source.h"

using namespace tavo_test;

namespace {

class ReceiveConnection : public DshowTest {
  protected:
    ~ReceiveConnection() override {
        if (pin_->IsConnected()) {
            host_->Stop();
            EXPECT_EQ(pin_->Disconnect(), S_OK);
        }
        EXPECT_EQ(source_->references(), 1);
        EXPECT_EQ(RefCount(host_.Get()), 1u);
    }
    HRESULT Offer() { return pin_->ReceiveConnection(&source_->pin(), type_.Get()); }
    void ExpectUnconnected() {
        EXPECT_FALSE(pin_->IsConnected());
        EXPECT_EQ(source_->references(), 1);
    }

    const MediaType type_ = MakeVideoType({});
    ComPtr<TestSource> source_ = TestSource::Create({.types = {type_}});
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* pin_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"in");
};

TEST_F(ReceiveConnection, OrderOfSuccess) {
    EXPECT_EQ(Offer(), NOERROR);
    EXPECT_EQ(pin_->log.Text(), "CheckConnect CheckMediaType SetMediaType CompleteConnect");
    EXPECT_EQ(source_->references(), 2);
    EXPECT_EQ(MediaType(pin_->m_mt), type_);
}

TEST_F(ReceiveConnection, AnySuccessBecomesNoerror) {
    pin_->log.Inject("CompleteConnect", S_FALSE);
    EXPECT_EQ(Offer(), NOERROR);
    EXPECT_TRUE(pin_->IsConnected());
}

TEST_F(ReceiveConnection, NullPointers) {
    EXPECT_EQ(pin_->ReceiveConnection(nullptr, type_.Get()), E_POINTER);
    EXPECT_EQ(pin_->ReceiveConnection(&source_->pin(), nullptr), E_POINTER);
    EXPECT_EQ(pin_->log.Text(), "");
}

TEST_F(ReceiveConnection, AlreadyConnectedComesBeforeNotStopped) {
    ASSERT_EQ(Offer(), NOERROR);
    pin_->log.Clear();
    EXPECT_EQ(Offer(), VFW_E_ALREADY_CONNECTED);
    host_->Pause();
    pin_->log.Clear();
    EXPECT_EQ(Offer(), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(pin_->log.Text(), "");
}

TEST_F(ReceiveConnection, NotStopped) {
    host_->Run(0);
    EXPECT_EQ(Offer(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(pin_->log.Text(), "");
    pin_->SetReconnectWhenActive(true);
    EXPECT_EQ(Offer(), NOERROR);
}

TEST_F(ReceiveConnection, ConnectorOfTheSameDirection) {
    PlainPin* other = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"other");
    EXPECT_EQ(pin_->ReceiveConnection(other, type_.Get()), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(pin_->log.Text(), "CheckConnect BreakConnect-");
}

TEST_F(ReceiveConnection, FailureOfCheckConnect) {
    pin_->log.Inject("CheckConnect", E_ABORT);
    EXPECT_EQ(Offer(), E_ABORT);
    EXPECT_EQ(pin_->log.Text(), "CheckConnect BreakConnect-");
    ExpectUnconnected();
}

TEST_F(ReceiveConnection, FailureOfCheckMediaType) {
    const struct {
        HRESULT given, expected;
    } rows[] = {{S_FALSE, VFW_E_TYPE_NOT_ACCEPTED}, {VFW_S_NO_MORE_ITEMS, VFW_E_TYPE_NOT_ACCEPTED},
                {E_FAIL, VFW_E_TYPE_NOT_ACCEPTED},  {E_INVALIDARG, VFW_E_TYPE_NOT_ACCEPTED},
                {E_OUTOFMEMORY, E_OUTOFMEMORY},     {E_ABORT, E_ABORT}};
    for (const auto& row : rows) {
        pin_->log.Clear();
        pin_->log.Inject("CheckMediaType", row.given);
        EXPECT_EQ(Offer(), row.expected) << std::hex << row.given;
        EXPECT_EQ(pin_->log.Text(), "CheckConnect CheckMediaType BreakConnect-");
        ExpectUnconnected();
    }
}

TEST_F(ReceiveConnection, FailureOfSetMediaTypeReleasesFirst) {
    pin_->log.Inject("SetMediaType", E_FAIL);
    EXPECT_EQ(Offer(), E_FAIL);
    EXPECT_EQ(pin_->log.Text(), "CheckConnect CheckMediaType SetMediaType BreakConnect-");
    ExpectUnconnected();
}

TEST_F(ReceiveConnection, FailureOfCompleteConnectReleasesFirst) {
    pin_->log.Inject("CompleteConnect", E_INVALIDARG);
    EXPECT_EQ(Offer(), E_INVALIDARG);
    EXPECT_EQ(pin_->log.Text(),
              "CheckConnect CheckMediaType SetMediaType CompleteConnect BreakConnect-");
    ExpectUnconnected();
}

TEST_F(ReceiveConnection, WithoutMemoryForTheType) {
    FailTaskMemory fail;
    EXPECT_EQ(Offer(), E_OUTOFMEMORY);
    EXPECT_FALSE(pin_->IsConnected());
}

TEST_F(ReceiveConnection, HoldsTheFilterLock) {
    std::atomic<bool> entered = false;
    std::thread other;
    pin_->check = [&](const CMediaType&) {
        other = std::thread([&] {
            CAutoLock guard(&host_->lock);
            entered = true;
        });
        Sleep(150);
        EXPECT_FALSE(entered);
        return S_OK;
    };
    EXPECT_EQ(Offer(), NOERROR);
    other.join();
    EXPECT_TRUE(entered);
    pin_->check = nullptr;
}

TEST_F(ReceiveConnection, BrokenTypesAreJudgedByThePin) {
    const MediaType absent = MakeVideoType({.absentFormat = true});
    pin_->check = [](const CMediaType& type) { return type.Format() ? S_OK : E_FAIL; };
    EXPECT_EQ(pin_->ReceiveConnection(&source_->pin(), absent.Get()), VFW_E_TYPE_NOT_ACCEPTED);
    ExpectUnconnected();
}

}  // namespace
