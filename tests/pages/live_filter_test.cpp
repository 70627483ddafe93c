// The pages on a real filter: in a graph, with frames flowing, both at once. Needs a display.
#include <thread>

#include "pages/resource_ids.h"
#include "tests/filter/support/pictures.h"
#include "tests/pages/support/message_boxes.h"
#include "tests/pages/support/page_frame.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

constexpr REFERENCE_TIME kFrame = 400000;
constexpr LONG kRefusedWidth = 48;

// 64 x 48 pixels of YV12 from the source to a sink that takes every width but one.
class LiveGraph {
  public:
    LiveGraph() {
        rig_ = std::make_unique<FilterRig>(SinkConfig{.accept = [](const AM_MEDIA_TYPE& type) {
            const BITMAPINFOHEADER* bitmap = MediaType(type).Bitmap();
            return bitmap && bitmap->biWidth != kRefusedWidth;
        }});
        graph_.Add(rig_->source.Get(), L"source");
        graph_.Add(rig_->filter.Get(), L"vantrel");
        graph_.Add(rig_->sink.Get(), L"sink");
        const MediaType type = TypeOf(Format("YV12"), 64, 48);
        rig_->source->pin().offered = {type};
        EXPECT_EQ(graph_.Connect(&rig_->source->pin(), rig_->input.Get()), S_OK);
        EXPECT_EQ(graph_.Connect(rig_->output.Get(), &rig_->sink->pin()), S_OK);
    }
    ~LiveGraph() { Stop(); }

    // Frames at twice the speed of 25 a second, until Stop.
    void Run() {
        ASSERT_EQ(graph_.Run(), S_OK);
        stop_ = false;
        thread_ = std::thread([this] {
            ComApartment com;
            const std::vector<BYTE> frame = RandomFrame(Format("YV12"), 64, 48);
            for (int i = 0; !stop_; ++i, Sleep(20)) {
                const SampleSpec spec = {
                    .start = i * kFrame, .stop = (i + 1) * kFrame, .bytes = frame};
                // A frame that the regulator drops gives S_FALSE.
                if (FAILED(rig_->source->pin().Deliver(spec))) break;
                ++frames;
            }
        });
    }
    void Stop() {
        if (!thread_.joinable()) return;
        stop_ = true;
        thread_.join();
        graph_.Stop();
    }

    IBaseFilter* filter() { return rig_->filter.Get(); }
    IVantrelSettings& settings() { return *rig_->settings; }
    LONG OutputWidth() { return rig_->ConnectionTypeOf(rig_->output.Get()).Bitmap()->biWidth; }
    void ReleaseFilter() {
        graph_.Remove(rig_->filter.Get());
        rig_.reset();
    }

    std::atomic<int> frames = 0;

