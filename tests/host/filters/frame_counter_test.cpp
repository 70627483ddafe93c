// The frame counter is transparent to both sides, and counts correctly.

#include "host/filters/frame_counter_filter.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_sink.h"
#include "tests/support/test_source.h"

namespace tavo {
namespace {

using tavo_test::ConnectPins;
using tavo_test::CurrentLiveCounts;
using tavo_test::MakeVideoType;
using tavo_test::MediaType;
using tavo_test::TestSink;
using tavo_test::TestSource;

MediaType Type(LONG width = 16) {
    return MakeVideoType({.subtype = MEDIASUBTYPE_YUY2, .width = width, .height = 8});
}

class FrameCounter : public testing::Test, public CFrameCounter::Arrivals {
  protected:
    void SetUp() override {
        before_ = CurrentLiveCounts();
        HRESULT hr = S_OK;
        counter_ = new CFrameCounter(*this, &hr);
        ASSERT_EQ(hr, S_OK);
        reference_ = ComPtr<IBaseFilter>(counter_);
        source_ = TestSource::Create({.types = {Type()}});
        sink_ = TestSink::Create(
            {.accept =
                 [](const AM_MEDIA_TYPE& type) { return MediaType(type).Bitmap()->biWidth == 16; },
             .allocator = tavo_test::SinkAllocator::kOwn});
    }

    void TearDown() override {
        if (source_->pin().input() != nullptr) {
            tavo_test::DisconnectPins(&source_->pin(), counter_->GetPin(0));
        }
        if (counter_->Output().IsConnected()) {
            tavo_test::DisconnectPins(counter_->GetPin(1), &sink_->pin());
        }
        source_.Reset();
        sink_.Reset();
        reference_.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        EXPECT_EQ(CurrentLiveCounts(), before_);
    }

    void Connect() {
        ASSERT_EQ(ConnectPins(counter_->GetPin(1), &sink_->pin(), Type().Get()), S_OK);
        ASSERT_EQ(ConnectPins(&source_->pin(), counter_->GetPin(0)), S_OK);
    }

    void Pause() {
        ASSERT_EQ(sink_->Pause(), S_OK);
        ASSERT_EQ(counter_->Pause(), S_OK);
        ASSERT_EQ(source_->Pause(), S_OK);
    }

    void Stop() {
        ASSERT_EQ(sink_->Stop(), S_OK);
        ASSERT_EQ(counter_->Stop(), S_OK);
        ASSERT_EQ(source_->Stop(), S_OK);
    }

    // One per sample that the sink got, `extra_` more for each, and `arrived_` besides.
    uint64_t Count() override { return sink_->pin().samples().size() * (1 + extra_) + arrived_; }
    void Expect(REFERENCE_TIME start, REFERENCE_TIME stop) override { expected_ = {start, stop}; }
    bool IsShown() override { return isShown_; }
    bool WantsMore() override { return wantsMore_; }

    CFrameCounter* counter_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<TestSource> source_;
    tavo_test::ComPtr<TestSink> sink_;
    uint64_t extra_ = 0;
    uint64_t arrived_ = 0;
    std::pair<REFERENCE_TIME, REFERENCE_TIME> expected_;
    bool isShown_ = true;
    bool wantsMore_ = false;
    tavo_test::LiveCounts before_;
};

TEST_F(FrameCounter, AllocatorIsThatOfThePinDownstream) {
    Connect();
    EXPECT_EQ(source_->pin().allocator(), sink_->pin().ownAllocator());
    EXPECT_EQ(sink_->pin().allocator(), sink_->pin().ownAllocator());
}

TEST_F(FrameCounter, TypesAreThoseOfThePinDownstream) {
    EXPECT_EQ(counter_->GetPin(0)->QueryAccept(Type().Get()), S_FALSE);
    Connect();
    EXPECT_EQ(counter_->GetPin(0)->QueryAccept(Type().Get()), S_OK);
    EXPECT_EQ(counter_->GetPin(0)->QueryAccept(Type(32).Get()), S_FALSE);
}

TEST_F(FrameCounter, SamplesPassUntouched) {
    Connect();
    Pause();
    const auto sample = source_->pin().MakeSample({.start = 40, .stop = 80, .bytes = {1, 2, 3}});
    EXPECT_EQ(source_->pin().Deliver(sample.Get()), S_OK);
    EXPECT_EQ(source_->pin().SendNewSegment(1, 2, 3.0), S_OK);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    const auto samples = sink_->pin().samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].identity, sample.Get());
    EXPECT_EQ(samples[0].start, 40);
    EXPECT_EQ(sink_->pin().segments().size(), 1u);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    Stop();
}

TEST_F(FrameCounter, CountsFramesTimesAndRepeats) {
    Connect();
    Pause();
    extra_ = 2;
    for (int n = 0; n < 4; ++n) {
        EXPECT_EQ(source_->pin().Deliver({.start = n * 1000, .stop = n * 1000 + 1}), S_OK);
    }
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    const CFrameCounter::Counts counts = counter_->Read();
    EXPECT_EQ(counts.frames, 5u);
    EXPECT_EQ(counts.dropped, 0u);
    EXPECT_EQ(counts.repeated, 10u);
    EXPECT_EQ(counts.position, 3000);
    EXPECT_EQ(counts.stamps.FirstInterval(), 1000);
    EXPECT_EQ(counts.stamps.Unknown(), 1u);
    Stop();
}

