// A transform filter between source and sink, all connected and paused.
#pragma once

#include "tests/dshow/fakes.h"
#include "tests/dshow/transform_probe.h"

namespace tavo_test {

class TransformStream : public TransformTest {
  protected:
    void Start(const SinkConfig& sink = {.allocator = SinkAllocator::kOwn},
               const SourceConfig& source = {}) {
        MakeSource(source);
        MakeSink(sink);
        ConnectBoth();
        PauseAll();
        log_.Clear();
    }
    ~TransformStream() override {
        if (sink_) {
            EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
            EXPECT_EQ(sinkAllocator()->damagedSamples(), 0);
        }
        filter_->JoinFilterGraph(nullptr, nullptr);
        EXPECT_EQ(graph_.references, 0);
    }
    HRESULT Deliver(const SampleSpec& spec) { return source_->pin().Deliver(spec); }
    std::vector<ReceivedSample> Samples() { return sink_->pin().samples(); }

    FakeGraph graph_;
};

}  // namespace tavo_test
