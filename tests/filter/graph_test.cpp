// The filter in the platform's filter graph: connecting, streaming, reconnecting through
// ApplySettings, and what a graph expects of a filter around that.
#include <windows.h>

#include <evcode.h>

#include <thread>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/support/graph.h"
#include "tests/support/patience.h"

using namespace tavo_test;

namespace {

constexpr CLSID kSampleGrabber = {
    0xC1F400A0, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};
constexpr CLSID kNullRenderer = {
    0xC1F400A4, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};

class GraphTest : public FilterTest {
  protected:
    GraphTest() { checksTaskMemory_ = false; }

    const PixelFormat& format_ = Format("YV12");
    const std::vector<BYTE> frame_ = RandomFrame(format_, 64, 48);
};

// The rig's three filters inside a graph.
class GraphRig : public FilterRig {
  public:
    explicit GraphRig(const SinkConfig& sinkConfig = {}, const SourceConfig& sourceConfig = {})
        : FilterRig(sinkConfig, sourceConfig) {
        EXPECT_EQ(graph.Add(source.Get(), L"source"), S_OK);
        EXPECT_EQ(graph.Add(filter.Get(), L"vantrel"), S_OK);
        EXPECT_EQ(graph.Add(sink.Get(), L"sink"), S_OK);
    }
    ~GraphRig() { graph.Stop(); }

    HRESULT ConnectInGraph(const MediaType& type) {
        source->pin().offered = {type};
        const HRESULT connected = graph.Connect(&source->pin(), input.Get());
        return FAILED(connected) ? connected : graph.Connect(output.Get(), &sink->pin());
    }
    LONG OutputWidth() const { return ConnectionTypeOf(output.Get()).Bitmap()->biWidth; }

    Graph graph;
};

// Sends the same frame over and over until told to end or refused.
class StreamingThread {
  public:
    StreamingThread(TestSource& source, std::vector<BYTE> frame)
        : thread_([this, &source, frame = std::move(frame)] {
              ComApartment com;
              for (int i = 0; !done_; ++i) {
                  const REFERENCE_TIME start = i * REFERENCE_TIME{400000};
                  const SampleSpec spec = {.start = start, .stop = start + 400000, .bytes = frame};
                  if (source.pin().Deliver(spec) != S_OK) break;
                  ++frames;
                  Sleep(1);
              }
          }) {}
    ~StreamingThread() {
        done_ = true;
        thread_.join();
    }

    std::atomic<int> frames = 0;

  private:
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

// Its input is the application's to connect, and then to apply once more.
TEST_F(GraphTest, ApplyingWithoutASourceLeavesTheSinkConnected) {
    GraphRig rig;
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.graph.Disconnect(&rig.source->pin()), S_OK);
    ASSERT_EQ(rig.graph.Disconnect(rig.input.Get()), S_OK);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_TRUE(rig.sink->pin().connected());
    EXPECT_EQ(rig.OutputWidth(), 64);
}

TEST_F(GraphTest, StreamsFromSourceToSink) {
    GraphRig rig;
    rig.settings->SetOutputSize(40, 36);
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.graph.Run(), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_EQ(rig.source->pin().SendEndOfStream(), S_OK);
    ASSERT_EQ(rig.graph.Stop(), S_OK);
    ASSERT_EQ(rig.samples().size(), 1u);
    EXPECT_TRUE(
        Matches(NearestPlanar(format_, frame_, {64, 48}, {40, 36}), rig.samples()[0].bytes));
    EXPECT_EQ(rig.sink->pin().calls().Count("EndOfStream"), 1);
}

TEST_F(GraphTest, APlatformChainOfGrabberAndRendererEndsWithComplete) {
    GraphRig rig;
    const auto grabber = CreateObject<IBaseFilter>(kSampleGrabber);
    const auto renderer = CreateObject<IBaseFilter>(kNullRenderer);
    ASSERT_TRUE(grabber && renderer);
    ASSERT_EQ(rig.graph.Remove(rig.sink.Get()), S_OK);
    ASSERT_EQ(rig.graph.Add(grabber.Get(), L"grabber"), S_OK);
    ASSERT_EQ(rig.graph.Add(renderer.Get(), L"renderer"), S_OK);
    rig.source->pin().offered = {TypeOf(Format("RGB24"), 64, 48)};
    ASSERT_EQ(rig.graph.Connect(&rig.source->pin(), rig.input.Get()), S_OK);
    ASSERT_EQ(rig.graph.Connect(rig.output.Get(), GetPin(grabber.Get(), PINDIR_INPUT).Get()), S_OK);
    ASSERT_EQ(rig.graph.Connect(GetPin(grabber.Get(), PINDIR_OUTPUT).Get(),
                                GetPin(renderer.Get(), PINDIR_INPUT).Get()),
              S_OK);
    for (int round = 0; round < 2; ++round) {
        // The renderer lets the graph pause only once it has a frame.
        std::thread streamer([&] {
            const SampleSpec spec = {
                .start = 0, .stop = 1, .bytes = RandomFrame(Format("RGB24"), 64, 48)};
            int delivered = 0;
            EXPECT_TRUE(WaitUntil([&] {
                delivered += rig.Deliver(spec) == S_OK;
                return delivered == 5;
            }));
            EXPECT_EQ(rig.source->pin().SendEndOfStream(), S_OK);
        });
        EXPECT_TRUE(SUCCEEDED(rig.graph.Run()));
        EXPECT_TRUE(rig.graph.WaitForEvent(EC_COMPLETE)) << "round " << round;
        streamer.join();
        double running = 0;
        rig.settings->GetSystemFps(&running);
        EXPECT_GT(running, 0.0);
        ASSERT_EQ(rig.graph.Stop(), S_OK);
    }
    double fps = -1;
    rig.settings->GetSystemFps(&fps);
    EXPECT_EQ(fps, 0.0);
}

TEST_F(GraphTest, ApplyReconnectsAStoppedGraph) {
    GraphRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    for (const Size& size : {Size{40, 36}, Size{80, 60}, Size{32, 24}}) {
        rig.settings->SetOutputSize(size.width, size.height);
        EXPECT_EQ(rig.settings->ApplySettings(), 1);
        const MediaType type = rig.ConnectionTypeOf(rig.output.Get());
        ASSERT_TRUE(type.Bitmap());
        EXPECT_EQ(type.Bitmap()->biWidth, size.width);
        EXPECT_EQ(type.Bitmap()->biHeight, size.height);
        EXPECT_EQ(rig.sink->pin().connectionType(), type);
        EXPECT_EQ(rig.sink->pin().peer(), rig.output.Get());
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.graph.Run(), S_OK);
        EXPECT_EQ(rig.Deliver(frame_), S_OK);
        ASSERT_EQ(rig.graph.Stop(), S_OK);
        EXPECT_TRUE(
            Matches(NearestPlanar(format_, frame_, {64, 48}, size), rig.samples().at(0).bytes));
    }
}

