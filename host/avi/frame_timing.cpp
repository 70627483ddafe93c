// Chooses the rate by trying: what the source says, what its times say, then the usual rates.

#include "host/avi/frame_timing.h"

#include <algorithm>
#include <cmath>

namespace tavo {
namespace {

// clang-format off
constexpr FrameRate kUsualRates[] = {
    {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {15, 2}, {8, 1}, {10, 1}, {12, 1}, {25, 2},
    {15, 1}, {18, 1}, {20, 1}, {24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {48, 1},
    {50, 1}, {60000, 1001}, {60, 1}, {72, 1}, {75, 1}, {90, 1}, {100, 1}, {120000, 1001}, {120, 1},
    {144, 1}, {kHighestSlotRate, 1},
};
// clang-format on
// For times that fit no rate.
constexpr FrameRate kFineRates[] = {{60, 1}, {120, 1}, {kHighestSlotRate, 1}};

// Sources count in milliseconds at best; they round, and some round twice.
constexpr double kExactUnits = 20000.0;
// Parts of a slot between the earliest frame and the latest, measured from the slots. A steady
// stream, captured live, may wander; where frames are missing as well, times are all there is.
constexpr double kSteadySpread = 0.75;
constexpr double kWanderingSpread = 0.5;
constexpr double kOddRateSpread = 0.25;
// How many slots the shortest distance is tried as.
constexpr int kMostSlotsPerStep = 4;

double SlotsPerUnit(FrameRate rate) {
    return static_cast<double>(rate.rate) / rate.scale / static_cast<double>(kUnitsPerSecond);
}

// Of how far frames are from their slots; the first one is at 0.
struct Range {
    double least = 0.0;
    double most = 0.0;

    void Add(double value) {
        least = std::min(least, value);
        most = std::max(most, value);
    }
    double Width() const { return most - least; }
    double Middle() const { return (most + least) / 2; }
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
            if (Fits(rate, std::min(kExactUnits * SlotsPerUnit(rate), kWanderingSpread))) {
                return rate;
            }
        }
        for (const FrameRate rate : rates) {
            if (Fits(rate, kWanderingSpread)) return rate;
        }
        for (const FrameRate rate : kFineRates) {
            if (Fits(rate, 1.0)) return rate;
        }
        const FrameRate mean = MeanRate();
        return mean.Fps() > kHighestSlotRate ? mean : FrameRate{kHighestSlotRate, 1};
    }

    // The slot of each frame: the nearest one that is still free.
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

    // When frames follow each other without repeats; not measured beyond a whole slot.
    double SteadySpread(FrameRate rate) const {
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

    // From the nearest slots, which are counted from the first frame.
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

    // A rate at which each frame has its slot, one after the other.
    std::optional<FrameRate> Steady() const {
        if (nominal_ && SteadySpread(*nominal_) <= kSteadySpread) return nominal_;
        const FrameRate* best = nullptr;
        double least = kWanderingSpread;
        for (const FrameRate& rate : kUsualRates) {
            const double spread = SteadySpread(rate);
            if (spread > least) continue;
            least = spread;
            best = &rate;
        }
        if (best != nullptr) return *best;
        const FrameRate mean = MeanRate();
        const double exact = std::min(kExactUnits * SlotsPerUnit(mean), kSteadySpread);
        if (SteadySpread(mean) <= std::max(kOddRateSpread, exact)) return mean;
        return std::nullopt;
    }

    // Every frame has a slot, no two the same, and all are within `spread` of theirs.
    bool Fits(FrameRate rate, double spread) const {
        const Range range = Deviation(rate);
        if (range.Width() > spread) return false;
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
        if (nominal_ && nominal_->Fps() <= kHighestSlotRate) rates.push_back(*nominal_);
        rates.insert(rates.end(), std::begin(kUsualRates), std::end(kUsualRates));
        int64_t step = RisingTimes::kLongestGap;
        for (size_t i = 1; i < starts_.size(); ++i) {
            step = std::min(step, starts_[i] - starts_[i - 1]);
        }
        for (int parts = 1; parts <= kMostSlotsPerStep; ++parts) {
            const double slot = static_cast<double>(step) / parts;
            if (slot * kHighestSlotRate < kUnitsPerSecond) break;
            rates.push_back(RateOfSteps(slot));
        }
        return rates;
    }

    // A slot of about that length, measured again over the whole stream.
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

uint32_t MostRepeats(int64_t gap) {
    return static_cast<uint32_t>(gap * kHighestSlotRate / kUnitsPerSecond) + 1;
}

FrameTiming FitTiming(std::span<const int64_t> starts, int64_t end,
                      std::optional<FrameRate> nominal) {
    const Fitter fitter(starts, nominal);
    FrameTiming timing;
    timing.rate = fitter.Choose();
    timing.repeats.resize(starts.size());
    if (starts.empty()) return timing;
    const auto limit = [](int64_t slots, int64_t gap) {
        return static_cast<uint32_t>(std::clamp<int64_t>(slots - 1, 0, MostRepeats(gap)));
    };
    if (fitter.SteadySpread(timing.rate) > kSteadySpread) {
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

int64_t RisingTimes::Next(std::optional<int64_t> start, int64_t usual) {
    // Beyond this a time is garbage; within it, differences cannot overflow.
    constexpr int64_t kLargestTime = INT64_MAX / 4;
    const bool isFirst = !any_;
    any_ = true;
    if (start) start = std::clamp(*start, -kLargestTime, kLargestTime);
    const int64_t gap = start ? *start - source_ : usual;
    source_ = start.value_or(source_ + usual);
    if (isFirst) return last_;
    return last_ += gap > 0 && gap <= kLongestGap ? gap : usual;
}

}  // namespace tavo
