// The AVI sink while its disk is slow, full or broken.

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <thread>

#include "host/filters/avi_sink_filter.h"
#include "tests/host/avi/avi_checker.h"
#include "tests/host/filters/slow_store.h"
#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_source.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CurrentLiveCounts;
using tavo_test::Graph;
using tavo_test::MakeVideoType;
using tavo_test::TestSource;
using tavo_test::VideoSpec;
using tavo_test::WaitUntil;

constexpr long kQueueLength = 8;

class AviSinkQueue : public testing::Test {
  protected:
    void SetUp() override { before_ = CurrentLiveCounts(); }

    void TearDown() override {
        store_.Open();
        if (other_.joinable()) other_.join();
        graph_.reset();
        source_.Reset();
        reference_.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        EXPECT_EQ(CurrentLiveCounts(), before_);
    }

    void Start(const VideoSpec& spec = Yuy2(), tavo_test::SourceConfig config = {}) {
        HRESULT hr = S_OK;
        sink_ = new CAviSink(&hr);
        ASSERT_EQ(hr, S_OK);
        reference_ = ComPtr<IBaseFilter>(sink_);
        config.types = {MakeVideoType(spec)};
        source_ = TestSource::Create(config);
        graph_ = std::make_unique<Graph>();
        ASSERT_EQ(graph_->Add(source_.Get(), L"source"), S_OK);
        ASSERT_EQ(graph_->Add(sink_, L"sink"), S_OK);
        ASSERT_EQ(graph_->Connect(&source_->pin(), sink_->GetPin(0)), S_OK);
        ASSERT_EQ(sink_->OpenStore(store_, {}), IoResult::Ok);
        ASSERT_EQ(graph_->Run(), S_OK);
    }

    HRESULT Deliver(BYTE value) {
        return source_->pin().Deliver({.start = value * 400000,
                                       .stop = (value + 1) * 400000,
                                       .bytes = std::vector<BYTE>(kFrameBytes, value)});
    }

    void DeliverMany(BYTE first, BYTE end) {
        for (BYTE n = first; n < end; ++n) ASSERT_EQ(Deliver(n), S_OK) << int{n};
    }

    // On another thread; `ended_` tells when it is through.
    void Meanwhile(const std::function<void()>& action) {
        ended_ = false;
        other_ = std::thread([this, action] {
            action();
            ended_ = true;
        });
    }

    // The file that a disk at full speed gets from so many frames.
    std::vector<std::byte> FileOf(BYTE frames) {
        tavo_test::MemoryStore store;
        TimedAviWriter writer(store, ReadVideoType(*MakeVideoType(Yuy2()).Get())->video,
                              VideoSpec{}.timePerFrame, TimedAviWriter::Timing::Kept);
        EXPECT_EQ(writer.Begin(), IoResult::Ok);
        for (BYTE n = 0; n < frames; ++n) {
            const std::vector<std::byte> frame(kFrameBytes, std::byte{n});
            EXPECT_EQ(writer.WriteFrame(frame, n * 400000, 400000), IoResult::Ok);
        }
        EXPECT_EQ(writer.SettleTiming(), IoResult::Ok);
        EXPECT_EQ(writer.Finish(), IoResult::Ok);
        return store.bytes;
    }

    SlowStore store_;
    CAviSink* sink_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<TestSource> source_;
    std::unique_ptr<Graph> graph_;
    std::thread other_;
    std::atomic<bool> ended_ = false;
    tavo_test::LiveCounts before_;
};

TEST_F(AviSinkQueue, FramesWaitForASlowDisk) {
    Start();
    DeliverMany(0, kQueueLength);
    EXPECT_EQ(sink_->Count(), 8u);
    ASSERT_TRUE(WaitUntil([&] { return store_.waiting == 1; }));
    Meanwhile([&] { DeliverMany(kQueueLength, 20); });
    Sleep(20);
    EXPECT_EQ(sink_->Count(), 8u) << "the queue is bounded";
    EXPECT_FALSE(ended_);
    store_.Open();
    other_.join();
    EXPECT_EQ(graph_->Stop(), S_OK);
    const CAviSink::Result result = sink_->FinishFile();
    EXPECT_EQ(result.io, IoResult::Ok);
    EXPECT_EQ(result.frames, 20u);
    EXPECT_EQ(store_.bytes, FileOf(20));
}

