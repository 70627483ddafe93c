// What the copies must leave in the destination, including what they move past a row end. Knows
// nothing of the engine.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tavo::test {

enum class CopyMember { PlanePortable, PlaneMmx, PackedPortable, PackedMmx };

struct CopyShape {
    int32_t width;
    int32_t height;  // may be negative
    int32_t bitsPerPixel;
};

// Bytes that a copy touches, in either picture, from its first byte on.
size_t CopyExtent(CopyMember member, const CopyShape& shape);

// dst and src hold CopyExtent bytes; what the copy must not touch in dst stays.
void OracleCopy(CopyMember member, uint8_t* dst, const uint8_t* src, const CopyShape& shape);

}  // namespace tavo::test
