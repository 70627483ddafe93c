// The AVI sink as a renderer: types, frames, end of stream, failures.

#include "host/filters/avi_sink_filter.h"

#include <gtest/gtest.h>

#include "tests/host/avi/movie_files.h"
#include "tests/host/filters/small_frames.h"
#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_source.h"

namespace tavo {
namespace {

using tavo_test::CurrentLiveCounts;
using tavo_test::FourCC;
using tavo_test::Graph;
using tavo_test::LiveCounts;
using tavo_test::MakeVideoType;
using tavo_test::MediaType;
using tavo_test::Movie;
using tavo_test::ReadMovie;
using tavo_test::TestSource;
using tavo_test::VideoSpec;

class AviSink : public tavo_test::MovieTest {
  protected:
    void SetUp() override {
        MovieTest::SetUp();
        before_ = CurrentLiveCounts();
        HRESULT hr = S_OK;
        sink_ = new CAviSink(&hr);
        ASSERT_EQ(hr, S_OK);
        reference_ = ComPtr<IBaseFilter>(sink_);
    }

    void TearDown() override {
        graph_.reset();
        source_.Reset();
        reference_.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        EXPECT_EQ(CurrentLiveCounts(), before_);
        MovieTest::TearDown();
    }

    IPin* Pin() { return sink_->GetPin(0); }

    // Source -> sink in a graph, with the file open.
    void Connect(const VideoSpec& spec, const tavo_test::SourceConfig& more = {},
                 const CAviSink::FileOptions& file = {}) {
        tavo_test::SourceConfig config = more;
        config.types = {MakeVideoType(spec)};
        source_ = TestSource::Create(config);
        graph_ = std::make_unique<Graph>();
        ASSERT_EQ(graph_->Add(source_.Get(), L"source"), S_OK);
        ASSERT_EQ(graph_->Add(sink_, L"sink"), S_OK);
        ASSERT_EQ(graph_->Connect(&source_->pin(), Pin()), S_OK);
        ASSERT_EQ(sink_->OpenFile(Path(L"out.avi"), file), IoResult::Ok);
    }

    HRESULT Deliver(BYTE value, std::optional<REFERENCE_TIME> start = {}) {
        return source_->pin().Deliver({.start = start,
                                       .stop = start.value_or(0) + 1,
                                       .bytes = std::vector<BYTE>(kFrameBytes, value)});
    }

    Movie Finish() {
        EXPECT_EQ(graph_->Stop(), S_OK);
        result_ = sink_->FinishFile();
        return ReadMovie(Path(L"out.avi"));
    }

