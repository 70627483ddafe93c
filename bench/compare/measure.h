// Measuring one case: every contestant in turn, round after round.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/compare/results.h"
#include "bench/compare/worker.h"
#include "bench/peers/peer.h"

namespace tavo::bench {

// One of our builds, with the instruction set that it is held to.
struct OwnContestant {
    Build build;
    std::string set;
    std::unique_ptr<Worker> worker;
};

// All the cases there are.
std::vector<Case> AllCases();

// Adds the case to both results. Says on the standard error what a peer refuses, and goes on
// without it.
void Measure(Run& run, const Case& work, const std::vector<OwnContestant>& own,
             const std::vector<Peer>& peers);

// What a frame of each format costs.
std::vector<FrameCost> MeasureCosts(const std::vector<OwnContestant>& own, int rounds);

}  // namespace tavo::bench
