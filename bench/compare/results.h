// What one run has measured, and what follows from it.

#pragma once

#include <string>
#include <vector>

#include "bench/stopwatch.h"
#include "bench/workloads.h"

namespace tavo::bench {

// Our own contestants. The last ones are held to an instruction set.
enum Build { Build64, Build32, Avx2Build64, Avx2Build32, Ssse3Build64, Ssse3Build32 };
inline constexpr Build kAllBuilds[] = {Build64,     Build32,      Avx2Build64,
                                       Avx2Build32, Ssse3Build64, Ssse3Build32};
inline constexpr int kBuilds = 6;
inline constexpr const char* kBuildNames[kBuilds] = {"64-bit",      "32-bit",       "64-bit AVX2",
                                                     "32-bit AVX2", "64-bit SSSE3", "32-bit SSSE3"};

// Median nanoseconds per picture. 0 stands for what was not measured.
struct PeerTime {
    size_t peer;  // index into Run::peerNames
    std::string setting;
    double nanoseconds;
    bool takesAvx512;  // because it is told to (peer.h)
};

struct CaseResult {
    Case work;
    double ours[kBuilds] = {};
    double memory = 0;
    std::vector<PeerTime> peers;

    // The fastest way of one peer, or of all of them; null where there is none. A build that is
    // held to a set without AVX-512 meets no peer that is told to take it.
    const PeerTime* BestOf(size_t peer) const;
    const PeerTime* Best(Build build = Build64) const;

    // How many times faster than the best peer.
    double Ratio(Build build) const;
    // The same of the memory limit.
    double MemoryRatio() const;
    // Time as a multiple of the memory limit's.
    double TimeToMemory(Build build) const;
};

// All cases, with pictures that are in the caches or in none.
struct Results {
    Caches caches;
    std::vector<CaseResult> cases;

    // Geometric mean of the ratios that were measured, of the cases that are chosen; 0 if none was.
    template <typename Choose>
    double MeanRatio(Build build, Choose choose) const {
        return MeanOf([&](const CaseResult& result) { return result.Ratio(build); }, choose);
    }
    // The same of the memory limit.
    template <typename Choose>
    double MeanMemoryRatio(Choose choose) const {
        return MeanOf([](const CaseResult& result) { return result.MemoryRatio(); }, choose);
    }

  private:
    template <typename Ratio, typename Choose>
    double MeanOf(Ratio ratio, Choose choose) const {
        std::vector<double> ratios;
        for (const CaseResult& result : cases) {
            if (choose(result.work)) ratios.push_back(ratio(result));
        }
        return GeometricMean(ratios);
    }
    static double GeometricMean(const std::vector<double>& values);
};

// A change of size whose cost is told for each format: from a common size of a source.
inline constexpr Sizes kCommonChanges[] = {
    {1280, 720, 1920, 1080}, {1920, 1080, 1280, 720}, {3840, 2160, 1920, 1080}};

// What one frame costs, three planes included, with pictures that are in no cache.
struct FrameCost {
    const char* format;
    Sizes sizes;
    double nanoseconds[kBuilds] = {};
};

struct Run {
    std::string processor;
    std::string operations;  // the instruction set that our kernels run on
    int rounds = 0;
    std::vector<std::string> peerNames;
    Results cold{Caches::Cold, {}};
    Results hot{Caches::Hot, {}};
    std::vector<FrameCost> costs;
};

constexpr const char* NameOf(Caches caches) { return caches == Caches::Cold ? "cold" : "hot"; }

// "RGB24 bilinear both 1920x1080 > 1280x720"
std::string TextOf(const Case& work);
std::string TextOf(const Sizes& sizes);

}  // namespace tavo::bench
