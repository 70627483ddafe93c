// The speed that the kernels are to reach, and whether they did.

#pragma once

#include <string>
#include <vector>

#include "bench/compare/results.h"

namespace tavo::bench {

// One demand on one build.
struct Check {
    Caches caches;
    std::string subject;
    Build build;
    bool isAtLeast;  // a ratio to the best peer; otherwise a time that is at most a multiple of the
                     // memory limit's
    double floor;
    double value;  // the worst of the cases that it is about, or a mean
    std::string worst;

    bool IsReached() const { return isAtLeast ? value >= floor : value <= floor; }
};

// Those that something was measured for.
std::vector<Check> CheckFloors(const Run& run);

}  // namespace tavo::bench
