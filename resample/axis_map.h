// Building and freeing axis maps.

#pragma once

#include <memory>

#include "resample/scale_kernel.h"

namespace tavo {

// Maps abs(dstLen) destination samples to abs(srcLen) source samples. flags is reserved: pass 0.
// Null when memory runs out, and for a length of 0 or INT32_MIN. The caller owns the result
// (AxisMapPtr, FreeAxisMap). Any thread.
AxisMap* BuildAxisMap(int32_t srcLen, int32_t dstLen, int32_t flags);

// A copy of the first dstLen entries of a map, or of all if it has fewer, with indices bounded to a
// source of srcLen samples. Chroma planes share the map of the luma plane, and where a size is odd
// its last entry may name a sample outside the chroma plane. Null when memory runs out, or for a
// length below 1. The caller owns the result.
AxisMap* BuildBoundedAxisMap(const AxisMap& map, int32_t srcLen, int32_t dstLen);

// Frees a map and both its arrays. Null is allowed.
void FreeAxisMap(AxisMap* map);

// Owns a map.
struct AxisMapDeleter {
    void operator()(AxisMap* map) const { FreeAxisMap(map); }
};
using AxisMapPtr = std::unique_ptr<AxisMap, AxisMapDeleter>;

}  // namespace tavo
