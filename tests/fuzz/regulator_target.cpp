// A row of steps, each a byte that says what happens and the values that it needs: a sample, a new
// rate, a flush, a start. The regulator must send the frames of its model.

#include "tests/fuzz/fuzz_input.h"
#include "tests/regulator/regulated_stream.h"

namespace tavo_test {
namespace {

// The model adds times without a test. No stream lasts 7,300 years.
constexpr int64_t kMostTime = INT64_MAX / 4;
// A sample may have slots without end: the rate is switched off after these.
constexpr size_t kMostFrames = 64;

enum SampleBits {
    kHasStart = 1,
    kHasStop = 2,
    kHasMediaTime = 4,
    kIsDiscontinuity = 8,
    kChangesRate = 16
};

class Streams {
  public:
    explicit Streams(FuzzBytes bytes) : input_(bytes) {}

    void Run() {
        for (int picture = 1; !input_.IsEmpty(); ++picture) {
            switch (input_.Below(8)) {
                case 0: SetRate(TakeRate()); break;
                case 1: ForBoth([&](auto& stream) { stream.Flush(clock_); }); break;
                case 2: ForBoth([&](auto& stream) { stream.Start(clock_); }); break;
                default: Receive(picture); break;
            }
        }
        Require(stream_.HasKnownBranchesOnly());
    }

  private:
    template <typename Do>
    void ForBoth(Do doIt) {
        doIt(stream_);
        doIt(model_);
    }
    void SetRate(double fps) {
        Require(tavo::FrameDuration(fps) == ModelFrameDuration(fps));
        ForBoth([&](auto& stream) { stream.SetRate(fps); });
    }
    // Any double, or a usual rate in hundredths.
    double TakeRate() {
        return input_.Below(2) ? input_.Take<double>() : input_.Take<uint16_t>() / 100.0;
    }
    // Any time, or one near the last.
    int64_t TakeTime(int64_t last) {
        if (input_.Below(8) == 0) return input_.Take<int64_t>() % kMostTime;
        return (last + input_.Take<int16_t>() * 100) % kMostTime;
    }

    InputSample TakeSample(int picture, uint8_t bits) {
        InputSample sample;
        sample.picture = picture;
        clock_ = TakeTime(clock_);
        sample.clock = clock_;
        sample.discontinuity = bits & kIsDiscontinuity ? kOk : kFalse;
        if (bits & kHasStart) sample.start = TakeTime(position_);
        if (bits & kHasStop) sample.stop = position_ = TakeTime(sample.start.value_or(position_));
        if (bits & kHasMediaTime) sample.mediaTime = {picture, picture + 1};
        return sample;
    }

    void Receive(int picture) {
        const auto bits = input_.Take<uint8_t>();
        const InputSample sample = TakeSample(picture, bits);
        const size_t changeAt =
            bits & kChangesRate ? static_cast<size_t>(input_.Below(8)) : kMostFrames;
        const double newRate = bits & kChangesRate ? TakeRate() : 0.0;
        const auto play = [&](auto& player, std::vector<OutputFrame>& frames) {
            return player.Receive(sample, [&](const OutputFrame& frame) {
                if (frames.size() == changeAt) player.SetRate(newRate);
                if (frames.size() == kMostFrames) player.SetRate(0.0);
                frames.push_back(frame);
                return static_cast<int32_t>(frames.size());
            });
        };
        std::vector<OutputFrame> got;
        std::vector<OutputFrame> expected;
        const int32_t result = play(stream_, got);
        Require(result == play(model_, expected));
        Require(got == expected);
    }

    FuzzInput input_;
    RegulatedStream stream_;
    RegulatorModel model_;
    int64_t clock_ = 0;
    int64_t position_ = 0;
};

}  // namespace

void FuzzRegulator(FuzzBytes bytes) { Streams(bytes).Run(); }

}  // namespace tavo_test
