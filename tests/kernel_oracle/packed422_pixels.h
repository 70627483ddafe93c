// Reading and writing packed 4:2:2 pixels; two pixels share a group of four bytes.

#pragma once

#include "tests/kernel_oracle/picture.h"

namespace tavo::test {

inline int Luma(const Source& s, int row, int pixel) {
    return s.At(row, 2 * pixel + (s.format == Format::Uyvy ? 1 : 0));
}

// which: 0 for the first chroma byte of a group, 1 for the second.
inline int Chroma(const Source& s, int row, int group, int which) {
    return s.At(row, 4 * group + 2 * which + (s.format == Format::Uyvy ? 0 : 1));
}

inline void PutLuma(Canvas& out, int y, int x, int value) {
    out.Put(y, 2 * x + (out.PixelFormat() == Format::Uyvy ? 1 : 0), value);
}

inline void PutChroma(Canvas& out, int y, int group, int which, int value) {
    out.Put(y, 4 * group + 2 * which + (out.PixelFormat() == Format::Uyvy ? 0 : 1), value);
}

}  // namespace tavo::test
