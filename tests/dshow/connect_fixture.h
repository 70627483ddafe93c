// A plain output pin and a sink that note, in one log, every step of a connection.
#pragma once

#include "tests/dshow/probes.h"

#include "tests/support/test_sink.h"

namespace tavo_test {

class Connect : public DshowTest {
  protected:
    Connect() {
        pin_->log.Forward(&log_, "");
        sink_->pin().calls().Forward(&log_, "sink.");
    }
    ~Connect() override {
        EXPECT_EQ(sink_->references(), 1 + (pin_->IsConnected() ? 1 : 0));
        if (pin_->IsConnected()) {
            host_->Stop();
            EXPECT_EQ(pin_->Disconnect(), S_OK);
            sink_->pin().Disconnect();
        }
        EXPECT_EQ(sink_->references(), 1);
        EXPECT_EQ(RefCount(host_.Get()), 1u);
    }
    HRESULT ConnectTo(const AM_MEDIA_TYPE* type) { return pin_->Connect(&sink_->pin(), type); }
    // After a failed attempt nothing may be left.
    void ExpectUnconnected() {
        EXPECT_FALSE(pin_->IsConnected());
        EXPECT_EQ(sink_->references(), 1);
        EXPECT_EQ(RefCount(host_.Get()), sink_->pin().connected() ? 2u : 1u);
    }

    const MediaType type_ = MakeVideoType({.width = 8, .height = 4});
    CallLog log_;
    ComPtr<TestSink> sink_ = TestSink::Create();
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* pin_ = AddPin<PlainPin>(*host_, PINDIR_OUTPUT, L"out");
};

}  // namespace tavo_test
