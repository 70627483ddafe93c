// The entries of an axis map, computed with integers only: what double arithmetic must give, found
// without any floating-point unit. Knows nothing of the engine.

#pragma once

#include <cstdint>
#include <vector>

namespace tavo::test {

// Destination sample i lies weights[i] 256ths of the way from source sample indices[i] to the next.
struct AxisEntries {
    std::vector<int32_t> indices;
    std::vector<int> weights;
    int32_t srcSpan = 0;     // trunc(count * ratio)
    int32_t wholeCount = 0;  // of the map that these are the first entries of; 0 if they are all
};

// The map of abs(dstLen) destination samples on abs(srcLen) source samples; srcLen is not zero.
AxisEntries MakeAxisEntries(int32_t srcLen, int32_t dstLen);

// The first count entries, for a plane that is scaled with the map of a larger one.
AxisEntries FirstEntries(AxisEntries whole, int32_t count);

}  // namespace tavo::test
