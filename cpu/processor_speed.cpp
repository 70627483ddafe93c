// Two ways to measure the clock, in double and in integer arithmetic.

#include "cpu/processor_speed.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "cpu/double_precision.h"

namespace tavo {
namespace {

constexpr int kMinRounds = 3;
constexpr int kMaxRounds = 20;
constexpr uint32_t kLeadTicks = 50;
constexpr uint32_t kRoundTicks = 1000;
constexpr int kScans = 4000;
constexpr int kScanTrials = 10;
constexpr int kMaxScanClocks = 150;

// More than a round takes on the slowest usable counter. Ends the wait for one that stands still.
constexpr int kMaxReads = 1'000'000;

// Cycles of a bit scan by processor family; 1 for later families.
constexpr int kScanCycles[] = {0, 0, 0, 115, 47, 43, 38, 38, 38, 38, 38, 38};

// Raises the priority of the calling thread, if the present one is known and can be put back.
class PriorityScope {
  public:
    PriorityScope(Machine& machine, int priority) : machine_(machine), priority_(priority) {
        if (IsKnown()) machine_.ChangeThreadPriority(Machine::kPriorityTimeCritical);
    }
    ~PriorityScope() {
        if (IsKnown()) machine_.ChangeThreadPriority(priority_);
    }
    PriorityScope(const PriorityScope&) = delete;
    PriorityScope& operator=(const PriorityScope&) = delete;

  private:
    bool IsKnown() const { return priority_ != Machine::kPriorityUnknown; }

    Machine& machine_;
    const int priority_;
};

// Waits until the low half of the counter has advanced; false if it does not. Returns the last
// counter and time stamp read.
bool AwaitTicks(Machine& machine, uint32_t ticks, uint64_t& counter, uint32_t& timeStamp) {
    const uint64_t from = counter;
    for (int reads = 0; reads < kMaxReads; ++reads) {
        counter = machine.Counter();
        timeStamp = machine.TimeStamp();
        if (static_cast<uint32_t>(counter - from) >= ticks) return true;
    }
    return false;
}

struct Round {
    uint32_t cycles;
    int64_t ticks;  // negative when the counter went back
};

bool MeasureRound(Machine& machine, int priority, Round& round) {
    const PriorityScope scope(machine, priority);
    uint64_t counter = machine.Counter();
    uint32_t first = 0, last = 0;
    if (!AwaitTicks(machine, kLeadTicks, counter, first)) return false;
    const uint64_t start = counter;
    if (!AwaitTicks(machine, kRoundTicks, counter, last)) return false;
    round = {last - first, static_cast<int64_t>(counter - start)};
    return true;
}

struct Totals {
    uint64_t cycles = 0;
    double microseconds = 0;
    uint32_t newest = 0, second = 0, third = 0;  // MHz of the last three rounds

