// Many lives of the filter in the platform's graph: nothing may pile up.
#include <windows.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/known_frames.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/graph.h"
#include "tests/support/process_usage.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

class StressTest : public FilterTest {
  protected:
    StressTest() { checksTaskMemory_ = false; }

    // Runs the last of the rounds so that caches settle, then all of them, and compares: at the end
    // everything is as large as it was at the beginning.
    // `platform` is what the platform's own objects lose in each round.
    template <typename Round>
    void ExpectNothingPilesUp(int rounds, Round round, const ProcessUsage& platform = {}) {
        for (int i = rounds - rounds / 5; i < rounds && !HasFatalFailure(); ++i) round(i);
        const ProcessUsage before = ProcessUsage::Now();
        for (int i = 0; i < rounds && !HasFatalFailure(); ++i) round(i);
        const ProcessUsage more = ProcessUsage::Now() - before;
        std::cout << "  " << rounds << " rounds, more than before: " << more << "\n";
        EXPECT_EQ(more, platform);
    }
};

// What the tests' own filters remember of a round must not count as the filter's.
void Forget(FilterRig& rig) {
    rig.sink->pin().ClearSamples();
    rig.sink->calls().Clear();
    rig.sink->pin().calls().Clear();
    rig.source->calls().Clear();
    rig.source->pin().calls().Clear();
    rig.sink->pin().ownAllocator()->calls().Clear();
    rig.sink->pin().ownAllocator()->ForgetRequests();
}

void LiveAndDie(int number) {
    const PixelFormat& format = Format(number % 3 ? "YV12" : "RGB24");
    const bool sameSize = number % 3 == 0;
    FilterRig rig(
        {.allocator = number % 2 ? SinkAllocator::kOwn : SinkAllocator::kNone, .keepBytes = false});
    Graph graph;
    ASSERT_EQ(graph.Add(rig.source.Get(), L"source"), S_OK);
    ASSERT_EQ(graph.Add(rig.filter.Get(), L"vantrel"), S_OK);
    ASSERT_EQ(graph.Add(rig.sink.Get(), L"sink"), S_OK);
    if (!sameSize) rig.settings->SetOutputSize(40 + number % 20, 36);
    if (number % 5 == 0) rig.settings->SetFrameRate(50.0);
    rig.source->pin().offered = {TypeOf(format, 64, 48)};
    ASSERT_EQ(graph.Connect(&rig.source->pin(), rig.input.Get()), S_OK);
    ASSERT_EQ(graph.Connect(rig.output.Get(), &rig.sink->pin()), S_OK);
    if (number % 7 == 0) {
        EXPECT_EQ(rig.settings->ApplySettings(), 1);
    }
    const std::vector<BYTE> frame(static_cast<size_t>(RuleFrameBytes(format, 64, 48)));
    ASSERT_EQ(graph.Pause(), S_OK);
    ASSERT_EQ(graph.Run(), S_OK);
    for (int i = 0; i < 2; ++i) {
        SampleSpec spec = {.bytes = frame};
        if (number % 4) {
            spec.start = i * 400000;
            spec.stop = (i + 1) * 400000;
        }
        EXPECT_TRUE(SUCCEEDED(rig.Deliver(spec)));
    }
    ASSERT_EQ(graph.Pause(), S_OK);
    ASSERT_EQ(graph.Stop(), S_OK);
    ASSERT_EQ(graph.Disconnect(rig.output.Get()), S_OK);
    ASSERT_EQ(graph.Disconnect(&rig.sink->pin()), S_OK);
    ASSERT_EQ(graph.Disconnect(&rig.source->pin()), S_OK);
    ASSERT_EQ(graph.Disconnect(rig.input.Get()), S_OK);
    EXPECT_FALSE(rig.sink->pin().connected());
    EXPECT_FALSE(rig.source->pin().connected());
}

// Wine 8 loses some with each graph, whatever is in it.
ProcessUsage LostByGraphs(int count) {
    { const Graph first; }
    const ProcessUsage before = ProcessUsage::Now();
    for (int i = 0; i < count; ++i) const Graph graph;
    return ProcessUsage::Now() - before;
}

TEST_F(StressTest, LivesInTheGraph) {
    const int rounds = Rounds(200);
    ExpectNothingPilesUp(rounds, LiveAndDie, LostByGraphs(rounds));
}

TEST_F(StressTest, ReconnectionsOfOneFilter) {
    FilterRig rig({.keepBytes = false});
    const std::vector<BYTE> frame(64 * 48 * 3 / 2);
    ExpectNothingPilesUp(Rounds(200), [&](int number) {
        rig.settings->SetOutputSize(40 + number % 200, 36 + number % 70);
        const PixelFormat& format = Format("YV12");
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        const HRESULT delivered = rig.Deliver(frame);
        const auto [width, height] = rig.OutputSize();
        EXPECT_TRUE(delivered == S_OK || width == 64 || height == 48);
        ASSERT_EQ(rig.Stop(), S_OK);
        rig.DisconnectOutput();
        rig.DisconnectInput();
        Forget(rig);
    });
}

