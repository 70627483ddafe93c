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

struct Contestant {
    std::function<double()> round;
    // Where the median goes.
    std::function<void(CaseResult&, double)> store;
    std::vector<double> times;
};

std::function<double()> RoundsOf(std::function<void()> call) {
    return [watch = std::make_shared<Stopwatch<std::function<void()>>>(std::move(call))] {
        return watch->Round();
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

// The instruction sets that cases are held to are asked for on both axes only.
bool TakesPart(const OwnContestant& own, const Case& work) {
    if (own.build == Build64 || own.build == Build32) return true;
    return work.method == Method::Bilinear && work.Mode() == AxisMode::Both;
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
            contestants.push_back({RoundsOf(std::move(way.run)),
                                   [index, setting](CaseResult& result, double nanoseconds) {
                                       result.peers.push_back({index, setting, nanoseconds});
                                   },
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
        if (!TakesPart(one, work)) continue;
        one.worker->Ask(RequestFor(work, one.set));
        contestants.push_back(
            {[worker = one.worker.get()] { return std::stod(worker->Ask("round")); },
             [build = one.build](CaseResult& result, double time) { result.ours[build] = time; },
             {}});
    }
    const auto limit = std::make_shared<MemoryLimit>(work.Info(), work.sizes);
    contestants.push_back({RoundsOf([limit] { limit->Run(); }),
                           [](CaseResult& result, double time) { result.memory = time; },
                           {}});
    const std::optional<Case> bytes = AsBytes(work);
    for (size_t i = 0; i < peers.size(); ++i) {
        AddWays(contestants, peers[i], i, work, "");
        if (bytes) AddWays(contestants, peers[i], i, *bytes, ", on bytes");
    }
    return contestants;
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

CaseResult Measure(const Case& work, const std::vector<OwnContestant>& own,
                   const std::vector<Peer>& peers, int rounds) {
    std::vector<Contestant> contestants = ContestantsFor(work, own, peers);
    for (int round = 0; round < rounds; ++round) {
        for (Contestant& contestant : contestants) {
            contestant.times.push_back(contestant.round());
        }
    }
    CaseResult result{};
    result.work = work;
    for (const Contestant& contestant : contestants) {
        contestant.store(result, Median(contestant.times));
    }
    return result;
}

}  // namespace tavo::bench