    // Each is within one MHz of the mean.
    bool AreSettled() const {
        const int64_t sum = int64_t{newest} + second + third;
        for (const int64_t mhz : {newest, second, third}) {
            if (mhz * 3 - sum > 3 || sum - mhz * 3 > 3) return false;
        }
        return true;
    }
};

// Truncates. Values out of range become the nearest one, NaN becomes 0.
uint32_t ToUnsigned(double value) {
    constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();
    if (!(value > 0)) return 0;
    return value < kMax ? static_cast<uint32_t>(value) : kMax;
}

[[gnu::noinline]] void AddInDoubles(Totals& totals, const Round& round, double tenthOfFrequency) {
    const double microseconds = static_cast<double>(round.ticks) * 100000.0 / tenthOfFrequency;
    totals.cycles += round.cycles;
    totals.microseconds += microseconds;
    totals.newest = microseconds > 0 ? ToUnsigned(round.cycles / microseconds) : 0;
}

void Add(Totals& totals, const Round& round, uint64_t tenthOfFrequency) {
    const DoublePrecisionScope scope;
    AddInDoubles(totals, round, static_cast<double>(tenthOfFrequency));
}

// Deliberate: rounds up from .56 on, not from .5: hundredths are rounded into tenths and tenths
// into the whole, both from 6 on.
uint32_t Normalise(double mhz) {
    constexpr int64_t kRoundsUp = 6;
    const auto whole = static_cast<int64_t>(mhz);
    auto tenths = static_cast<int64_t>(10 * mhz);
    if (static_cast<int64_t>(100 * mhz) - 10 * tenths >= kRoundsUp) ++tenths;
    return static_cast<uint32_t>(tenths - 10 * whole >= kRoundsUp ? whole + 1 : whole);
}

[[gnu::noinline]] SpeedMeasurement ConcludeInDoubles(const Totals& totals) {
    if (!(totals.microseconds > 0)) return {};
    const double mhz = static_cast<double>(totals.cycles) / totals.microseconds;
    constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();
    if (!(mhz < kMax)) return {};
    return {static_cast<uint32_t>(std::min<uint64_t>(totals.cycles, kMax)),
            ToUnsigned(totals.microseconds + 0.5), ToUnsigned(mhz), Normalise(mhz)};
}

SpeedMeasurement Conclude(const Totals& totals) {
    const DoublePrecisionScope scope;
    return ConcludeInDoubles(totals);
}

SpeedMeasurement MeasureByTimeStamp(Machine& machine) {
    const int priority = machine.ThreadPriority();
    uint64_t frequency = 0;
    if (!machine.CounterFrequency(frequency) || frequency < 10) return {};
    Totals totals;
    for (int rounds = 1; rounds <= kMaxRounds; ++rounds) {
        totals.third = totals.second;
        totals.second = totals.newest;
        Round round;
        if (!MeasureRound(machine, priority, round)) return {};
        Add(totals, round, frequency / 10);
        if (rounds >= kMinRounds && totals.AreSettled()) break;
    }
    return Conclude(totals);
}

SpeedMeasurement MeasureByBitScans(Machine& machine, uint32_t cycles) {
    uint64_t frequency = 0;
    if (!machine.CounterFrequency(frequency)) return {};
    const uint32_t perSecond = static_cast<uint32_t>(frequency);
    if (perSecond < 10) return {};
    uint32_t shortest = std::numeric_limits<uint32_t>::max();
    for (int trial = 0; trial < kScanTrials; ++trial) {
        const uint64_t start = machine.Counter();
        machine.ScanBits(kScans);
        shortest = std::min(shortest, static_cast<uint32_t>(machine.Counter() - start));
    }
    uint64_t microseconds = uint64_t{shortest} * 100000 / (perSecond / 10);
    // Deliberate: rounds by the remainder against the frequency, not against the divisor.
    if (microseconds % perSecond > perSecond / 2) ++microseconds;
    if (microseconds == 0 || microseconds > std::numeric_limits<uint32_t>::max()) return {};
    const uint32_t elapsed = static_cast<uint32_t>(microseconds);
    const uint32_t mhz = cycles / elapsed;
    return {cycles, elapsed, mhz, cycles % elapsed > elapsed / 2 ? mhz + 1 : mhz};
}

int ScanCycles(uint32_t family) {
    return family < std::size(kScanCycles) ? kScanCycles[family] : 1;
}

}  // namespace

SpeedMeasurement MeasureProcessorSpeed(int clocks, Machine& machine) {
    if (!machine.IsCpuidAvailable()) return {};
    const CpuidRegisters leaf = machine.Cpuid(1);
    const uint32_t family = leaf.eax >> 8 & 15;
    const bool hasTimeStamps = leaf.edx >> 4 & 1;
    const bool isGiven = clocks >= 1 && clocks <= kMaxScanClocks;
    if (!hasTimeStamps || isGiven) {
        constexpr uint32_t kFirstFamilyWithTimings = 3;
        if (family < kFirstFamilyWithTimings) return {};
        int scanClocks = 0;
        if (clocks <= kMaxScanClocks) scanClocks = isGiven ? clocks : ScanCycles(family);
        return MeasureByBitScans(machine, static_cast<uint32_t>(scanClocks * kScans));
    }
    return clocks == 0 ? MeasureByTimeStamp(machine) : SpeedMeasurement{};
}

}  // namespace tavo
