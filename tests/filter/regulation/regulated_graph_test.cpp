// The regulator in the platform's filter graph: the same frames as the model's, placed by the clock
// of the graph, and a stop that does not wait.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/filter/regulation/scenario.h"
#include "tests/support/graph.h"
#include "tests/support/patience.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

// The rig's filters in a graph, with a clock that the test moves; every frame is noted.
class RegulatedGraph {
  public:
    explicit RegulatedGraph(double rate)
        : rig_({.keepBytes = false, .onReceive = [this](IMediaSample* sample) {
                    frames_.push_back(ReadFrame(sample));
                    return S_OK;
                }}) {
        rig_.settings->SetFrameRate(rate);
        EXPECT_EQ(graph.Add(rig_.source.Get(), L"source"), S_OK);
        EXPECT_EQ(graph.Add(rig_.filter.Get(), L"vantrel"), S_OK);
        EXPECT_EQ(graph.Add(rig_.sink.Get(), L"sink"), S_OK);
        rig_.source->pin().offered = {ScenarioType()};
        EXPECT_EQ(graph.Connect(&rig_.source->pin(), rig_.input.Get()), S_OK);
        EXPECT_EQ(graph.Connect(rig_.output.Get(), &rig_.sink->pin()), S_OK);
    }
    ~RegulatedGraph() {
        EXPECT_EQ(graph.Stop(), S_OK);
        EXPECT_EQ(SetClock(nullptr), S_OK);
        EXPECT_EQ(clock.references, 1);
    }

    HRESULT SetClock(IReferenceClock* used) {
        return ComPtr<IGraphBuilder>(graph.builder()).As<IMediaFilter>()->SetSyncSource(used);
    }
    FilterRig& rig() { return rig_; }

    // On a thread of its own, as a source would.
    std::vector<Outcome> Play(const std::vector<Step>& steps) {
        std::vector<Outcome> outcomes;
        std::thread([&] {
            ComApartment com;
            for (const Step& step : steps) {
                clock.now = step.sample.clock;
                frames_.clear();
                const HRESULT result = rig_.Deliver(SpecOf(step.sample));
                outcomes.push_back({.result = result, .frames = frames_});
            }
            EXPECT_EQ(rig_.source->pin().SendEndOfStream(), S_OK);
        }).join();
        return outcomes;
    }

    HandClock clock;
    Graph graph;

  private:
    FilterRig rig_;
    std::vector<OutputFrame> frames_;
};

class RegulatedGraphTest : public FilterTest {
  protected:
    RegulatedGraphTest() { checksTaskMemory_ = false; }

    static void ExpectSame(const std::vector<Outcome>& found, const std::vector<Outcome>& wanted) {
        ASSERT_EQ(found.size(), wanted.size());
        for (size_t i = 0; i < wanted.size(); ++i) ASSERT_EQ(found[i], wanted[i]) << i;
    }
};

TEST_F(RegulatedGraphTest, TheSameFramesAsTheModels) {
    for (const double rate : {23.976, 25.0, 29.97, 50.0, 60.0}) {
        SCOPED_TRACE(rate);
        const Scenario scenario = {.rate = rate, .steps = RegularSteps(30000, 1001, 60)};
        RegulatedGraph graph(rate);
        ASSERT_EQ(graph.graph.Run(), S_OK);
        ExpectSame(graph.Play(scenario.steps), RunModel(scenario));
        EXPECT_EQ(graph.rig().sink->pin().calls().Count("EndOfStream"), 1);
    }
}

TEST_F(RegulatedGraphTest, RoundsOfRunAndStop) {
    const Scenario scenario = {.rate = 40, .steps = RegularSteps(25, 1, 20)};
    RegulatedGraph graph(scenario.rate);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(graph.graph.Run(), S_OK);
        ExpectSame(graph.Play(scenario.steps), RunModel(scenario));
        ASSERT_EQ(graph.graph.Stop(), S_OK);
    }
}

TEST_F(RegulatedGraphTest, SamplesWithoutTimesGoByTheGraphsClock) {
    Scenario scenario = {.rate = 25, .clock = 7000 * kMs};
    for (int i = 0; i < 20; ++i) {
        scenario.steps.push_back(
            {.sample = {.picture = i + 1, .clock = (7020 + i * 33 + i % 3) * kMs}});
    }
    RegulatedGraph graph(scenario.rate);
    graph.clock.now = *scenario.clock;
    ASSERT_EQ(graph.SetClock(&graph.clock), S_OK);
    ASSERT_EQ(graph.graph.Pause(), S_OK);
    ExpectSame(graph.Play(scenario.steps), RunModel(scenario));
}

TEST_F(RegulatedGraphTest, AGraphsStopEndsACatchUp) {
    RegulatedGraph graph(25.0);
    std::atomic<int> frames = 0;
    graph.rig().sink->pin().config.onReceive = [&frames](IMediaSample*) {
        if (++frames > 1000) Sleep(1);
        return S_FALSE;
    };
    ASSERT_EQ(graph.graph.Run(), S_OK);
    // Merely to walk over the slots up to there would take days.
    constexpr int64_t kFarAhead = 200'000'000 * kHour;
    std::thread source([&] {
        ComApartment com;
        graph.rig().Deliver(SpecOf(Timed(1, kFarAhead, kFarAhead + kMs)));
    });
    EXPECT_TRUE(WaitUntil([&] { return frames >= 100; }));
    EXPECT_EQ(graph.graph.Stop(), S_OK);
    const int sent = frames;
    source.join();
    EXPECT_EQ(frames, sent) << "the stop has waited for the last one";
}

// By the platform's own clock the slots keep up with the time that passes.
TEST_F(RegulatedGraphTest, TheDefaultClockOfThePlatform) {
    RegulatedGraph graph(50.0);
    const auto clock = CreateObject<IReferenceClock>(CLSID_SystemClock);
    ASSERT_EQ(graph.SetClock(clock.Get()), S_OK);
    REFERENCE_TIME began = 0;
    REFERENCE_TIME started = 0;
    REFERENCE_TIME sent = 0;
    REFERENCE_TIME now = 0;
    clock->GetTime(&began);
    ASSERT_EQ(graph.graph.Run(), S_OK);
    clock->GetTime(&started);
    // No more than it takes: on a slow machine more slots would fall due than can be sent.
    for (int i = 0; i < 2 || graph.rig().samples().size() < 12; ++i) {
        Sleep(25);
        clock->GetTime(&sent);
        EXPECT_TRUE(SUCCEEDED(graph.rig().Deliver(SpecOf({.picture = i + 1}))));
    }
    clock->GetTime(&now);
    const auto samples = graph.rig().samples();
    for (size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].start, static_cast<REFERENCE_TIME>(i) * 20 * kMs);
    }
    EXPECT_GE(samples.back().stop, sent - started - 20 * kMs);
    EXPECT_LE(samples.back().stop, now - began);
}

}  // namespace
