// Axis maps computed a second time, with integers only: what double arithmetic must give, found
// without any floating-point unit. Knows nothing of the engine.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavo::test {

struct OracleMap {
    int32_t srcSpan = 0;
    std::vector<int32_t> indices;
    std::vector<uint8_t> weights;
};

// The map of abs(dstLen) destination samples on abs(srcLen) source samples, neither of them zero.
OracleMap MakeOracleMap(int32_t srcLen, int32_t dstLen);

}  // namespace tavo::test