TEST_F(AviSinkQueue, FullDiskWhileFramesWait) {
    Start();
    store_.capacity = store_.bytes.size() + 3 * (kFrameBytes + 8) + 20;
    DeliverMany(0, kQueueLength);
    store_.Open();
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(graph_->Events().back().first, HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    EXPECT_EQ(Deliver(8), E_FAIL);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(graph_->CountEvents(EC_ERRORABORT), 1);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
    EXPECT_EQ(graph_->Stop(), S_OK);
    const CAviSink::Result result = sink_->FinishFile();
    EXPECT_EQ(result.io, IoResult::DiskFull);
    EXPECT_FALSE(result.typeChanged);
    // The index takes the room of a frame.
    EXPECT_EQ(result.frames, 2u);
    EXPECT_EQ(CheckAvi(store_).fault, "");
    EXPECT_EQ(CheckAvi(store_).frames.size(), 2u);
}

TEST_F(AviSinkQueue, OtherFailuresAreTold) {
    Start();
    DeliverMany(0, 2);
    ASSERT_TRUE(WaitUntil([&] { return store_.waiting == 1; }));
    store_.failure = IoResult::AccessDenied;
    store_.Open();
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(graph_->Events().back().first, HRESULT_FROM_WIN32(ERROR_WRITE_FAULT));
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().io, IoResult::AccessDenied);
}

TEST_F(AviSinkQueue, WantOfMemoryIsTold) {
    Start();
    DeliverMany(0, 2);
    store_.outOfMemory = true;
    store_.Open();
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(graph_->Events().back().first, E_OUTOFMEMORY);
    EXPECT_EQ(Deliver(2), E_OUTOFMEMORY);
    EXPECT_EQ(store_.waiting, 1) << "nothing is written behind the gap";
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().io, IoResult::Ok);
}

TEST_F(AviSinkQueue, StopWritesWhatWaits) {
    Start();
    DeliverMany(0, kQueueLength);
    HRESULT last = E_PENDING;
    std::thread blocked([&] { last = Deliver(kQueueLength); });
    HRESULT stopped = E_PENDING;
    Meanwhile([&] { stopped = graph_->Stop(); });
    Sleep(20);
    EXPECT_FALSE(ended_) << "not before the frames are written";
    store_.Open();
    other_.join();
    blocked.join();
    EXPECT_EQ(stopped, S_OK);
    const CAviSink::Result result = sink_->FinishFile();
    EXPECT_EQ(result.frames, last == S_OK ? 9u : 8u);
    EXPECT_EQ(store_.bytes, FileOf(static_cast<BYTE>(result.frames)));
    EXPECT_EQ(Deliver(9), VFW_E_NOT_COMMITTED);
}

TEST_F(AviSinkQueue, FlushKeepsWhatWaits) {
    Start();
    DeliverMany(0, 3);
    EXPECT_EQ(source_->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(Deliver(99), S_FALSE);
    EXPECT_EQ(source_->pin().SendEndFlush(), S_OK);
    DeliverMany(3, 5);
    EXPECT_LE(store_.waiting, 1);
    store_.Open();
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().frames, 5u);
    EXPECT_EQ(store_.bytes, FileOf(5));
}

TEST_F(AviSinkQueue, TheEndIsReportedAfterTheLastFrame) {
    Start();
    DeliverMany(0, 3);
    Meanwhile([&] { source_->pin().SendEndOfStream(); });
    Sleep(20);
    EXPECT_FALSE(ended_);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
    store_.Open();
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    EXPECT_EQ(store_.waiting, 3);
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().frames, 3u);
}