    CAviSink* sink_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<TestSource> source_;
    std::unique_ptr<Graph> graph_;
    CAviSink::Result result_;
    LiveCounts before_;
};

TEST_F(AviSink, AcceptsTheElevenFormatsInBothBlocks) {
    const GUID subtypes[] = {MEDIASUBTYPE_YV12,   MEDIASUBTYPE_IYUV,  FourCC("I420"),
                             MEDIASUBTYPE_YVU9,   MEDIASUBTYPE_YUY2,  FourCC("YUYV"),
                             FourCC("YVYU"),      MEDIASUBTYPE_UYVY,  MEDIASUBTYPE_RGB24,
                             MEDIASUBTYPE_RGB555, MEDIASUBTYPE_RGB565};
    for (const GUID& subtype : subtypes) {
        for (const GUID& block : {FORMAT_VideoInfo, FORMAT_VideoInfo2}) {
            const MediaType type = MakeVideoType({.subtype = subtype, .formattype = block});
            EXPECT_EQ(Pin()->QueryAccept(type.Get()), S_OK) << subtype.Data1;
        }
    }
}

TEST_F(AviSink, RefusesEverythingElse) {
    const VideoSpec specs[] = {
        {.subtype = MEDIASUBTYPE_RGB32},
        {.subtype = MEDIASUBTYPE_RGB8},
        {.subtype = FourCC("NV12")},
        {.subtype = GUID_NULL},
        {.majortype = MEDIATYPE_Audio},
        {.width = 0},
        {.width = -320},
        {.height = 0},
        {.height = LONG_MIN},
        {.width = LONG_MAX, .height = LONG_MAX},
        {.formatBytes = 40},
        {.formatBytes = sizeof(VIDEOINFOHEADER) - 1},
        {.formattype = FORMAT_VideoInfo2, .formatBytes = sizeof(VIDEOINFOHEADER2) - 1},
        {.absentFormat = true},
        {.formatBytes = sizeof(VIDEOINFOHEADER), .absentFormat = true},
        {.formattype = GUID_NULL},
    };
    int row = 0;
    for (const VideoSpec& spec : specs) {
        EXPECT_EQ(Pin()->QueryAccept(MakeVideoType(spec).Get()), S_FALSE) << row;
        ++row;
    }
    EXPECT_EQ(Pin()->QueryAccept(nullptr), E_POINTER);
}

TEST_F(AviSink, IsARenderer) {
    const auto flags = reference_.As<IAMFilterMiscFlags>(IID_IAMFilterMiscFlags);
    ASSERT_TRUE(flags);
    EXPECT_EQ(flags->GetMiscFlags(), static_cast<ULONG>(AM_FILTER_MISC_FLAGS_IS_RENDERER));
    EXPECT_FALSE(reference_.As<IUnknown>(IID_IMediaSeeking));
}

TEST_F(AviSink, WritesFramesAndReportsTheEnd) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    for (BYTE n = 0; n < 5; ++n) EXPECT_EQ(Deliver(n, n * 400000), S_OK);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    const Movie movie = Finish();
    EXPECT_EQ(result_.io, IoResult::Ok);
    EXPECT_EQ(result_.frames, 5u);
    EXPECT_FALSE(result_.stamps.IsIrregular());
    ASSERT_EQ(movie.avi.fault, "");
    ASSERT_EQ(movie.frames.size(), 5u);
    EXPECT_EQ(movie.frames[3], tavo_test::Frame(kFrameBytes, std::byte{3}));
    EXPECT_EQ(movie.avi.rate, 25u);
}

TEST_F(AviSink, EndBeforeTheRunIsReportedWithTheRun) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Pause(), S_OK);
    EXPECT_EQ(Deliver(1), S_OK);
    EXPECT_EQ(source_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    ASSERT_EQ(graph_->Pause(), S_OK);
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 1);
    EXPECT_EQ(Finish().frames.size(), 1u);
}

TEST_F(AviSink, RateComesFromTypeThenFromTimesThenByDefault) {
    struct Row {
        REFERENCE_TIME inType;
        std::optional<REFERENCE_TIME> step;
        uint32_t rate;
        uint32_t scale;
    };
    const Row rows[] = {
        {333667, 400000, 30000, 1001}, {0, 200000, 50, 1}, {-7, 800000, 25, 2}, {0, {}, 25, 1}};
    for (const Row& row : rows) {
        if (graph_) {
            TearDown();
            SetUp();
        }
        VideoSpec spec = Yuy2();
        spec.timePerFrame = row.inType;
        Connect(spec);
        ASSERT_EQ(graph_->Run(), S_OK);
        for (BYTE n = 0; n < 3; ++n) {
            const auto start = row.step ? std::optional(*row.step * n) : std::nullopt;
            EXPECT_EQ(Deliver(n, start), S_OK);
        }
        const Movie movie = Finish();
        EXPECT_EQ(movie.avi.rate, row.rate);
        EXPECT_EQ(movie.avi.scale, row.scale);
        EXPECT_EQ(result_.stamps.Unknown(), row.step ? 0u : 3u);
    }
}

// 20 frames per second, every second one missing.
constexpr REFERENCE_TIME kGappyTimes[] = {0, 500000, 1500000, 2000000, 3000000, 3500000};

TEST_F(AviSink, IrregularTimesAreKept) {
    VideoSpec spec = Yuy2();
    spec.timePerFrame = 500000;
    Connect(spec);
    ASSERT_EQ(graph_->Run(), S_OK);
    for (const REFERENCE_TIME start : kGappyTimes) EXPECT_EQ(Deliver(1, 70000000 + start), S_OK);
    const Movie movie = Finish();
    EXPECT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.rate, 20u);
    EXPECT_EQ(movie.avi.repeats, (std::vector<uint32_t>{0, 1, 0, 1, 0, 0}));
    EXPECT_EQ(result_.frames, 6u);
    EXPECT_EQ(result_.repeats, 2u);
    EXPECT_EQ(result_.rate, (FrameRate{20, 1}));
}