TEST_F(StressTest, RefusedConnections) {
    FilterRig rig({.accept = [](const AM_MEDIA_TYPE&) { return false; }});
    ExpectNothingPilesUp(Rounds(200), [&](int number) {
        const PixelFormat& format = AllFormats()[static_cast<size_t>(number) % AllFormats().size()];
        ASSERT_EQ(rig.ConnectInput(TypeOf(format, 64, 48)), S_OK);
        ASSERT_EQ(rig.ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
        rig.DisconnectInput();
        ASSERT_TRUE(FAILED(rig.ConnectInput(MakeVideoType({.subtype = MEDIASUBTYPE_RGB32}))));
        Forget(rig);
    });
}

TEST_F(StressTest, TypesOnSamples) {
    FilterRig rig({.allocator = SinkAllocator::kOwn,
                   .ownAllocator = {.size = 100 * 100 * 2},
                   .keepBytes = false});
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ExpectNothingPilesUp(Rounds(200), [&](int number) {
        const int width = 50 + number % 40;
        rig.sink->pin().ownAllocator()->AttachTypeOnce(
            *TypeOf(Format("YV12"), 20 + number % 20, 18 + number % 20));
        const SampleSpec spec = {.type = TypeOf(Format("YV12"), width, 60),
                                 .freestanding = SampleConfig{.size = width * 60 * 3 / 2}};
        EXPECT_EQ(rig.Deliver(spec), S_OK);
        Forget(rig);
    });
}

// A streaming thread, a page that changes and applies everything, and a transport that starts and
// stops the graph, all at once. Only a reconnection and a start exclude each other: the graph
// itself would lose the connection between the two.
TEST_F(StressTest, StartAndStopUnderAPageThatNeverRests) {
    const KnownFrames known(Format("YV12"));
    std::atomic<int> torn = 0;
    FilterRig rig(
        {.keepBytes = false, .onReceive = [&](IMediaSample* sample) {
             BYTE* data = nullptr;
             sample->GetPointer(&data);
             const long size = sample->GetActualDataLength();
             const int to = known.OutputOfBytes(size);
             torn += to < 0 || known.ShownSource(static_cast<size_t>(to), {data, data + size}) != 0;
             return S_OK;
         }});
    rig.settings->SetOutputSize(KnownFrames::kTo[0].width, KnownFrames::kTo[0].height);
    Graph graph;
    ASSERT_EQ(graph.Add(rig.source.Get(), L"source"), S_OK);
    ASSERT_EQ(graph.Add(rig.filter.Get(), L"vantrel"), S_OK);
    ASSERT_EQ(graph.Add(rig.sink.Get(), L"sink"), S_OK);
    rig.source->pin().offered = {known.SourceType(0)};
    ASSERT_EQ(graph.Connect(&rig.source->pin(), rig.input.Get()), S_OK);
    ASSERT_EQ(graph.Connect(rig.output.Get(), &rig.sink->pin()), S_OK);
    std::mutex graphCalls;
    std::atomic<bool> done = false;
    std::atomic<int> applied = 0;
    std::thread page([&] {
        ComApartment com;
        for (int i = 0; !done; ++i) {
            const Size size = KnownFrames::kTo[i % 3];
            rig.settings->SetOutputSize(size.width, size.height);
            rig.settings->SetScaleMethod(i / 3 % 13);
            rig.settings->SetFrameRate(i % 2 ? 30.0 : 0.0);
            double value = 0;
            rig.settings->GetSystemFps(&value);
            rig.settings->GetGenerateFps(&value);
            rig.settings->GetModuleTime(&value);
            const std::lock_guard lock(graphCalls);
            applied += rig.settings->ApplySettings() == 1;
            Sleep(1);
        }
    });
    std::atomic<int> frames = 0;
    // As often as it takes for all three to have met, whichever has to wait for a processor.
    for (int round = 0; round < Rounds(100) || frames <= 100 || applied <= 10; ++round) {
        {
            const std::lock_guard lock(graphCalls);
            ASSERT_TRUE(SUCCEEDED(graph.Run()));
        }
        std::thread streamer([&] {
            for (int i = 0; i < 20; ++i) {
                const SampleSpec spec = {
                    .start = i * 400000, .stop = (i + 1) * 400000, .bytes = known.Source(0)};
                if (rig.Deliver(spec) == S_OK) ++frames;
            }
        });
        Sleep(static_cast<DWORD>(round % 4));
        ASSERT_TRUE(SUCCEEDED(graph.Stop()));
        streamer.join();
        rig.sink->pin().ClearSamples();
        Sleep(2);
    }
    done = true;
    page.join();
    EXPECT_EQ(torn, 0) << "frames that are no picture of any size that was asked for";
    std::printf("  %d frames, %d times applied\n", frames.load(), applied.load());
}

}  // namespace
