// The AVI source: its types, its samples, and how it stops.

#include "host/filters/avi_source_filter.h"

#include <gtest/gtest.h>

#include "dshow/com_ptr.h"
#include "tests/host/avi/movie_files.h"
#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_sink.h"
#include "tests/support/watchdog.h"

namespace tavo {
namespace {

using tavo_test::CurrentLiveCounts;
using tavo_test::Frame;
using tavo_test::Graph;
using tavo_test::TestSink;
using tavo_test::Watchdog;

// Top-down in the file, bottom-up in the sample.
const VideoFormat kVideo = {PixelFormat::RGB565, kCompressionBitFields, 8, -4};

class AviSource : public tavo_test::MovieTest {
  protected:
    void SetUp() override {
        MovieTest::SetUp();
        before_ = CurrentLiveCounts();
        frames_ = tavo_test::NoiseFrames(kVideo, 20);
        tavo_test::WriteMovie(Path(L"in.avi"), kVideo, frames_);
        auto movie = std::make_shared<RawMovie>();
        ASSERT_EQ(movie->file.OpenForReading(Path(L"in.avi")), IoResult::Ok);
        ASSERT_EQ(movie->reader.Open(movie->file), AviResult::Ok);
        HRESULT hr = S_OK;
        source_ = new CAviSource(std::move(movie), &hr);
        ASSERT_EQ(hr, S_OK);
        reference_ = ComPtr<IBaseFilter>(source_);
    }

    void TearDown() override {
        graph_.reset();
        sink_.Reset();
        reference_.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        EXPECT_EQ(CurrentLiveCounts(), before_);
        MovieTest::TearDown();
    }

    void Connect(const tavo_test::SinkConfig& config = {}) {
        sink_ = TestSink::Create(config);
        graph_ = std::make_unique<Graph>();
        ASSERT_EQ(graph_->Add(source_, L"source"), S_OK);
        ASSERT_EQ(graph_->Add(sink_.Get(), L"sink"), S_OK);
        ASSERT_EQ(graph_->Connect(source_->GetPin(0), &sink_->pin()), S_OK);
    }

    void ExpectAllFrames() {
        const auto samples = sink_->pin().samples();
        ASSERT_EQ(samples.size(), frames_.size());
        for (size_t n = 0; n < samples.size(); ++n) {
            const auto* bytes = reinterpret_cast<const std::byte*>(samples[n].bytes.data());
            Frame upright = frames_[n];
            FlipRows(upright, RowStride(kVideo.format, 8));
            EXPECT_EQ(Frame(bytes, bytes + samples[n].bytes.size()), upright) << n;
        }
    }

    bool WaitForCall(const char* method) {
        return tavo_test::WaitUntil([&] { return sink_->pin().calls().Count(method) > 0; });
    }

    bool WaitForEnd() { return WaitForCall("EndOfStream"); }

