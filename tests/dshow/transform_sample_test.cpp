// One sample through the transform filter: what is asked of the allocator, what is carried over,
// and what each result of Transform leads to.
#include "tests/dshow/transform_stream_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(TransformStream, NormalSample) {
    Start();
    EXPECT_EQ(Deliver({.start = 10,
                       .stop = 20,
                       .mediaStart = 5,
                       .mediaEnd = 6,
                       .preroll = true,
                       .discontinuity = true,
                       .bytes = bytes_}),
              S_OK);
    EXPECT_EQ(log_.Text(), "Receive Transform sink.Receive");
    ASSERT_EQ(Samples().size(), 1u);
    const ReceivedSample sample = Samples()[0];
    EXPECT_EQ(sample.bytes, bytes_);
    EXPECT_EQ(sample.timeResult, S_OK);
    EXPECT_EQ(sample.start, 10);
    EXPECT_EQ(sample.stop, 20);
    EXPECT_TRUE(sample.syncPoint);
    EXPECT_TRUE(sample.preroll);
    EXPECT_TRUE(sample.discontinuity);
    EXPECT_EQ(sample.mediaTimeResult, VFW_E_MEDIA_TIME_NOT_SET);  // not copied with IMediaSample2
    EXPECT_EQ(sample.streamId, DWORD(AM_STREAM_MEDIA));
    EXPECT_FALSE(sample.type);
    EXPECT_FALSE(filter_->m_bSampleSkipped);
}

