// The rounds alternate between all contestants, so that what slows the machine down for a while
// slows down all of them.

#include "bench/compare/measure.h"

#include <cstdio>
#include <exception>
#include <optional>

#include "bench/memory_limit.h"
#include "bench/stopwatch.h"

namespace tavo::bench {
namespace {

using Round = std::function<double(Caches)>;

struct Contestant {
    Round round;
    // Where the median goes.
    std::function<void(CaseResult&, double)> store;
    std::vector<double> cold;
    std::vector<double> hot;
};

Round RoundsOf(std::function<void()> call) {
    return [watch = std::make_shared<Stopwatch<std::function<void()>>>(std::move(call))](
               Caches caches) { return watch->Round(caches); };
}

Round RoundsOf(Worker& worker) {
    return [&worker](Caches caches) {
        return std::stod(worker.Ask(caches == Caches::Cold ? "cold round" : "round"));
    };
}

std::string RequestFor(const Case& work, const std::string& set) {
    const auto size = [](int32_t width, int32_t height) {
        return ' ' + std::to_string(width) + 'x' + std::to_string(height);
    };
    return std::string(work.Info().name) + ' ' + NameOf(work.method) +
           size(work.sizes.srcWidth, work.sizes.srcHeight) +
           size(work.sizes.dstWidth, work.sizes.dstHeight) + " set=" + set;
}

// Where rows keep their width and samples are whole bytes, any scaler of planes will do.
std::optional<Case> AsBytes(const Case& work) {
    const FamilyInfo& info = work.Info();
    const bool splitsBytes = info.group == FamilyGroup::Rgb16 && work.method == Method::Bilinear;
    if (info.family == Family::Planar || splitsBytes) return std::nullopt;
    if (work.Mode() != AxisMode::Height && work.Mode() != AxisMode::Copy) return std::nullopt;
    Case bytes = work;
    bytes.family = Family::Planar;
    bytes.sizes.srcWidth = bytes.sizes.dstWidth = info.RowBytes(work.sizes.srcWidth);
    return bytes;
}

void AddWays(std::vector<Contestant>& contestants, const Peer& peer, size_t index, const Case& work,
             const char* suffix) {
    try {
        for (Way& way : peer.waysFor(work)) {
            const std::string setting = way.setting + suffix;
            contestants.push_back(
                {RoundsOf(std::move(way.run)),
                 [index, setting, takesAvx512 = way.takesAvx512](CaseResult& result, double time) {
                     result.peers.push_back({index, setting, time, takesAvx512});
                 },
                 {},
                 {}});
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", TextOf(work).c_str(), failure.what());
    }
}

std::vector<Contestant> ContestantsFor(const Case& work, const std::vector<OwnContestant>& own,
                                       const std::vector<Peer>& peers) {
    std::vector<Contestant> contestants;
    for (const OwnContestant& one : own) {
        one.worker->Ask(RequestFor(work, one.set));
        contestants.push_back(
            {RoundsOf(*one.worker),
             [build = one.build](CaseResult& result, double time) { result.ours[build] = time; },
             {},
             {}});
    }
    const auto limit = std::make_shared<MemoryLimit>(work.Info(), work.sizes);
    contestants.push_back({RoundsOf([limit] { limit->Run(); }),
                           [](CaseResult& result, double time) { result.memory = time; },
                           {},
                           {}});
    const std::optional<Case> bytes = AsBytes(work);
    for (size_t i = 0; i < peers.size(); ++i) {
        AddWays(contestants, peers[i], i, work, "");
        if (bytes) AddWays(contestants, peers[i], i, *bytes, ", on bytes");
    }
    return contestants;
}

// Adds the time of so many planes or pictures.
void AddCost(FrameCost& cost, const Case& work, int count, const std::vector<OwnContestant>& own,
             int rounds) {
    std::vector<std::vector<double>> times(own.size());
    for (const OwnContestant& one : own) one.worker->Ask(RequestFor(work, one.set));
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < own.size(); ++i) {
            times[i].push_back(RoundsOf(*own[i].worker)(Caches::Cold));
        }
    }
    for (size_t i = 0; i < own.size(); ++i) {
        cost.nanoseconds[own[i].build] += count * Median(times[i]);
    }
}

}  // namespace

std::vector<Case> AllCases() {
    std::vector<Case> cases;
    for (const FamilyInfo& info : kFamilies) {
        for (const Method method : {Method::Bilinear, Method::Nearest, Method::Copy}) {
            for (const Sizes& sizes : kWorkloads) {
                const bool isCopy = sizes.Mode() == AxisMode::Copy;
                if (isCopy == (method == Method::Copy))
                    cases.push_back({info.family, method, sizes});
            }
        }
    }
    return cases;
}

void Measure(Run& run, const Case& work, const std::vector<OwnContestant>& own,
             const std::vector<Peer>& peers) {
    std::vector<Contestant> contestants = ContestantsFor(work, own, peers);
    for (int round = 0; round < run.rounds; ++round) {
        for (Contestant& contestant : contestants) {
            contestant.cold.push_back(contestant.round(Caches::Cold));
            contestant.hot.push_back(contestant.round(Caches::Hot));
        }
    }
    CaseResult cold{};
    CaseResult hot{};
    cold.work = hot.work = work;
    for (const Contestant& contestant : contestants) {
        contestant.store(cold, Median(contestant.cold));
        contestant.store(hot, Median(contestant.hot));
    }
    run.cold.cases.push_back(cold);
    run.hot.cases.push_back(hot);
}

std::vector<FrameCost> MeasureCosts(const std::vector<OwnContestant>& own, int rounds) {
    std::vector<FrameCost> costs;
    for (const Sizes& sizes : kCommonChanges) {
        for (const FamilyInfo& info : kFamilies) {
            const bool isPlanar = info.family == Family::Planar;
            FrameCost cost{isPlanar ? "I420" : info.name, sizes, {}};
            // Two planes of chroma have half the width and half the height.
            const Sizes chroma = {sizes.srcWidth / 2, sizes.srcHeight / 2, sizes.dstWidth / 2,
                                  sizes.dstHeight / 2};
            AddCost(cost, {info.family, Method::Bilinear, sizes}, 1, own, rounds);
            if (isPlanar) AddCost(cost, {info.family, Method::Bilinear, chroma}, 2, own, rounds);
            costs.push_back(cost);
        }
    }
    return costs;
}

}  // namespace tavo::bench