TEST_F(GraphTest, ApplyAsksThePeerBeforeItTouchesTheConnection) {
    GraphRig rig;
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    rig.sink->pin().config.queryAccept = S_FALSE;
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_EQ(rig.sink->pin().calls().Count("Disconnect"), 0);
    EXPECT_EQ(rig.OutputWidth(), 64);
    ASSERT_EQ(rig.graph.Run(), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
}

TEST_F(GraphTest, ApplyRestoresTheConnectionWhenThePeerRefusesAfterAll) {
    GraphRig rig;
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    const MediaType before = rig.ConnectionTypeOf(rig.output.Get());
    rig.sink->pin().config.queryAccept = S_OK;
    rig.sink->pin().config.accept = [&](const AM_MEDIA_TYPE& type) {
        return MediaType(type) == before;
    };
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_GE(rig.sink->pin().calls().Count("ReceiveConnection"), 2);
    ASSERT_TRUE(rig.sink->pin().connected());
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), before);
    ASSERT_EQ(rig.graph.Run(), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_TRUE(Matches(CopiedFrame(format_, frame_, {64, 48}), rig.samples().at(0).bytes));
}

TEST_F(GraphTest, ApplyBearsAPeerThatTakesNothingAnyMore) {
    GraphRig rig;
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    rig.sink->pin().config.queryAccept = S_OK;
    rig.sink->pin().calls().Inject("ReceiveConnection", E_FAIL);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_FALSE(rig.sink->pin().connected());
    rig.sink->pin().calls().ClearInjections();
    EXPECT_EQ(rig.graph.Connect(rig.output.Get(), &rig.sink->pin()), S_OK);
}

TEST_F(GraphTest, ApplyWhileRunningLeavesTheGraphAsItWasWhenTheSinkRefuses) {
    GraphRig rig({.keepBytes = false});
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    const MediaType before = rig.ConnectionTypeOf(rig.output.Get());
    ASSERT_EQ(rig.graph.Run(), S_OK);
    {
        StreamingThread stream(*rig.source.Get(), frame_);
        ASSERT_TRUE(rig.sink->pin().WaitForSamples(3));
        rig.sink->pin().config.queryAccept = S_FALSE;
        for (int i = 0; i < 20; ++i) {
            rig.settings->SetOutputSize(32 + i, 24);
            EXPECT_EQ(rig.settings->ApplySettings(), 0);
        }
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), before);
        const size_t received = rig.samples().size();
        EXPECT_TRUE(rig.sink->pin().WaitForSamples(received + 3)) << "frames go on";
        EXPECT_EQ(rig.graph.Stop(), S_OK);
    }
    rig.sink->pin().config.queryAccept = S_OK;
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 1);
    EXPECT_EQ(rig.OutputWidth(), 32);
}