TEST_F(FrameCounter, AFrameThatLeadsToRepeatsOfAnotherIsDropped) {
    Connect();
    Pause();
    extra_ = 2;
    isShown_ = false;
    EXPECT_EQ(source_->pin().Deliver({.start = 100, .stop = 140}), S_OK);
    EXPECT_EQ(expected_, std::pair(REFERENCE_TIME{100}, REFERENCE_TIME{140}));
    EXPECT_EQ(counter_->Read().dropped, 1u);
    EXPECT_EQ(counter_->Read().repeated, 3u);
    // Unknown without times.
    EXPECT_EQ(source_->pin().Deliver({.start = 200}), S_OK);
    EXPECT_EQ(expected_.first, 100);
    EXPECT_EQ(counter_->Read().dropped, 1u);
    EXPECT_EQ(counter_->Read().repeated, 5u);
    Stop();
}

TEST_F(FrameCounter, DroppedFramesLookAcceptedUpstream) {
    Connect();
    Pause();
    sink_->pin().config.onReceive = [](IMediaSample*) { return S_FALSE; };
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    EXPECT_EQ(counter_->Read().dropped, 1u);
    EXPECT_EQ(counter_->Read().frames, 1u);
    Stop();
}

TEST_F(FrameCounter, FailuresArePassedOnAndKept) {
    Connect();
    Pause();
    sink_->pin().config.onReceive = [](IMediaSample*) { return E_OUTOFMEMORY; };
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), E_OUTOFMEMORY);
    sink_->pin().config.onReceive = [](IMediaSample*) { return E_FAIL; };
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), E_FAIL);
    EXPECT_EQ(counter_->Read().failure, E_OUTOFMEMORY);
    EXPECT_EQ(counter_->Read().frames, 0u);
    Stop();
}

TEST_F(FrameCounter, AFrameThatMeetsAStoppedFilterIsNoFailure) {
    Connect();
    Pause();
    for (const HRESULT stopped : {VFW_E_WRONG_STATE, VFW_E_NOT_COMMITTED}) {
        sink_->pin().config.onReceive = [stopped](IMediaSample*) { return stopped; };
        EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), stopped);
        EXPECT_EQ(counter_->Read().failure, S_OK);
        EXPECT_EQ(counter_->Read().frames, 0u);
    }
    Stop();
}

// As when a stop comes between the slots of a frame.
TEST_F(FrameCounter, WhatCameOutBeforeAFailureCounts) {
    Connect();
    Pause();
    sink_->pin().config.onReceive = [this](IMediaSample*) {
        arrived_ += 3;
        return VFW_E_WRONG_STATE;
    };
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), VFW_E_WRONG_STATE);
    const CFrameCounter::Counts counts = counter_->Read();
    EXPECT_EQ(counts.frames, 1u);
    EXPECT_EQ(counts.dropped, 0u);
    EXPECT_EQ(counts.repeated, 2u);
    Stop();
}

TEST_F(FrameCounter, ASectionIsCutAndItsTimesBeginAtZero) {
    counter_->SetSection({1000, 500});
    Connect();
    Pause();
    EXPECT_EQ(source_->pin().SendNewSegment(400, 9000, 1.0), S_OK);
    EXPECT_EQ(sink_->pin().segments().back().start, 0);
    // Before, without a time, at its start, without an end, at its end.
    EXPECT_EQ(source_->pin().Deliver({.start = 599, .stop = 700}), S_OK);
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    EXPECT_EQ(sink_->pin().samples().size(), 0u);
    EXPECT_EQ(source_->pin().Deliver({.start = 600, .stop = 700}), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.start = 1099}), S_OK);
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 0);
    EXPECT_EQ(source_->pin().Deliver({.start = 1100, .stop = 1200}), S_FALSE);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    EXPECT_EQ(source_->pin().Deliver({.start = 600, .stop = 700}), S_FALSE);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    const auto samples = sink_->pin().samples();
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].start, 0);
    EXPECT_EQ(samples[0].stop, 100);
    EXPECT_EQ(samples[1].start, 499);
    EXPECT_EQ(counter_->Read().frames, 3u);
    EXPECT_EQ(counter_->Read().position, 499);
    Stop();
}

// A source that sends all streams from one thread must not end with the first one.
TEST_F(FrameCounter, TheSourceGoesOnWhileAnotherStreamIsWanted) {
    counter_->SetSection({1000, 500});
    Connect();
    Pause();
    wantsMore_ = true;
    EXPECT_EQ(source_->pin().Deliver({.start = 1500, .stop = 1600}), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    EXPECT_EQ(source_->pin().Deliver({.start = 1600, .stop = 1700}), S_OK);
    wantsMore_ = false;
    EXPECT_EQ(source_->pin().Deliver({.start = 1700, .stop = 1800}), S_FALSE);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
    EXPECT_TRUE(sink_->pin().samples().empty());
    Stop();
}

TEST_F(FrameCounter, ATypeOfAFrameInFrontOfTheSectionIsNotLost) {
    counter_->SetSection({1000, 500});
    Connect();
    Pause();
    const MediaType type = Type();
    EXPECT_EQ(source_->pin().Deliver({.start = 0, .stop = 500, .type = type}), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.start = 1000, .stop = 1001}), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.start = 1001, .stop = 1002}), S_OK);
    const auto samples = sink_->pin().samples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_TRUE(samples[0].type.has_value());
    EXPECT_FALSE(samples[1].type.has_value());
    Stop();
}

TEST_F(FrameCounter, FlushingPassesAndRefusesFrames) {
    Connect();
    Pause();
    EXPECT_EQ(source_->pin().SendBeginFlush(), S_OK);
    EXPECT_TRUE(sink_->pin().flushing());
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_FALSE);
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
    EXPECT_FALSE(sink_->pin().flushing());
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    Stop();
    EXPECT_EQ(counter_->Read().frames, 1u);
}

}  // namespace
}  // namespace tavo