    std::vector<Frame> frames_;
    CAviSource* source_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<TestSink> sink_;
    std::unique_ptr<Graph> graph_;
    tavo_test::LiveCounts before_;
};

TEST_F(AviSource, OffersTheFilesFormatInBothBlocks) {
    CBasePin* const pin = source_->GetPin(0);
    CMediaType first;
    ASSERT_EQ(pin->GetMediaType(0, &first), S_OK);
    EXPECT_EQ(*first.Subtype(), MEDIASUBTYPE_RGB565);
    EXPECT_EQ(*first.FormatType(), FORMAT_VideoInfo);
    EXPECT_EQ(first.FormatLength(), sizeof(VIDEOINFOHEADER) + 12);
    const auto* header = reinterpret_cast<const VIDEOINFOHEADER*>(first.Format());
    EXPECT_EQ(header->AvgTimePerFrame, 333667);
    EXPECT_EQ(header->bmiHeader.biWidth, 8);
    EXPECT_EQ(header->bmiHeader.biHeight, 4);
    EXPECT_EQ(header->bmiHeader.biCompression, static_cast<DWORD>(BI_BITFIELDS));
    EXPECT_EQ(header->bmiHeader.biSizeImage, 64u);
    CMediaType second;
    ASSERT_EQ(pin->GetMediaType(1, &second), S_OK);
    EXPECT_EQ(*second.FormatType(), FORMAT_VideoInfo2);
    CMediaType third;
    EXPECT_EQ(pin->GetMediaType(2, &third), VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(pin->QueryAccept(&first), S_OK);
    EXPECT_EQ(pin->QueryAccept(&second), S_OK);
    const GUID other = MEDIASUBTYPE_RGB555;
    first.SetSubtype(&other);
    EXPECT_EQ(pin->QueryAccept(&first), S_FALSE);
}

TEST_F(AviSource, DeliversEveryFrameOnceThenTheEnd) {
    Watchdog dog("a whole stream");
    Connect();
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(WaitForEnd());
    ExpectAllFrames();
    const auto samples = sink_->pin().samples();
    EXPECT_EQ(samples[0].start, 0);
    EXPECT_EQ(samples[0].stop, 333666);
    EXPECT_EQ(samples[3].start, 1001000);
    EXPECT_EQ(samples[3].mediaStart, 3);
    EXPECT_EQ(samples[3].mediaEnd, 4);
    EXPECT_TRUE(samples[0].discontinuity);
    EXPECT_FALSE(samples[1].discontinuity);
    EXPECT_TRUE(samples[1].syncPoint);
    EXPECT_EQ(sink_->pin().segments().size(), 1u);
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 1);
}

TEST_F(AviSource, StartsAgainFromTheFirstFrame) {
    Watchdog dog("two streams");
    Connect();
    for (int round = 1; round <= 2; ++round) {
        sink_->pin().ClearSamples();
        ASSERT_EQ(graph_->Run(), S_OK);
        ASSERT_TRUE(sink_->pin().WaitForSamples(frames_.size()));
        ASSERT_EQ(graph_->Stop(), S_OK);
        ExpectAllFrames();
    }
}

TEST_F(AviSource, StopsWhileAFrameIsHeld) {
    Watchdog dog("stop while a frame is held");
    // The sink stops first, releases the sample, and refuses more like any stopped sink.
    Connect({.onReceive = [](IMediaSample*) { return VFW_E_WRONG_STATE; }});
    sink_->pin().HoldReceive();
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(sink_->pin().WaitUntilHeld());
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 0);
    EXPECT_EQ(sink_->pin().calls().Count("Receive"), 1);
}

TEST_F(AviSource, EndsQuietlyWhereTheReceiverStoppedFirst) {
    Watchdog dog("a receiver that stopped");
    for (const HRESULT stopped : {VFW_E_WRONG_STATE, VFW_E_NOT_COMMITTED}) {
        Connect({.onReceive = [stopped](IMediaSample*) { return stopped; }});
        ASSERT_EQ(graph_->Run(), S_OK);
        ASSERT_TRUE(WaitForCall("Receive"));
        // Time for the thread to report more, if it did.
        Sleep(200);
        EXPECT_EQ(sink_->pin().calls().Count("Receive"), 1);
        EXPECT_EQ(sink_->pin().calls().Count("EndOfStream"), 0);
        EXPECT_FALSE(graph_->WaitForEvent(EC_ERRORABORT, 0));
        EXPECT_EQ(graph_->Stop(), S_OK);
        graph_.reset();
        sink_.Reset();
    }
}

TEST_F(AviSource, AFrameThatIsDroppedDoesNotEndTheStream) {
    Watchdog dog("dropping");
    Connect({.onReceive = [](IMediaSample*) { return S_FALSE; }});
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(sink_->pin().calls().Count("Receive"), static_cast<int>(frames_.size()));
}

TEST_F(AviSource, AFailureDownstreamDoes) {
    Watchdog dog("failing");
    Connect({.onReceive = [](IMediaSample*) { return E_FAIL; }});
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(sink_->pin().calls().Count("Receive"), 1);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
}

TEST_F(AviSource, AFileThatShrankIsAnError) {
    Watchdog dog("shrinking");
    Connect();
    FileStore file;
    ASSERT_EQ(file.Create(Path(L"in.avi")), IoResult::Ok);
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(WaitForEnd());
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(graph_->Events().back().first, HRESULT_FROM_WIN32(ERROR_READ_FAULT));
    EXPECT_EQ(sink_->pin().samples().size(), 0u);
}

TEST_F(AviSource, BuffersThatAreTooShortAreRefused) {
    sink_ = TestSink::Create({.allocator = tavo_test::SinkAllocator::kOwn,
                              .ownAllocator = {.bufferSize = 63, .claimedSize = 63}});
    graph_ = std::make_unique<Graph>();
    ASSERT_EQ(graph_->Add(source_, L"source"), S_OK);
    ASSERT_EQ(graph_->Add(sink_.Get(), L"sink"), S_OK);
    ASSERT_EQ(graph_->Connect(source_->GetPin(0), &sink_->pin()), S_OK);
    Watchdog dog("short buffers");
    ASSERT_EQ(graph_->Run(), S_OK);
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(sink_->pin().samples().size(), 0u);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
}

}  // namespace
}  // namespace tavo