  private:
    std::unique_ptr<FilterRig> rig_;
    Graph graph_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

class LivePages : public PagesTest {
  protected:
    static void OpenOn(PageFrame& frame, IBaseFilter* filter) {
        ASSERT_EQ(frame.Connect(filter), S_OK);
        ASSERT_EQ(frame.Open(), S_OK);
    }
};

TEST_F(LivePages, TheFilterNamesBothPages) {
    const ComPtr<IBaseFilter> filter = CreateFilter();
    const auto specify = filter.As<ISpecifyPropertyPages>();
    CAUUID pages = {};
    ASSERT_EQ(specify->GetPages(&pages), S_OK);
    ASSERT_EQ(pages.cElems, 2u);
    for (ULONG i = 0; i < pages.cElems; ++i) {
        const auto page = TheModule().Create<IPropertyPage>(pages.pElems[i]);
        ASSERT_TRUE(page);
        IUnknown* object = filter.Get();
        EXPECT_EQ(page->SetObjects(1, &object), S_OK);
    }
    CoTaskMemFree(pages.pElems);
}

TEST_F(LivePages, ApplyingReconnectsAStoppedGraph) {
    LiveGraph graph;
    MessageBoxes boxes;
    PageFrame frame(CLSID_ResamplePropertyPage);
    OpenOn(frame, graph.filter());
    EXPECT_EQ(frame.Text(IDC_WIDTH), "64");
    EXPECT_EQ(frame.Text(IDC_HEIGHT), "48");
    Type(frame.Control(IDC_WIDTH), "32");
    EXPECT_EQ(frame.Apply(), S_OK);
    EXPECT_EQ(graph.OutputWidth(), 32);
    EXPECT_TRUE(boxes.seen().empty());
    EXPECT_FALSE(frame.IsDirty());
}

TEST_F(LivePages, ARefusalOfTheGraphShowsTheBox) {
    LiveGraph graph;
    MessageBoxes boxes;
    PageFrame frame(CLSID_ResamplePropertyPage);
    OpenOn(frame, graph.filter());
    Type(frame.Control(IDC_WIDTH), std::to_string(kRefusedWidth).c_str());
    EXPECT_EQ(frame.Apply(), S_OK);
    ASSERT_EQ(boxes.seen().size(), 1u);
    EXPECT_EQ(boxes.seen()[0].text, L"Graph Refresh Fail.");
    EXPECT_FALSE(frame.IsDirty());
    // The connection is as it was, the setting as the user wanted it.
    EXPECT_EQ(graph.OutputWidth(), 64);
    int width = 0;
    int height = 0;
    graph.settings().GetOutputSize(&width, &height);
    EXPECT_EQ(width, kRefusedWidth);
}

TEST_F(LivePages, BothPagesEditOneFilter) {
    LiveGraph graph;
    MessageBoxes boxes;
    PageFrame resample(CLSID_ResamplePropertyPage);
    PageFrame regulator(CLSID_TimeRegulatorPropertyPage, 430);
    OpenOn(resample, graph.filter());
    OpenOn(regulator, graph.filter());
    Type(resample.Control(IDC_HEIGHT), "24");
    PressKey(resample.Control(IDC_METHOD), VK_DOWN);
    Click(regulator.Control(IDC_ENABLE));
    Type(regulator.Control(IDC_FRAME_RATE), "12.5");
    EXPECT_EQ(resample.Apply(), S_OK);
    EXPECT_EQ(regulator.Apply(), S_OK);
    EXPECT_TRUE(boxes.seen().empty());
    int width = 0;
    int height = 0;
    int method = 0;
    double rate = 0;
    graph.settings().GetOutputSize(&width, &height);
    graph.settings().GetScaleMethod(&method);
    graph.settings().GetFrameRate(&rate);
    EXPECT_EQ(width, 64);
    EXPECT_EQ(height, 24);
    EXPECT_EQ(method, VantrelMethodNearestAuto);
    EXPECT_EQ(rate, 12.5);

    graph.Run();
    const auto figure = [](const PageFrame& frame, int id) { return std::stod(frame.Text(id)); };
    EXPECT_TRUE(PumpUntil([&] { return graph.frames > 20; }));
    EXPECT_TRUE(PumpUntil([&] { return figure(resample, IDC_SYSTEM_FPS) > 0.0; }));
    EXPECT_TRUE(PumpUntil([&] { return figure(regulator, IDC_GENERATE_FPS) > 0.0; }));

    // Switched off while frames flow: a running graph may refuse to reconnect, the rate counts.
    Click(regulator.Control(IDC_ENABLE));
    EXPECT_EQ(regulator.Apply(), S_OK);
    graph.settings().GetFrameRate(&rate);
    EXPECT_EQ(rate, 0.0);
    EXPECT_TRUE(PumpUntil([&] { return regulator.Text(IDC_GENERATE_FPS) == "0"; }));
}

TEST_F(LivePages, PagesComeAndGoWhileFramesFlow) {
    LiveGraph graph;
    graph.Run();
    for (int i = 0; i < 20; ++i) {
        PageFrame resample(CLSID_ResamplePropertyPage);
        PageFrame regulator(CLSID_TimeRegulatorPropertyPage, 430);
        OpenOn(resample, graph.filter());
        OpenOn(regulator, graph.filter());
        resample.Send(WM_TIMER, 3);
        regulator.Send(WM_TIMER, 4);
        PressKey(resample.Control(IDC_METHOD), VK_DOWN);
        if (i % 2) resample.page.Reset();  // with its dialog open
        PumpFor(10);
    }
    const int before = graph.frames;
    EXPECT_TRUE(PumpUntil([&] { return graph.frames > before; })) << "the stream goes on";
    graph.Stop();
}

TEST_F(LivePages, TheFilterLeavesTheGraphBeforeItsPages) {
    LiveGraph graph;
    PageFrame resample(CLSID_ResamplePropertyPage);
    PageFrame regulator(CLSID_TimeRegulatorPropertyPage, 430);
    OpenOn(resample, graph.filter());
    OpenOn(regulator, graph.filter());
    graph.Run();
    PumpFor(200);
    graph.Stop();
    graph.ReleaseFilter();
    MessageBoxes boxes;
    resample.Send(WM_TIMER, 3);
    regulator.Send(WM_TIMER, 4);
    Type(resample.Control(IDC_WIDTH), "40");
    EXPECT_EQ(resample.Apply(), S_OK);
    EXPECT_TRUE(boxes.seen().empty());
}

}  // namespace