TEST_F(GraphTest, PauseRunAndStopInEveryOrder) {
    GraphRig rig({.keepBytes = false});
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(rig.graph.Pause(), S_OK);
        StreamingThread stream(*rig.source.Get(), frame_);
        ASSERT_EQ(rig.graph.Run(), S_OK);
        ASSERT_EQ(rig.graph.Pause(), S_OK);
        ASSERT_EQ(rig.graph.Run(), S_OK);
        if (round % 2) {
            ASSERT_EQ(rig.graph.Pause(), S_OK);
        }
        ASSERT_TRUE(rig.sink->pin().WaitForSamples(1));
        ASSERT_EQ(rig.graph.Stop(), S_OK);
        ASSERT_EQ(rig.graph.Stop(), S_OK);
        rig.sink->pin().ClearSamples();
    }
}

TEST_F(GraphTest, AGraphOfTheFilterAloneAndHalfConnectedOnesCanRun) {
    GraphRig rig;
    ASSERT_EQ(rig.graph.Run(), S_OK);
    ASSERT_EQ(rig.graph.Stop(), S_OK);
    rig.source->pin().offered = {TypeOf(format_, 64, 48)};
    ASSERT_EQ(rig.graph.Connect(&rig.source->pin(), rig.input.Get()), S_OK);
    ASSERT_EQ(rig.graph.Run(), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), VFW_E_NOT_CONNECTED);
    ASSERT_EQ(rig.graph.Stop(), S_OK);
    ASSERT_EQ(rig.graph.Connect(rig.output.Get(), &rig.sink->pin()), S_OK);
    ASSERT_EQ(rig.graph.Disconnect(&rig.source->pin()), S_OK);
    ASSERT_EQ(rig.graph.Disconnect(rig.input.Get()), S_OK);
    ASSERT_EQ(rig.graph.Run(), S_OK);
    EXPECT_EQ(rig.sink->pin().calls().Count("EndOfStream"), 1) << "nothing will ever come";
    ASSERT_EQ(rig.graph.Stop(), S_OK);
}

TEST_F(GraphTest, TakingTheFilterOutOfTheGraphGivesItsReferencesBack) {
    FilterRig rig;
    const ULONG before = RefCount(rig.filter.Get());
    {
        Graph graph;
        ASSERT_EQ(graph.Add(rig.filter.Get(), L"vantrel"), S_OK);
        FILTER_INFO info = {};
        ASSERT_EQ(rig.filter->QueryFilterInfo(&info), S_OK);
        EXPECT_STREQ(info.achName, L"vantrel");
        EXPECT_NE(info.pGraph, nullptr);
        if (info.pGraph) info.pGraph->Release();
        ASSERT_EQ(graph.Remove(rig.filter.Get()), S_OK);
        ASSERT_EQ(rig.filter->QueryFilterInfo(&info), S_OK);
        EXPECT_EQ(info.pGraph, nullptr);
        EXPECT_EQ(RefCount(rig.filter.Get()), before);
    }
    EXPECT_EQ(RefCount(rig.filter.Get()), before);
}

TEST_F(GraphTest, RemovingAConnectedFilterPartsItsPins) {
    GraphRig rig;
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.graph.Remove(rig.filter.Get()), S_OK);
    EXPECT_FALSE(rig.source->pin().connected());
    EXPECT_FALSE(rig.sink->pin().connected());
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 1) << "the next output type is settled";
}

TEST_F(GraphTest, SeekingIsPassedUpstreamFromTheOutputPin) {
    GraphRig rig({}, {.seeking = true});
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    const auto seeking = rig.output.As<IMediaSeeking>(IID_IMediaSeeking);
    ASSERT_TRUE(seeking);
    LONGLONG duration = 0;
    EXPECT_EQ(seeking->GetDuration(&duration), S_OK);
    EXPECT_GT(duration, 0);
    EXPECT_EQ(seeking.As<IPin>(IID_IPin).Get(), rig.output.Get());
}

TEST_F(GraphTest, ClocksOfTheGraphComeAndGo) {
    GraphRig rig({.keepBytes = false});
    rig.settings->SetFrameRate(100.0);
    ASSERT_EQ(rig.ConnectInGraph(TypeOf(format_, 64, 48)), S_OK);
    const auto clock = CreateObject<IReferenceClock>(CLSID_SystemClock);
    ASSERT_TRUE(clock);
    const auto mediaFilter = ComPtr<IGraphBuilder>(rig.graph.builder()).As<IMediaFilter>();
    for (int round = 0; round < 4; ++round) {
        IReferenceClock* const used = round % 2 ? nullptr : clock.Get();
        ASSERT_EQ(mediaFilter->SetSyncSource(used), S_OK);
        ASSERT_EQ(rig.graph.Run(), S_OK);
        Sleep(50);
        EXPECT_EQ(rig.Deliver(frame_), S_OK) << "placed by the clock: there are no times";
        EXPECT_GE(rig.samples().size(), 3u);
        ASSERT_EQ(rig.graph.Stop(), S_OK);
        rig.sink->pin().ClearSamples();
    }
    ASSERT_EQ(mediaFilter->SetSyncSource(nullptr), S_OK);
}

}  // namespace
