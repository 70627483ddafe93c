// A stream with everything that happens to it, played through the model and through the filter.
//
//   Scenario scenario{.rate = 50};
//   scenario.steps.push_back({.sample = Timed(1, 0, 400000)});
//   ExpectSameAsModel(scenario);
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/regulator/regulator_model.h"
#include "tests/support/hand_clock.h"

namespace tavo_test {

// What happens while the n-th frame of a sample is downstream.
struct Reaction {
    int frame = 0;
    std::optional<double> rate = {};
    int32_t answer = kOk;
};

struct Step {
    std::optional<double> rate = {};  // set before the sample
    bool flush = false;               // likewise
    InputSample sample = {};
    std::vector<Reaction> reactions = {};
};

struct Scenario {
    double rate = 0.0;
    // The clock's time when the stream starts, where the graph has one.
    std::optional<int64_t> clock = {};
    std::vector<Step> steps = {};
};

// A sample that has times and knows its media time.
InputSample Timed(int picture, int64_t start, int64_t stop);
// A stream at one rate, `count` samples from zero on without gaps; starts are rounded down.
std::vector<Step> RegularSteps(int64_t rate, int64_t scale, int count);

std::vector<Outcome> RunModel(const Scenario& scenario);

// The filter with a source that sends numbered pictures and a sink that notes all that comes.
class ScenarioRig {
  public:
    // Connected, and started once the rate is set and the clock stands.
    explicit ScenarioRig(const Scenario& scenario);
    ~ScenarioRig();

    Outcome Play(const Step& step);

    FilterRig rig;

  private:
    HRESULT Take(IMediaSample* sample);

    HandClock clock_;
    const Step* step_ = nullptr;
    Outcome outcome_;
};

// As the sink sees it; a picture that is no numbered one gets the number -1.
OutputFrame ReadFrame(IMediaSample* sample);
SampleSpec SpecOf(const InputSample& sample);
MediaType ScenarioType();

std::vector<Outcome> RunFilter(const Scenario& scenario);

void ExpectSameAsModel(const Scenario& scenario);

}  // namespace tavo_test