TEST_F(TransformStream, OutputSampleWithoutProperties) {
    Start({.allocator = SinkAllocator::kOwn, .ownAllocator = {.sample2 = false}});
    EXPECT_EQ(Deliver({.start = 10,
                       .stop = 20,
                       .mediaStart = 5,
                       .mediaEnd = 6,
                       .preroll = true,
                       .discontinuity = true,
                       .bytes = bytes_}),
              S_OK);
    EXPECT_EQ(Deliver({.syncPoint = false, .bytes = bytes_}), S_OK);
    ASSERT_EQ(Samples().size(), 2u);
    const ReceivedSample sample = Samples()[0];
    EXPECT_EQ(sample.timeResult, S_OK);
    EXPECT_EQ(sample.start, 10);
    EXPECT_EQ(sample.stop, 20);
    EXPECT_TRUE(sample.syncPoint);
    EXPECT_FALSE(sample.preroll);  // not copied
    EXPECT_TRUE(sample.discontinuity);
    EXPECT_EQ(sample.mediaTimeResult, S_OK);
    EXPECT_EQ(sample.mediaStart, 5);
    EXPECT_EQ(sample.mediaEnd, 6);
    const ReceivedSample bare = Samples()[1];
    EXPECT_EQ(bare.timeResult, VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(bare.mediaTimeResult, VFW_E_MEDIA_TIME_NOT_SET);
    EXPECT_FALSE(bare.syncPoint);
    EXPECT_FALSE(bare.discontinuity);
}

TEST_F(TransformStream, InputSampleWithoutProperties) {
    Start({.allocator = SinkAllocator::kOwn}, {.allocator = {.sample2 = false}});
    SampleSpec spec = {.start = 10, .stop = 20, .preroll = true, .bytes = bytes_};
    spec.freestanding = SampleConfig{.size = 96, .sample2 = false};
    EXPECT_EQ(Deliver(spec), S_OK);
    ASSERT_EQ(Samples().size(), 1u);
    EXPECT_EQ(Samples()[0].start, 10);
    EXPECT_EQ(Samples()[0].stop, 20);
    EXPECT_TRUE(Samples()[0].preroll);
    EXPECT_TRUE(Samples()[0].syncPoint);
    EXPECT_EQ(Samples()[0].bytes, bytes_);
}

TEST_F(TransformStream, PlatformAllocators) {
    MakeSource({.choice = AllocatorChoice::kPlatformOnly});
    MakeSink({.allocator = SinkAllocator::kPlatform});
    ConnectBoth();
    PauseAll();
    EXPECT_EQ(Deliver({.start = 10, .stop = 20, .discontinuity = true, .bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.start = 30, .bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    ASSERT_EQ(Samples().size(), 3u);
    EXPECT_EQ(Samples()[0].timeResult, S_OK);
    EXPECT_EQ(Samples()[0].stop, 20);
    EXPECT_TRUE(Samples()[0].discontinuity);
    EXPECT_EQ(Samples()[1].timeResult, VFW_S_NO_STOP_TIME);
    EXPECT_EQ(Samples()[1].start, 30);
    EXPECT_EQ(Samples()[2].timeResult, VFW_E_SAMPLE_TIME_NOT_SET);
    StopAll();
}

TEST_F(TransformStream, RequestForTheBuffer) {
    Start();
    EXPECT_EQ(Deliver({.start = 10, .stop = 20, .bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.start = 30, .syncPoint = false, .bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    filter_->log.Inject("Transform", S_FALSE, 1);
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);
    EXPECT_EQ(Deliver({.syncPoint = false, .bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    const auto requests = sinkAllocator()->requests();
    ASSERT_EQ(requests.size(), 6u);
    EXPECT_EQ(requests[0].start, 10);
    EXPECT_EQ(requests[0].stop, 20);
    EXPECT_EQ(requests[0].flags, 0u);
    EXPECT_EQ(requests[1].start, 30);
    EXPECT_FALSE(requests[1].stop);
    EXPECT_EQ(requests[1].flags, DWORD(AM_GBF_NOTASYNCPOINT));
    EXPECT_FALSE(requests[2].start);
    EXPECT_FALSE(requests[2].stop);
    EXPECT_EQ(requests[3].flags, 0u);
    EXPECT_EQ(requests[4].flags, DWORD(AM_GBF_PREVFRAMESKIPPED | AM_GBF_NOTASYNCPOINT));
    EXPECT_EQ(requests[5].flags, 0u);
}

TEST_F(TransformStream, StartWithoutStop) {
    Start();
    EXPECT_EQ(Deliver({.start = 30, .bytes = bytes_}), S_OK);
    ASSERT_EQ(Samples().size(), 1u);
    EXPECT_EQ(Samples()[0].timeResult, VFW_S_NO_STOP_TIME);
    EXPECT_EQ(Samples()[0].start, 30);
}

TEST_F(TransformStream, FieldsBeforeTheTimesAndNothingElse) {
    Start({.allocator = SinkAllocator::kOwn, .ownAllocator = {.actualLength = 40}});
    auto in = TestSample::Create({.size = 96});
    in->SetTimes(1, 2);
    in->SetTypeSpecificFlags(0xAB);
    in->SetActualDataLength(12);
    filter_->transform = [](IMediaSample*, IMediaSample* out) {
        EXPECT_EQ(out->GetActualDataLength(), 40);  // as the allocator gave it
        return S_OK;
    };
    EXPECT_EQ(source_->pin().Deliver(in.Get()), S_OK);
    ASSERT_EQ(Samples().size(), 1u);
    EXPECT_EQ(Samples()[0].typeSpecificFlags, 0xABu);
    EXPECT_EQ(Samples()[0].actualLength, 40);
    EXPECT_EQ(Samples()[0].size, 96);
}

TEST_F(TransformStream, ActualLengthIsThatOfThePreviousUse) {
    Start();
    EXPECT_EQ(Deliver({.bytes = std::vector<BYTE>(30, 1)}), S_OK);
    filter_->transform = [](IMediaSample*, IMediaSample* out) {
        EXPECT_EQ(out->GetActualDataLength(), 30);
        return S_OK;
    };
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
}

TEST_F(TransformStream, OutputsOwnTypeChangeStays) {
    Start();
    sinkAllocator()->AttachTypeOnce(*other_);
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    EXPECT_EQ(Deliver({.type = type_}), S_OK);  // the input's type does not go over
    ASSERT_EQ(Samples().size(), 2u);
    ASSERT_TRUE(Samples()[0].type);
    EXPECT_EQ(*Samples()[0].type, other_);
    EXPECT_TRUE(Samples()[0].sampleFlags & AM_SAMPLE_TYPECHANGED);
    EXPECT_FALSE(Samples()[1].type);
    EXPECT_FALSE(Samples()[1].sampleFlags & AM_SAMPLE_TYPECHANGED);
}

TEST_F(TransformStream, ControlStreamPassesUnchanged) {
    Start();
    auto in = TestSample::Create({.size = 5});
    in->SetStreamId(7);
    EXPECT_EQ(source_->pin().Deliver(in.Get()), S_OK);
    EXPECT_EQ(filter_->log.Count("Transform"), 0);
    ASSERT_EQ(Samples().size(), 1u);
    EXPECT_EQ(Samples()[0].identity, static_cast<IMediaSample*>(in.Get()));
    EXPECT_EQ(Samples()[0].streamId, 7u);
    EXPECT_EQ(sinkAllocator()->requests().size(), 0u);
    sink_->pin().calls().Inject("Receive", S_FALSE);
    EXPECT_EQ(source_->pin().Deliver(in.Get()), S_FALSE);
    EXPECT_EQ(in->references(), 1);
}

TEST_F(TransformStream, DownstreamResultGoesUpstream) {
    Start();
    for (const HRESULT result : {S_FALSE, E_FAIL, VFW_E_WRONG_STATE}) {
        sink_->pin().calls().Inject("Receive", result);
        filter_->m_bSampleSkipped = TRUE;
        EXPECT_EQ(Deliver({.bytes = bytes_}), result);
        EXPECT_FALSE(filter_->m_bSampleSkipped);
        EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
    }
}

TEST_F(TransformStream, DroppedSample) {
    Start();
    filter_->JoinFilterGraph(graph_.graph(), nullptr);
    filter_->log.Inject("Transform", S_FALSE);
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);  // S_FALSE would end the stream
    EXPECT_TRUE(filter_->m_bSampleSkipped);
    EXPECT_TRUE(filter_->m_bQualityChanged);
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);
    EXPECT_EQ(Samples().size(), 0u);
    ASSERT_EQ(graph_.events.size(), 1u);  // once
    EXPECT_EQ(graph_.events[0].code, EC_QUALITY_CHANGE);
    EXPECT_EQ(graph_.events[0].first, 0);
    EXPECT_EQ(graph_.events[0].second, 0);
    EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
    filter_->log.ClearInjections();
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
    EXPECT_FALSE(filter_->m_bSampleSkipped);
    EXPECT_TRUE(filter_->m_bQualityChanged);
    EXPECT_EQ(filter_->Run(0), S_OK);
    EXPECT_EQ(filter_->Pause(), S_OK);  // tells anew after a pause
    EXPECT_FALSE(filter_->m_bQualityChanged);
    filter_->log.Inject("Transform", S_FALSE);
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);
    EXPECT_EQ(graph_.events.size(), 2u);
}

TEST_F(TransformStream, DroppedSampleIsGoneBeforeTheEvent) {
    Start();
    filter_->JoinFilterGraph(graph_.graph(), nullptr);
    filter_->log.Inject("Transform", S_FALSE);
    int outAtEvent = -1;
    graph_.onNotify = [&] { outAtEvent = sinkAllocator()->samplesOut(); };
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);
    EXPECT_EQ(outAtEvent, 0);
}

TEST_F(TransformStream, DiscontinuityForgetsTheSkippedSample) {
    Start();
    filter_->log.Inject("Transform", S_FALSE, 1);
    EXPECT_EQ(Deliver({.bytes = bytes_}), NOERROR);
    EXPECT_TRUE(filter_->m_bSampleSkipped);
    filter_->transform = [&](IMediaSample*, IMediaSample*) {
        EXPECT_FALSE(filter_->m_bSampleSkipped);
        return E_ABORT;
    };
    EXPECT_EQ(Deliver({.discontinuity = true, .bytes = bytes_}), E_ABORT);
    EXPECT_FALSE(filter_->m_bSampleSkipped);
    // The request for that sample's buffer still told of the gap.
    EXPECT_EQ(sinkAllocator()->requests().back().flags, DWORD(AM_GBF_PREVFRAMESKIPPED));
}

TEST_F(TransformStream, FailedTransform) {
    Start();
    for (const HRESULT failure : {E_FAIL, E_UNEXPECTED, VFW_E_RUNTIME_ERROR}) {
        filter_->log.Inject("Transform", failure);
        EXPECT_EQ(Deliver({.bytes = bytes_}), failure);
        EXPECT_EQ(sinkAllocator()->samplesOut(), 0);
    }
    EXPECT_EQ(Samples().size(), 0u);
    EXPECT_EQ(sink_->pin().calls().Count("Receive"), 0);
    filter_->log.ClearInjections();
    EXPECT_EQ(Deliver({.bytes = bytes_}), S_OK);
}

TEST_F(TransformStream, WithoutABuffer) {
    Start();
    for (const HRESULT failure : {VFW_E_NOT_COMMITTED, VFW_E_TIMEOUT, E_OUTOFMEMORY}) {
        sinkAllocator()->calls().Inject("GetBuffer", failure);
        EXPECT_EQ(Deliver({.bytes = bytes_}), failure);
    }
    EXPECT_EQ(filter_->log.Count("Transform"), 0);
}

TEST_F(TransformStream, DefaultTransformIsUnexpected) {
    Start();
    filter_->transform = [&](IMediaSample* in, IMediaSample* out) {
        return filter_->CTransformFilter::Transform(in, out);
    };
    EXPECT_EQ(Deliver({.bytes = bytes_}), E_UNEXPECTED);
}

// A filter may send one input sample on several times.
class RepeatingTransform final : public ProbeTransform {
  public:
    HRESULT Receive(IMediaSample* sample) override {
        for (int i = 0; i < 3; ++i) {
            const HRESULT hr = CTransformFilter::Receive(sample);
            if (hr != S_OK) return hr;
        }
        return S_OK;
    }
};

TEST_F(TransformStream, SameInputSampleSeveralTimes) {
    filter_ = ComPtr<ProbeTransform>(new RepeatingTransform);
    Start();
    EXPECT_EQ(Deliver({.start = 1, .stop = 2, .bytes = bytes_}), S_OK);
    ASSERT_EQ(Samples().size(), 3u);
    EXPECT_EQ(sinkAllocator()->requests().size(), 3u);
    for (const ReceivedSample& sample : Samples()) EXPECT_EQ(sample.bytes, bytes_);
}

}  // namespace
