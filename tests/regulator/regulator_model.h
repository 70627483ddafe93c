// What the time regulator has to do, written a second time and as plainly as possible: no COM, no
// threads, pictures are numbers. The tests hold the filter against it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

namespace tavo_test {

constexpr int32_t kOk = 0;
constexpr int32_t kFalse = 1;

// Times in units of 100 ns.
struct InputSample {
    int picture = 0;
    std::optional<int64_t> start = {};
    std::optional<int64_t> stop = {};
    bool syncPoint = false;
    bool preroll = false;
    // What the sample answers when it is asked for its discontinuity.
    int32_t discontinuity = kFalse;
    std::optional<std::pair<int64_t, int64_t>> mediaTime = {};
    // What the clock says while the sample is there.
    int64_t clock = 0;
};

struct OutputFrame {
    int picture = 0;
    std::optional<std::pair<int64_t, int64_t>> time = {};
    bool syncPoint = false;
    bool preroll = false;
    bool discontinuity = false;
    std::optional<std::pair<int64_t, int64_t>> mediaTime = {};
    bool operator==(const OutputFrame&) const = default;
};

// What one sample led to: its result, and every frame that was sent on, refused or not.
struct Outcome {
    int32_t result = kOk;
    std::vector<OutputFrame> frames = {};
    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const OutputFrame& frame);
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

// The duration of a frame at a rate, or 0 where the rate means off.
int64_t ModelFrameDuration(double fps);

class RegulatorModel {
  public:
    // Gets every frame; its answer is the result of sending it on.
    using Downstream = std::function<int32_t(const OutputFrame&)>;

    void SetRate(double fps);
    void Start(int64_t clock);
    void Flush(int64_t clock);
    int32_t Receive(const InputSample& sample, const Downstream& downstream);

  private:
    OutputFrame PlainFrame(const InputSample& sample) const;
    OutputFrame SlotFrame(const InputSample& sample, int64_t slotStart) const;
    std::pair<int64_t, int64_t> WindowOf(const InputSample& sample);

    int64_t duration_ = 0;
    int64_t nextSlotEnd_ = 0;
    int64_t framesSent_ = 0;
    std::optional<int64_t> baseTime_;
    std::optional<int> keptPicture_;
};

}  // namespace tavo_test