TEST_F(AviSink, FrameForFrameKeepsTheRateOfTheType) {
    VideoSpec spec = Yuy2();
    spec.timePerFrame = 500000;
    Connect(spec, {}, {.timing = CAviSink::Timing::FrameForFrame, .displayAspect = {}});
    ASSERT_EQ(graph_->Run(), S_OK);
    for (const REFERENCE_TIME start : kGappyTimes) EXPECT_EQ(Deliver(1, start), S_OK);
    const Movie movie = Finish();
    EXPECT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.rate, 20u);
    EXPECT_EQ(movie.avi.repeats, std::vector<uint32_t>(6));
    EXPECT_EQ(result_.repeats, 0u);
}

TEST_F(AviSink, TheLastFrameIsShownAsLongAsItLasts) {
    VideoSpec spec = Yuy2();
    spec.timePerFrame = 500000;
    Connect(spec);
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(Deliver(1, 0), S_OK);
    EXPECT_EQ(source_->pin().Deliver({.start = 500000, .stop = 2500000}), S_OK);
    EXPECT_EQ(Finish().avi.repeats, (std::vector<uint32_t>{0, 3}));
}

TEST_F(AviSink, BufferShorterThanTheFrameEndsTheRun) {
    Connect(Yuy2(), {.choice = tavo_test::AllocatorChoice::kOwnOnly,
                     .allocator = {.claimedSize = static_cast<long>(kFrameBytes) - 1}});
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), E_FAIL);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(graph_->Events().back().first, VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(Finish().frames.size(), 0u);
}

TEST_F(AviSink, LengthOfContentsDoesNotCount) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(
        source_->pin().Deliver({.bytes = std::vector<BYTE>(kFrameBytes, 9), .actualLength = 3}),
        S_OK);
    const Movie movie = Finish();
    ASSERT_EQ(movie.frames.size(), 1u);
    EXPECT_EQ(movie.frames[0], tavo_test::Frame(kFrameBytes, std::byte{9}));
}

TEST_F(AviSink, SameFormatOnASampleIsNoChange) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    VideoSpec other = Yuy2();
    other.timePerFrame = 1;
    other.formattype = FORMAT_VideoInfo2;
    EXPECT_EQ(source_->pin().Deliver({.type = MakeVideoType(other)}), S_OK);
    EXPECT_EQ(Finish().frames.size(), 1u);
    EXPECT_FALSE(result_.typeChanged);
}

TEST_F(AviSink, AnotherFormatOnASampleEndsTheRun) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(Deliver(1), S_OK);
    VideoSpec other = Yuy2();
    other.width = kSide / 2;
    EXPECT_EQ(source_->pin().Deliver({.type = MakeVideoType(other)}), E_FAIL);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(Deliver(2), E_FAIL);
    EXPECT_EQ(graph_->CountEvents(EC_ERRORABORT), 1);
    EXPECT_EQ(Finish().frames.size(), 1u);
    EXPECT_TRUE(result_.typeChanged);
}

TEST_F(AviSink, NothingIsWrittenAfterTheFileIsFinished) {
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(Deliver(1), S_OK);
    EXPECT_EQ(sink_->FinishFile().frames, 1u);
    EXPECT_EQ(Deliver(2), E_FAIL);
    EXPECT_EQ(sink_->FinishFile().frames, 1u);
    EXPECT_EQ(sink_->Count(), 1u);
    EXPECT_EQ(Finish().frames.size(), 1u);
}

TEST_F(AviSink, TellsWhatShowsAPictureFromRepeatsOfAnother) {
    struct Case {
        REFERENCE_TIME start, stop;
        bool shown;
    };
    Connect(Yuy2());
    ASSERT_EQ(graph_->Run(), S_OK);
    for (const auto& [start, stop, shown] :
         {Case{100, 140, true}, Case{60, 100, true}, Case{99, 139, true}, Case{0, 40, true},
          Case{100, 139, false}, Case{59, 99, false}, Case{101, 141, false}}) {
        sink_->Expect(100, 140);
        EXPECT_FALSE(sink_->IsShown());
        EXPECT_EQ(source_->pin().Deliver({.start = start, .stop = stop}), S_OK);
        EXPECT_EQ(sink_->IsShown(), shown) << start << " to " << stop;
    }
    EXPECT_EQ(source_->pin().Deliver(tavo_test::SampleSpec{}), S_OK);
    EXPECT_TRUE(sink_->IsShown()) << "without times nobody can tell";
}

TEST_F(AviSink, FileThatCannotBeCreated) {
    Connect(Yuy2());
    EXPECT_EQ(sink_->OpenFile(Path(L"none\\out.avi"), {}), IoResult::NotFound);
}

}  // namespace
}  // namespace tavo
