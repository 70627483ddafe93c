// Playing one stream twice: pictures are numbers for the model and bytes for the filter.
#include "tests/filter/regulation/scenario.h"

#include <cstring>

#include "tests/filter/support/pictures.h"

namespace tavo_test {

namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 4;

const PixelFormat& ScenarioFormat() {
    static const PixelFormat format = Format("YV12");
    return format;
}

// The number itself, then bytes that follow from it.
std::vector<BYTE> NumberedPicture(int number) {
    std::vector<BYTE> bytes(static_cast<size_t>(RuleFrameBytes(ScenarioFormat(), kWidth, kHeight)));
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<BYTE>(number * 37 + static_cast<int>(i) * 11);
    }
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

int NumberOf(IMediaSample* sample) {
    BYTE* data = nullptr;
    int number = 0;
    if (FAILED(sample->GetPointer(&data)) || sample->GetActualDataLength() < 8) return -1;
    std::memcpy(&number, data, sizeof(number));
    const std::vector<BYTE> whole = NumberedPicture(number);
    const bool same = static_cast<size_t>(sample->GetActualDataLength()) == whole.size() &&
                      std::memcmp(data, whole.data(), whole.size()) == 0;
    return same ? number : -1;
}

template <typename Settings>
int32_t React(const std::vector<Reaction>& reactions, size_t frame, Settings&& setRate) {
    for (const Reaction& reaction : reactions) {
        if (static_cast<size_t>(reaction.frame) != frame) continue;
        if (reaction.rate) setRate(*reaction.rate);
        return reaction.answer;
    }
    return kOk;
}

}  // namespace

MediaType ScenarioType() { return TypeOf(ScenarioFormat(), kWidth, kHeight); }

InputSample Timed(int picture, int64_t start, int64_t stop) {
    return {
        .picture = picture, .start = start, .stop = stop, .mediaTime = {{picture, picture + 1}}};
}

std::vector<Step> RegularSteps(int64_t rate, int64_t scale, int count) {
    const auto startOf = [&](int64_t n) { return n * 10'000'000 * scale / rate; };
    std::vector<Step> steps;
    for (int i = 0; i < count; ++i) {
        steps.push_back({.sample = Timed(i + 1, startOf(i), startOf(i + 1))});
    }
    return steps;
}

std::vector<Outcome> RunModel(const Scenario& scenario) {
    RegulatorModel model;
    model.SetRate(scenario.rate);
    model.Start(scenario.clock.value_or(0));
    std::vector<Outcome> outcomes;
    for (const Step& step : scenario.steps) {
        if (step.rate) model.SetRate(*step.rate);
        if (step.flush) model.Flush(step.sample.clock);
        Outcome outcome;
        outcome.result = model.Receive(step.sample, [&](const OutputFrame& frame) {
            outcome.frames.push_back(frame);
            return React(step.reactions, outcome.frames.size() - 1,
                         [&](double rate) { model.SetRate(rate); });
        });
        outcomes.push_back(std::move(outcome));
    }
    return outcomes;
}

OutputFrame ReadFrame(IMediaSample* sample) {
    OutputFrame frame;
    frame.picture = NumberOf(sample);
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (sample->GetTime(&start, &stop) == S_OK) frame.time = {start, stop};
    frame.syncPoint = sample->IsSyncPoint() == S_OK;
    frame.preroll = sample->IsPreroll() == S_OK;
    frame.discontinuity = sample->IsDiscontinuity() == S_OK;
    if (sample->GetMediaTime(&start, &stop) == S_OK) frame.mediaTime = {start, stop};
    return frame;
}

SampleSpec SpecOf(const InputSample& sample) {
    SampleSpec spec;
    spec.start = sample.start;
    spec.stop = sample.stop;
    if (sample.mediaTime) {
        spec.mediaStart = sample.mediaTime->first;
        spec.mediaEnd = sample.mediaTime->second;
    }
    spec.syncPoint = sample.syncPoint;
    spec.preroll = sample.preroll;
    spec.discontinuity = sample.discontinuity == kOk;
    spec.bytes = NumberedPicture(sample.picture);
    return spec;
}

ScenarioRig::ScenarioRig(const Scenario& scenario)
    : rig({.keepBytes = false,
           .onReceive = [this](IMediaSample* sample) { return Take(sample); }}) {
    rig.settings->SetFrameRate(scenario.rate);
    EXPECT_EQ(rig.Connect(ScenarioType()), S_OK);
    if (scenario.clock) {
        clock_.now = *scenario.clock;
        EXPECT_EQ(rig.filter->SetSyncSource(&clock_), S_OK);
    }
    EXPECT_EQ(rig.Start(), S_OK);
}

ScenarioRig::~ScenarioRig() {
    EXPECT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(clock_.references, 1);
}

HRESULT ScenarioRig::Take(IMediaSample* sample) {
    outcome_.frames.push_back(ReadFrame(sample));
    if (!step_) return S_OK;
    return React(step_->reactions, outcome_.frames.size() - 1,
                 [this](double rate) { rig.settings->SetFrameRate(rate); });
}

Outcome ScenarioRig::Play(const Step& step) {
    step_ = &step;
    outcome_ = {};
    clock_.now = step.sample.clock;
    if (step.rate) rig.settings->SetFrameRate(*step.rate);
    if (step.flush) {
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
    }
    outcome_.result = rig.Deliver(SpecOf(step.sample));
    step_ = nullptr;
    return std::move(outcome_);
}

std::vector<Outcome> RunFilter(const Scenario& scenario) {
    ScenarioRig rig(scenario);
    std::vector<Outcome> outcomes;
    for (const Step& step : scenario.steps) outcomes.push_back(rig.Play(step));
    return outcomes;
}

void ExpectSameAsModel(const Scenario& scenario) {
    const std::vector<Outcome> wanted = RunModel(scenario);
    const std::vector<Outcome> found = RunFilter(scenario);
    ASSERT_EQ(found.size(), wanted.size());
    for (size_t i = 0; i < wanted.size(); ++i) {
        ASSERT_EQ(found[i], wanted[i]) << "sample " << i;
    }
}

}  // namespace tavo_test
