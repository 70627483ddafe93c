// Packed 4:2:2 by maps.

#include "tests/kernel_oracle/kernel_oracle.h"
#include "tests/kernel_oracle/packed422_pixels.h"

namespace tavo::test {
namespace {

struct Pixel {
    int luma;
    int chroma[2];
};

Pixel PixelAt(const Source& s, int row, int column) {
    return {Luma(s, row, column), {Chroma(s, row, column / 2, 0), Chroma(s, row, column / 2, 1)}};
}

// Along one row; the chroma of an even pixel stands by itself.
Pixel BlendAcross(const Source& s, int row, int column, int weight) {
    const Pixel here = PixelAt(s, row, column);
    if (s.IsLastColumn(column)) return here;
    const Pixel next = PixelAt(s, row, column + 1);
    Pixel blend = here;
    blend.luma = Blend(here.luma, next.luma, weight);
    if (column % 2 == 1) {
        for (int c : {0, 1}) blend.chroma[c] = Blend(here.chroma[c], next.chroma[c], weight);
    }
    return blend;
}

Pixel BlendDown(const Pixel& upper, const Pixel& lower, int weight) {
    return {Blend(upper.luma, lower.luma, weight),
            {Blend(upper.chroma[0], lower.chroma[0], weight),
             Blend(upper.chroma[1], lower.chroma[1], weight)}};
}

// The lower row of the last source row: at an odd column both of its pixels are that column's.
Pixel BelowTheLastRow(const Source& s, int row, int column, int weight) {
    return column % 2 == 1 ? PixelAt(s, row, column) : BlendAcross(s, row, column, weight);
}

void PutPair(Canvas& out, int y, int x, const Pixel& even, const Pixel& odd, int rounding) {
    PutLuma(out, y, x, even.luma);
    PutLuma(out, y, x + 1, odd.luma);
    for (int c : {0, 1}) {
        PutChroma(out, y, x / 2, c, (even.chroma[c] + odd.chroma[c] + rounding) / 2);
    }
}

void Bilinear(Canvas& out, const Source& s, const Maps& maps, int rounding) {
    const int mainWidth = MainLength(maps.x, out.Width(), s.width - 1, 4);
    const int mainHeight = MainLength(maps.y, out.Rows(), s.height - 1, 2);
    for (int y = 0; y < out.Rows(); ++y) {
        const int iy = maps.y.indices[y];
        const int wy = maps.y.weights[y];
        for (int x = 0; x < out.Width(); x += 2) {
            Pixel pair[2];
            for (int i : {0, 1}) {
                const int ix = maps.x.indices[x + i];
                const int wx = maps.x.weights[x + i];
                const bool inStrip = x >= mainWidth || y >= mainHeight;
                const Pixel lower = inStrip && s.IsLastRow(iy) ? BelowTheLastRow(s, iy, ix, wx)
                                                               : BlendAcross(s, iy + 1, ix, wx);
                pair[i] = BlendDown(BlendAcross(s, iy, ix, wx), lower, wy);
            }
            PutPair(out, y, x, pair[0], pair[1], rounding);
        }
    }
}

void BilinearH(Canvas& out, const Source& s, const Maps& maps, int rounding) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); x += 2) {
            const Pixel even = BlendAcross(s, y, maps.x.indices[x], maps.x.weights[x]);
            const Pixel odd = BlendAcross(s, y, maps.x.indices[x + 1], maps.x.weights[x + 1]);
            PutPair(out, y, x, even, odd, rounding);
        }
    }
}

}  // namespace

void NearestPacked(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        const int iy = maps.y.indices[y];
        for (int x = 0; x < out.Width(); x += 2) {
            PutPair(out, y, x, PixelAt(s, iy, maps.x.indices[x]),
                    PixelAt(s, iy, maps.x.indices[x + 1]), 0);
        }
    }
}

void BilinearPacked(Canvas& out, const Source& s, const Maps& maps) { Bilinear(out, s, maps, 0); }

void BilinearPackedUp(Canvas& out, const Source& s, const Maps& maps) { Bilinear(out, s, maps, 1); }

void NearestHPacked(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); x += 2) {
            PutPair(out, y, x, PixelAt(s, y, maps.x.indices[x]),
                    PixelAt(s, y, maps.x.indices[x + 1]), 0);
        }
    }
}

void BilinearHPacked(Canvas& out, const Source& s, const Maps& maps) { BilinearH(out, s, maps, 0); }

void BilinearHPackedUp(Canvas& out, const Source& s, const Maps& maps) {
    BilinearH(out, s, maps, 1);
}

}  // namespace tavo::test
