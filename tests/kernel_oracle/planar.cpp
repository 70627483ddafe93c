// One plane of bytes.

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {
namespace {

int VerticalBlend(const Source& s, int iy, int iy1, int column, int wy) {
    return Blend(s.At(iy, column), s.At(iy1, column), wy);
}

int RightInFull(const Source& s, int iy, int ix, int wy) {
    if (s.IsLastColumn(ix)) return VerticalBlend(s, iy, s.IsLastRow(iy) ? iy : iy + 1, ix, wy);
    if (s.IsLastRow(iy)) return Blend(s.At(iy, ix + 1), s.At(iy, ix), wy);
    return VerticalBlend(s, iy, iy + 1, ix + 1, wy);
}

// All rows from column `first` on. The index before carries over from row to row.
void RightStrip(Canvas& out, const Source& s, const Maps& maps, int first) {
    int indexBefore = 0;
    int rightBefore = -1;  // of no column yet
    int fullIndex = -1;
    for (int y = 0; y < out.Rows(); ++y) {
        const int iy = maps.y.indices[y];
        const int iy1 = s.IsLastRow(iy) ? iy : iy + 1;
        const int wy = maps.y.weights[y];
        for (int x = first; x < out.Width(); ++x) {
            const int ix = maps.x.indices[x];
            int left = 0;
            int right = 0;
            if (ix == indexBefore + 1 && rightBefore >= 0) {
                left = rightBefore;
                const bool atEdge = s.IsLastRow(iy) || s.IsLastColumn(ix);
                right = VerticalBlend(s, iy, iy1, atEdge ? fullIndex : ix + 1, wy);
            } else {
                left = VerticalBlend(s, iy, iy1, ix, wy);
                right = RightInFull(s, iy, ix, wy);
                fullIndex = ix;
            }
            indexBefore = ix;
            rightBefore = right;
            out.Put(y, x, Blend(left, right, maps.x.weights[x]));
        }
    }
}

void FixedGroups(Canvas& out, const Source& s, int srcGroup, int dstGroup, int end,
                 void (*group)(Canvas& out, const Source& s, int y, int x, int column)) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, column = 0; x < end; x += dstGroup, column += srcGroup) {
            group(out, s, y, x, column);
        }
    }
}

void FourToThreeTail(Canvas& out, const Source& s) {
    const int w = out.Width();
    for (int y = 0; y < out.Rows(); ++y) {
        const int a = s.width - 4;
        out.Put(y, w - 3, s.At(y, a));
        out.Put(y, w - 2, Blend(s.At(y, a + 1), s.At(y, a + 2), 85));
        out.Put(y, w - 1, s.At(y, a + 2));
    }
}

void ThreeToTwoTail(Canvas& out, const Source& s) {
    for (int y = 0; y < out.Rows(); ++y) {
        out.Put(y, out.Width() - 2, s.At(y, s.width - 3));
        out.Put(y, out.Width() - 1, s.At(y, s.width - 2));
    }
}

}  // namespace

void NearestPlanar(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            out.Put(y, x, s.At(maps.y.indices[y], maps.x.indices[x]));
        }
    }
}

void BilinearPlanar(Canvas& out, const Source& s, const Maps& maps) {
    const int mainWidth = MainLength(maps.x, out.Width(), s.width - 1, 8);
    const int mainHeight = MainLength(maps.y, out.Rows(), s.height - 1, 2);
    for (int y = 0; y < out.Rows(); ++y) {
        const int iy = maps.y.indices[y];
        const int wy = maps.y.weights[y];
        for (int x = 0; x < mainWidth; ++x) {
            const int ix = maps.x.indices[x];
            const bool lastRow = y >= mainHeight && s.IsLastRow(iy);
            const int left = VerticalBlend(s, iy, lastRow ? iy : iy + 1, ix, wy);
            const int right =
                Blend(s.At(iy, ix + 1), lastRow ? s.At(iy, ix) : s.At(iy + 1, ix + 1), wy);
            out.Put(y, x, Blend(left, right, maps.x.weights[x]));
        }
    }
    RightStrip(out, s, maps, mainWidth);
}

void NearestHPlanar(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) out.Put(y, x, s.At(y, maps.x.indices[x]));
    }
}

void BilinearHPlanar(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            const int i = maps.x.indices[x];
            const int a = s.At(y, i);
            const int b = s.IsLastColumn(i) ? a : s.At(y, i + 1);
            out.Put(y, x, Blend(a, b, maps.x.weights[x]));
        }
    }
}

void Nearest640Planar(Canvas& out, const Source& s, const Maps&) {
    FixedGroups(out, s, 4, 3, out.Width(), [](Canvas& o, const Source& p, int y, int x, int c) {
        for (int i = 0; i < 3; ++i) o.Put(y, x + i, p.At(y, c + i));
    });
}

void Bilinear640Planar(Canvas& out, const Source& s, const Maps&) {
    FixedGroups(out, s, 4, 3, out.Width() - 3, [](Canvas& o, const Source& p, int y, int x, int c) {
        o.Put(y, x, p.At(y, c));
        o.Put(y, x + 1, Blend(p.At(y, c + 1), p.At(y, c + 2), 85));
        o.Put(y, x + 2, Blend(p.At(y, c + 2), p.At(y, c + 3), 170));
    });
    FourToThreeTail(out, s);
}

void Nearest720Planar(Canvas& out, const Source& s, const Maps&) {
    FixedGroups(out, s, 3, 2, out.Width(), [](Canvas& o, const Source& p, int y, int x, int c) {
        o.Put(y, x, p.At(y, c));
        o.Put(y, x + 1, p.At(y, c + 1));
    });
}

void Bilinear720Planar(Canvas& out, const Source& s, const Maps&) {
    FixedGroups(out, s, 3, 2, out.Width() - 2, [](Canvas& o, const Source& p, int y, int x, int c) {
        o.Put(y, x, p.At(y, c));
        o.Put(y, x + 1, (p.At(y, c + 1) + p.At(y, c + 2)) / 2);
    });
    ThreeToTwoTail(out, s);
}

void Bilinear720PlanarUp(Canvas& out, const Source& s, const Maps&) {
    FixedGroups(out, s, 3, 2, out.Width() - 2, [](Canvas& o, const Source& p, int y, int x, int c) {
        o.Put(y, x, p.At(y, c));
        o.Put(y, x + 1, (p.At(y, c + 1) + p.At(y, c + 2) + 1) / 2);
    });
    ThreeToTwoTail(out, s);
}

}  // namespace tavo::test
