// Tries rates: what the source names, what the times suggest, then the common ones.

#include "host/avi/frame_timing.h"

#include <algorithm>
#include <cmath>

namespace tavo {
namespace {

// clang-format off
constexpr FrameRate kCommonRates[] = {
    {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {15, 2}, {8, 1}, {10, 1}, {12, 1}, {25, 2},
    {15, 1}, {18, 1}, {20, 1}, {24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {48, 1},
    {50, 1}, {60000, 1001}, {60, 1}, {72, 1}, {75, 1}, {90, 1}, {100, 1}, {120000, 1001}, {120, 1},
    {144, 1}, {kMaxSlotRate, 1},
};
// clang-format on
// For times that fit none of these.
constexpr FrameRate kFineRates[] = {{60, 1}, {120, 1}, {kMaxSlotRate, 1}};

// 2 ms: sources count in milliseconds, and some round twice.
constexpr double kExactJitterUnits = 20000.0;
// Jitter in parts of a slot: the earliest to the latest frame, relative to their slots. A regular
// stream may drift, as live capture does. Where frames are missing too, the times are all there is.
constexpr double kMaxSteadyJitter = 0.75;
constexpr double kMaxJitter = 0.5;
constexpr double kMaxOddRateJitter = 0.25;
// The shortest interval is tried as one slot up to this many.
constexpr int kMaxSlotsPerStep = 4;

double SlotsPerUnit(FrameRate rate) {
    return static_cast<double>(rate.rate) / rate.scale / static_cast<double>(kUnitsPerSecond);
}

// How far frames are from their slots, in slots. The first frame is at 0.
struct Range {
    double lowest = 0.0;
    double highest = 0.0;

    void Add(double value) {
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    double Width() const { return highest - lowest; }
    double Middle() const { return (highest + lowest) / 2; }
};

class Fitter {
  public:
    Fitter(std::span<const int64_t> starts, std::optional<FrameRate> nominal)
        : starts_(starts), nominal_(nominal) {}

    FrameRate Choose() const {
        if (starts_.size() < 2) return nominal_.value_or(FrameRate{});
        if (const auto rate = Steady()) return *rate;
        const std::vector<FrameRate> rates = Candidates();
        for (const FrameRate rate : rates) {
            if (Fits(rate, std::min(kExactJitterUnits * SlotsPerUnit(rate), kMaxJitter))) {
                return rate;
            }
        }
        for (const FrameRate rate : rates) {
            if (Fits(rate, kMaxJitter)) return rate;
        }
        for (const FrameRate rate : kFineRates) {
            if (Fits(rate, 1.0)) return rate;
        }
        const FrameRate mean = MeanRate();
        return mean.Fps() > kMaxSlotRate ? mean : FrameRate{kMaxSlotRate, 1};
    }

    // The slot of each frame: the nearest free one.
    std::vector<int64_t> Slots(FrameRate rate) const {
        const double phase = Deviation(rate).Middle();
        std::vector<int64_t> slots;
        slots.reserve(starts_.size());
        for (size_t i = 0; i < starts_.size(); ++i) {
            const int64_t nearest = std::llround(Position(i, rate) - phase);
            slots.push_back(slots.empty() ? 0 : std::max(nearest, slots.back() + 1));
        }
        return slots;
    }

    // The jitter of frames without repeats. Measured up to one slot.
    double SteadyJitter(FrameRate rate) const {
        Range range;
        for (size_t i = 0; i < starts_.size() && range.Width() < 1.0; ++i) {
            range.Add(Position(i, rate) - static_cast<double>(i));
        }
        return range.Width();
    }

  private:
    double Position(size_t i, FrameRate rate) const {
        return static_cast<double>(starts_[i] - starts_[0]) * SlotsPerUnit(rate);
    }

    double Span() const { return static_cast<double>(starts_.back() - starts_.front()); }

    // From the nearest slots, counted from the first frame.
    Range Deviation(FrameRate rate) const {
        Range range;
        for (size_t i = 0; i < starts_.size(); ++i) {
            const double position = Position(i, rate);
            range.Add(position - std::round(position));
        }
        return range;
    }

    FrameRate MeanRate() const {
        const double mean = Span() / static_cast<double>(starts_.size() - 1);
        return RateFromDuration(std::max<int64_t>(std::llround(mean), 1));
    }

    // A rate at which each frame has one slot.
    std::optional<FrameRate> Steady() const {
        if (nominal_ && SteadyJitter(*nominal_) <= kMaxSteadyJitter) return nominal_;
        const FrameRate* best = nullptr;
        double least = kMaxJitter;
        for (const FrameRate& rate : kCommonRates) {
            const double jitter = SteadyJitter(rate);
            if (jitter > least) continue;
            least = jitter;
            best = &rate;
        }
        if (best != nullptr) return *best;
        const FrameRate mean = MeanRate();
        const double exact = std::min(kExactJitterUnits * SlotsPerUnit(mean), kMaxSteadyJitter);
        if (SteadyJitter(mean) <= std::max(kMaxOddRateJitter, exact)) return mean;
        return std::nullopt;
    }

    // Whether each frame has a slot of its own, within `jitter`.
    bool Fits(FrameRate rate, double jitter) const {
        const Range range = Deviation(rate);
        if (range.Width() > jitter) return false;
        int64_t last = -1;
        for (size_t i = 0; i < starts_.size(); ++i) {
            const int64_t slot = std::llround(Position(i, rate) - range.Middle());
            if (i > 0 && slot <= last) return false;
            last = slot;
        }
        return true;
    }

    std::vector<FrameRate> Candidates() const {
        std::vector<FrameRate> rates;
        if (nominal_ && nominal_->Fps() <= kMaxSlotRate) rates.push_back(*nominal_);
        rates.insert(rates.end(), std::begin(kCommonRates), std::end(kCommonRates));
        int64_t step = MonotonicTimes::kMaxGap;
        for (size_t i = 1; i < starts_.size(); ++i) {
            step = std::min(step, starts_[i] - starts_[i - 1]);
        }
        for (int parts = 1; parts <= kMaxSlotsPerStep; ++parts) {
            const double slot = static_cast<double>(step) / parts;
            if (slot * kMaxSlotRate < kUnitsPerSecond) break;
            rates.push_back(RateOfSteps(slot));
        }
        return rates;
    }

    // The rate of slots of about that length, averaged over the whole stream.
    FrameRate RateOfSteps(double slot) const {
        double slots = 0.0;
        for (size_t i = 1; i < starts_.size(); ++i) {
            slots += std::round(static_cast<double>(starts_[i] - starts_[i - 1]) / slot);
        }
        return RateFromDuration(std::max<int64_t>(std::llround(Span() / slots), 1));
    }

    const std::span<const int64_t> starts_;
    const std::optional<FrameRate> nominal_;
};

}  // namespace

uint32_t MaxRepeats(int64_t gap) {
    return static_cast<uint32_t>(gap * kMaxSlotRate / kUnitsPerSecond) + 1;
}

FrameTiming FitTiming(std::span<const int64_t> starts, int64_t end,
                      std::optional<FrameRate> nominal) {
    const Fitter fitter(starts, nominal);
    FrameTiming timing;
    timing.rate = fitter.Choose();
    timing.repeats.resize(starts.size());
    if (starts.empty()) return timing;
    const auto limit = [](int64_t slots, int64_t gap) {
        return static_cast<uint32_t>(std::clamp<int64_t>(slots - 1, 0, MaxRepeats(gap)));
    };
    if (fitter.SteadyJitter(timing.rate) > kMaxSteadyJitter) {
        const std::vector<int64_t> slots = fitter.Slots(timing.rate);
        for (size_t i = 0; i + 1 < slots.size(); ++i) {
            timing.repeats[i] = limit(slots[i + 1] - slots[i], starts[i + 1] - starts[i]);
        }
    }
    const int64_t left = end - starts.back();
    const double slots = static_cast<double>(left) * SlotsPerUnit(timing.rate);
    timing.repeats.back() = limit(std::llround(slots), left);
    for (const uint32_t repeats : timing.repeats) timing.totalRepeats += repeats;
    return timing;
}

int64_t MonotonicTimes::Next(std::optional<int64_t> start, int64_t typicalInterval) {
    const bool isFirst = !any_;
    any_ = true;
    if (start) start = std::clamp(*start, -kMaxTime, kMaxTime);
    const int64_t gap = start ? *start - source_ : typicalInterval;
    source_ = start.value_or(source_ + typicalInterval);
    if (isFirst) return last_;
    return last_ += gap > 0 && gap <= kMaxGap ? gap : typicalInterval;
}

}  // namespace tavo
