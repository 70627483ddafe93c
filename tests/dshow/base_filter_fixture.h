// A filter of three pins, two of them connected, for tests of CBaseFilter.

#pragma once

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/test_source.h"

namespace tavo_test {

class BaseFilter : public DshowTest {
  protected:
    // Three pins; the first and the last get connected.
    void AddPins() {
        first_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"first");
        loose_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"loose");
        last_ = AddPin<PlainPin>(*host_, PINDIR_INPUT, L"last");
        for (PlainPin* pin : {first_, last_}) {
            ASSERT_EQ(pin->ReceiveConnection(&source_->pin(), type_.Get()), S_OK);
            pin->log.Forward(&order_, pin == first_ ? "first." : "last.");
            pin->log.Clear();
        }
        order_.Clear();
    }
    void DropConnections() {
        host_->Stop();
        for (PlainPin* pin : {first_, last_}) EXPECT_EQ(pin->Disconnect(), S_OK);
    }

    const MediaType type_ = MakeVideoType({});
    ComPtr<TestSource> source_ = TestSource::Create({.types = {type_}});
    CallLog order_;
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* first_ = nullptr;
    PlainPin* loose_ = nullptr;
    PlainPin* last_ = nullptr;
};

}  // namespace tavo_test
