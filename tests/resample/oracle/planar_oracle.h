// What the planar kernels must write, byte for byte, computed plainly and independently of the
// engine.

#pragma once

#include <cstdint>

#include "tests/resample/oracle/axis_oracle.h"

namespace tavo::test {

// The sizes as a kernel is given them; heights may be negative.
struct FrameShape {
    int32_t dstWidth;
    int32_t dstHeight;
    int32_t srcWidth;
    int32_t srcHeight;
};

void OracleNearestPlanar(uint8_t* dst, const uint8_t* src, const FrameShape& shape,
                         const OracleMap& xMap, const OracleMap& yMap);

void OracleBilinearPlanar(uint8_t* dst, const uint8_t* src, const FrameShape& shape,
                          const OracleMap& xMap, const OracleMap& yMap);

}  // namespace tavo::test