TEST_F(AviSinkQueue, AnotherFormatComesAfterTheFramesBefore) {
    Start();
    DeliverMany(0, 2);
    HRESULT refused = S_OK;
    Meanwhile([&] {
        VideoSpec other = Yuy2();
        other.width = kSide / 2;
        refused = source_->pin().Deliver({.type = MakeVideoType(other)});
    });
    Sleep(20);
    EXPECT_EQ(graph_->CountEvents(EC_ERRORABORT), 0);
    store_.Open();
    other_.join();
    EXPECT_EQ(refused, E_FAIL);
    EXPECT_EQ(graph_->Stop(), S_OK);
    const CAviSink::Result result = sink_->FinishFile();
    EXPECT_TRUE(result.typeChanged);
    EXPECT_EQ(result.frames, 2u);
}

// What fails first is told, although the other format came while the frame waited.
TEST_F(AviSinkQueue, AFullDiskComesBeforeAnotherFormat) {
    Start();
    store_.capacity = store_.bytes.size() + 100;
    DeliverMany(0, 2);
    HRESULT refused = S_OK;
    Meanwhile([&] {
        VideoSpec other = Yuy2();
        other.width = kSide / 2;
        refused = source_->pin().Deliver({.type = MakeVideoType(other)});
    });
    store_.Open();
    other_.join();
    EXPECT_EQ(refused, E_FAIL);
    EXPECT_EQ(graph_->Stop(), S_OK);
    const CAviSink::Result result = sink_->FinishFile();
    EXPECT_FALSE(result.typeChanged);
    EXPECT_EQ(result.io, IoResult::DiskFull);
}

TEST_F(AviSinkQueue, FinishWritesWhatWaits) {
    Start();
    DeliverMany(0, 4);
    CAviSink::Result result;
    Meanwhile([&] { result = sink_->FinishFile(); });
    ASSERT_TRUE(WaitUntil([&] { return Deliver(99) == E_FAIL; }));
    store_.Open();
    other_.join();
    EXPECT_EQ(result.frames, sink_->Count());
    EXPECT_GE(result.frames, 4u);
}

TEST_F(AviSinkQueue, GoesWithItsFrames) {
    Start();
    DeliverMany(0, 4);
    store_.Open();
    graph_.reset();
    reference_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
    EXPECT_EQ(store_.waiting, 4);
}

TEST_F(AviSinkQueue, RunsAgain) {
    Start();
    DeliverMany(0, 3);
    store_.Open();
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(graph_->Run(), S_OK);
    DeliverMany(3, 12);
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().frames, 12u);
    EXPECT_EQ(store_.bytes, FileOf(12));
}

// All buffers together have 64 MiB, and one is the source's.
TEST_F(AviSinkQueue, LargeFramesWaitInFewBuffersOrNone) {
    struct Row {
        LONG width, height;
        long buffers;
    };
    for (const auto& [width, height, buffers] :
         {Row{16, 16, 9}, Row{4096, 1024, 8}, Row{4096, 2048, 4}, Row{4096, 4096, 2},
          Row{4096, 4098, 1}}) {
        VideoSpec spec = Yuy2();
        spec.width = width;
        spec.height = height;
        Start(spec, {.wish = {1, 0, 1, 0}});
        ALLOCATOR_PROPERTIES granted = {};
        EXPECT_EQ(source_->pin().allocator()->GetProperties(&granted), S_OK);
        EXPECT_EQ(granted.cBuffers, buffers) << width << " x " << height;
        graph_.reset();
    }
}

// Its samples may be wanted back at once.
TEST_F(AviSinkQueue, FramesOfAnotherAllocatorDoNotWait) {
    store_.Open();
    Start(Yuy2(), {.choice = tavo_test::AllocatorChoice::kOwnOnly});
    for (BYTE n = 0; n < 3; ++n) {
        EXPECT_EQ(Deliver(n), S_OK);
        EXPECT_EQ(store_.waiting, n + 1);
        EXPECT_EQ(source_->pin().testAllocator()->samplesOut(), 0);
    }
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->FinishFile().frames, 3u);
    EXPECT_EQ(store_.bytes, FileOf(3));
}

}  // namespace
}  // namespace tavo
