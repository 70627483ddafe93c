// What else comes down the stream: types on samples, end of stream, flush, new segment, stop.
#include <thread>

#include "tests/dshow/transform_stream_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(TransformStream, AcceptedTypeOnASample) {
    Start();
    EXPECT_EQ(Deliver({.bytes = bytes_, .type = other_}), S_OK);
    EXPECT_EQ(log_.Text(), "CheckInputType CheckTransform Receive Transform sink.Receive");
    EXPECT_EQ(filter_->checkedInput, other_);
    EXPECT_EQ(MediaType(filter_->input()->CurrentMediaType()), type_);  // nobody has set it
}

TEST_F(TransformStream, RefusedTypeOnASample) {
    Start();
    filter_->JoinFilterGraph(graph_.graph(), nullptr);
    filter_->log.Inject("CheckInputType", VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(Deliver({.bytes = bytes_, .type = other_}), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(log_.Text(), "CheckInputType");
    ASSERT_EQ(graph_.events.size(), 1u);
    EXPECT_EQ(graph_.events[0].code, EC_ERRORABORT);
    EXPECT_EQ(graph_.events[0].first, LONG_PTR(VFW_E_TYPE_NOT_ACCEPTED));
    EXPECT_EQ(Deliver({.bytes = bytes_}), VFW_E_RUNTIME_ERROR);
    EXPECT_EQ(source_->pin().SendEndOfStream(), VFW_E_RUNTIME_ERROR);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 0);
    EXPECT_EQ(source_->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.bytes = bytes_, .type = other_}), VFW_E_INVALIDMEDIATYPE);
    StopAll();
    filter_->log.ClearInjections();
    PauseAll();
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
}

TEST_F(TransformStream, EndOfStream) {
    Start();
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(log_.Text(), "EndOfStream sink.EndOfStream");
    sink_->pin().calls().Inject("EndOfStream", E_ABORT);
    EXPECT_EQ(source_->pin().SendEndOfStream(), E_ABORT);
    EXPECT_EQ(filter_->output()->EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(filter_->output()->BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(filter_->output()->EndFlush(), E_UNEXPECTED);
    StopAll();
    EXPECT_EQ(source_->pin().SendEndOfStream(), VFW_E_WRONG_STATE);
}

TEST_F(TransformStream, Flush) {
    Start();
    EXPECT_EQ(source_->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(log_.Text(), "BeginFlush sink.BeginFlush");
    EXPECT_TRUE(filter_->input()->IsFlushing());
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_FALSE);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_FALSE);
    log_.Clear();
    filter_->log.Inject("EndFlush", E_ABORT, 1);
    EXPECT_EQ(source_->pin().SendEndFlush(), E_ABORT);
    EXPECT_TRUE(filter_->input()->IsFlushing());  // stays on
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
    EXPECT_FALSE(filter_->input()->IsFlushing());
    EXPECT_EQ(log_.Text(), "EndFlush EndFlush sink.EndFlush");
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    sink_->pin().calls().Inject("BeginFlush", E_ABORT);
    EXPECT_EQ(source_->pin().SendBeginFlush(), E_ABORT);
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
}

TEST_F(TransformStream, FlushUnconnected) {
    EXPECT_EQ(filter_->input()->BeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(filter_->input()->EndFlush(), VFW_E_NOT_CONNECTED);
    ASSERT_EQ(ConnectInput(), S_OK);
    EXPECT_EQ(filter_->input()->BeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(filter_->input()->EndFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(filter_->log.Count("BeginFlush") + filter_->log.Count("EndFlush"), 0);
}

TEST_F(TransformStream, NewSegment) {
    EXPECT_EQ(filter_->CTransformFilter::NewSegment(1, 2, 3), S_OK);  // no pins yet
    EXPECT_EQ(filter_->input()->NewSegment(1, 2, 3), VFW_E_NOT_CONNECTED);
    MakeSource();
    MakeSink();
    ConnectBoth();
    // Neither a stop nor a flush nor the locks keep it away.
    source_->pin().SendBeginFlush();
    {
        CAutoLock filterLock(&filter_->m_csFilter);
        CAutoLock streamingLock(&filter_->m_csReceive);
        std::thread([&] { EXPECT_EQ(source_->pin().SendNewSegment(10, 20, 0.5), S_OK); }).join();
    }
    EXPECT_EQ(filter_->input()->CurrentStartTime(), 10);
    EXPECT_EQ(filter_->input()->CurrentStopTime(), 20);
    EXPECT_EQ(filter_->input()->CurrentRate(), 0.5);
    EXPECT_EQ(filter_->output()->CurrentStopTime(), MAX_TIME);
    ASSERT_EQ(sink_->pin().segments().size(), 1u);
    EXPECT_EQ(sink_->pin().segments()[0].start, 10);
    EXPECT_EQ(filter_->output()->NewSegment(7, 8, 9), S_OK);  // stores only
    EXPECT_EQ(sink_->pin().segments().size(), 1u);
    EXPECT_EQ(filter_->output()->CurrentStartTime(), 7);
    filter_->log.Inject("NewSegment", E_ABORT);
    EXPECT_EQ(source_->pin().SendNewSegment(11, 20, 1), E_ABORT);
    EXPECT_EQ(filter_->input()->CurrentStartTime(), 11);
    source_->pin().SendEndFlush();
}

TEST_F(TransformStream, CheckStreamingInItsOrder) {
    CTransformInputPin* input = filter_->input();
    EXPECT_EQ(input->CheckStreaming(), VFW_E_NOT_CONNECTED);
    ASSERT_EQ(ConnectInput(), S_OK);
    EXPECT_EQ(input->CheckStreaming(), VFW_E_NOT_CONNECTED);
    filter_->outputs = {type_};
    ASSERT_EQ(ConnectOutput(), S_OK);
    EXPECT_EQ(input->CheckStreaming(), VFW_E_WRONG_STATE);
    source_->pin().SendBeginFlush();
    EXPECT_EQ(input->CheckStreaming(), S_FALSE);  // before the state
    source_->pin().SendEndFlush();
    filter_->Pause();
    EXPECT_EQ(input->CheckStreaming(), S_OK);
}

TEST_F(TransformStream, AfterStop) {
    Start();
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    ASSERT_EQ(filter_->Stop(), S_OK);
    // The filter has decommitted the source's allocator too.
    EXPECT_EQ(Deliver({.bytes = bytes_}), VFW_E_NOT_COMMITTED);
    auto sample = TestSample::Create({.size = 96});
    EXPECT_EQ(source_->pin().Deliver(sample.Get()), VFW_E_WRONG_STATE);
    EXPECT_EQ(Samples().size(), 1u);
}

TEST_F(TransformStream, ReceiveMultiple) {
    Start();
    auto sample = TestSample::Create({.size = 96});
    IMediaSample* samples[] = {sample.Get(), sample.Get(), sample.Get()};
    sink_->pin().calls().Inject("Receive", E_ABORT, -1, 2);
    long done = 0;
    EXPECT_EQ(filter_->input()->ReceiveMultiple(samples, 3, &done), E_ABORT);
    EXPECT_EQ(done, 2);
}

TEST_F(TransformStream, ReceiveCanBlockAsksTheSink) {
    Start();
    EXPECT_EQ(filter_->input()->ReceiveCanBlock(), S_OK);
    sink_->pin().config.receiveCanBlock = S_FALSE;
    EXPECT_EQ(filter_->input()->ReceiveCanBlock(), S_FALSE);
}

}  // namespace
