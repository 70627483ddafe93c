// The sizes, maps and data that kernels are tried with.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/resample/support/expected_table.h"
#include "tests/resample/support/test_data.h"

namespace tavo::test {

struct Sizes {
    int srcWidth;
    int srcHeight;
    int dstWidth;
    int dstHeight;
};

enum class MapKind {
    OfSizes,       // the maps that the sizes call for
    Random,        // steps and weights at random
    EveryWeightX,  // each weight once, with every difference of two samples
    EveryWeightY,
};

struct CasePlan {
    Axis axis;
    Sizes sizes;
    MapKind maps;
    Pattern pattern;
    uint64_t seed;
};

struct Effort {
    bool quick;
    uint64_t seed;
    size_t share = 1;  // one of that many cases takes part
};

// Leaves the effort's share of the cases of a row; which ones depends on the row.
template <typename Case>
void KeepShare(std::vector<Case>& cases, const Effort& effort, size_t row) {
    size_t kept = 0;
    for (size_t i = row % effort.share; i < cases.size(); i += effort.share) {
        cases[kept++] = cases[i];
    }
    cases.resize(kept);
}

// Everything that the kernels of a row are tried with, in the same order for the same seed.
std::vector<CasePlan> PlanCases(const ScaleRow& row, const Effort& effort);

// Whether a kernel of the row is made for these sizes; some rows hold a kernel of another ratio.
bool Serves(const ScaleRow& row, const ExpectedKernel& kernel, const Sizes& sizes);

Source MakeSource(Format format, const CasePlan& plan);
Maps MakeMaps(const CasePlan& plan);

std::string Describe(const CasePlan& plan);

}  // namespace tavo::test
