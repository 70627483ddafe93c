// Building and freeing axis maps.

#pragma once

#include <memory>

#include "resample/scale_kernel.h"

namespace tavo {

// Maps abs(dstLen) destination samples to abs(srcLen) source samples. flags is reserved: pass 0.
// Null when memory runs out, and for lengths that have no map: 0 and the most negative integer.
// The caller owns the result (AxisMapPtr, FreeAxisMap). Any thread.
AxisMap* BuildAxisMap(int32_t srcLen, int32_t dstLen, int32_t flags);

// A copy of the first dstLen entries of a map (all of them, if it has fewer), with every index
// bounded to a source of srcLen samples. Chroma planes are scaled with the map of the luma plane,
// whose first entries fit them but for the last sample of an odd size; this settles that sample.
// Null when memory runs out, or for a length below 1. Owned by the caller.
AxisMap* BuildBoundedAxisMap(const AxisMap& map, int32_t srcLen, int32_t dstLen);

// Frees a map and both its arrays. Null is allowed.
void FreeAxisMap(AxisMap* map);

// Owns a map.
struct AxisMapDeleter {
    void operator()(AxisMap* map) const { FreeAxisMap(map); }
};
using AxisMapPtr = std::unique_ptr<AxisMap, AxisMapDeleter>;

}  // namespace tavo
