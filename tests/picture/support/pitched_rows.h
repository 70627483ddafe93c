// Where the rows of a picture lie when they are at a pitch: as in a wider picture, of which they
// are the left part.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/picture/support/pixel_formats.h"

namespace tavo_test {

// One plane. The rows of packed formats are one plane of bytes.
struct PitchedRows {
    int64_t offset;
    int64_t bytes;
    int64_t pitch;
    int count;

    int64_t At(int row) const { return offset + row * pitch; }
};

// Planes without samples are left out. The pitch is in pixels.
inline std::vector<PitchedRows> RowsAtPitch(const PixelFormat& format, int width, int height,
                                            int pitch) {
    if (format.layout != Layout::kPlanar) {
        return {{0, int64_t{width} * format.bits / 8, RuleStride(format, pitch), height}};
    }
    std::vector<PitchedRows> planes;
    for (int i = 0; i < 3; ++i) {
        const Plane part = PlaneOf(format, i, width, height);
        const Plane whole = PlaneOf(format, i, pitch, height);
        if (part.width > 0 && part.height > 0) {
            planes.push_back({whole.offset, part.width, whole.width, part.height});
        }
    }
    return planes;
}

// Copies the pixels between two layouts of a picture, the last row first if they are turned.
inline void CopyRows(uint8_t* to, const std::vector<PitchedRows>& toRows, const uint8_t* from,
                     const std::vector<PitchedRows>& fromRows, bool turned = false) {
    for (size_t i = 0; i < toRows.size(); ++i) {
        for (int y = 0; y < toRows[i].count; ++y) {
            const uint8_t* row = from + fromRows[i].At(turned ? toRows[i].count - 1 - y : y);
            std::copy_n(row, toRows[i].bytes, to + toRows[i].At(y));
        }
    }
}

}  // namespace tavo_test
