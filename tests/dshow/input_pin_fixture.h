// A connected input pin that runs, for tests of CBaseInputPin.

#pragma once

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/task_memory.h"
#include "tests/support/test_allocator.h"
#include "tests/support/test_sink.h"
#include "tests/support/test_source.h"

namespace tavo_test {

class InputPinTest : public DshowTest {
  protected:
    ~InputPinTest() override {
        host_->Stop();
        pin_->Disconnect();
        EXPECT_EQ(RefCount(host_.Get()), 1u);
        EXPECT_EQ(source_->references(), 1);
    }
    void ConnectAndRun() {
        ASSERT_EQ(pin_->ReceiveConnection(&source_->pin(), type_.Get()), NOERROR);
        ComPtr<TestAllocator> allocator = TestAllocator::Create();
        ASSERT_EQ(pin_->NotifyAllocator(allocator.Get(), FALSE), NOERROR);
        ASSERT_EQ(host_->Run(0), S_OK);
        pin_->log.Clear();
    }
    HRESULT Receive(TestSample& sample) { return pin_->Receive(&sample); }

    const MediaType type_ = MakeVideoType({.width = 8, .height = 4});
    const MediaType other_ = MakeVideoType({.width = 16, .height = 4});
    ComPtr<TestSource> source_ = TestSource::Create({.types = {type_}});
    ComPtr<HostFilter> host_ = MakeHost();
    InputPin* pin_ = AddPin<InputPin>(*host_);
};

}  // namespace tavo_test
