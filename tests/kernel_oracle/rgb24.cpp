// Pixels of three bytes: blue, green, red.

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {
namespace {

constexpr int kBytes = 3;

int Sample(const Source& s, int row, int column, int byte) {
    return s.At(row, kBytes * column + byte);
}

void PutPixel(Canvas& out, const Source& s, int y, int x, int row, int column) {
    for (int byte = 0; byte < kBytes; ++byte) {
        out.Put(y, kBytes * x + byte, Sample(s, row, column, byte));
    }
}

void PutBlend(Canvas& out, const Source& s, int y, int x, int column, int weight) {
    for (int byte = 0; byte < kBytes; ++byte) {
        const int value = Blend(Sample(s, y, column, byte), Sample(s, y, column + 1, byte), weight);
        out.Put(y, kBytes * x + byte, value);
    }
}

// The padding of rows that are shorter than one step.
void FreePaddingOfShortRows(Canvas& out) {
    if (out.Width() > 3) return;
    for (int y = 0; y < out.Rows(); ++y) {
        for (int at = kBytes * out.Width(); at < out.Stride(); ++at) out.Free(y, at);
    }
}

void FourToThreeButForTheLastGroup(Canvas& out, const Source& s) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, column = 0; x < out.Width() - 3; x += 3, column += 4) {
            PutPixel(out, s, y, x, y, column);
            PutBlend(out, s, y, x + 1, column + 1, 85);
            PutBlend(out, s, y, x + 2, column + 2, 170);
        }
    }
}

void ThreeToTwo(Canvas& out, const Source& s, int rounding) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, column = 0; x < out.Width() - 2; x += 2, column += 3) {
            PutPixel(out, s, y, x, y, column);
            for (int byte = 0; byte < kBytes; ++byte) {
                const int sum = Sample(s, y, column + 1, byte) + Sample(s, y, column + 2, byte);
                out.Put(y, kBytes * (x + 1) + byte, (sum + rounding) / 2);
            }
        }
    }
    for (int y = 0; y < out.Rows(); ++y) {
        PutPixel(out, s, y, out.Width() - 2, y, s.width - 3);
        PutPixel(out, s, y, out.Width() - 1, y, s.width - 2);
    }
}

}  // namespace

void NearestRgb24(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            PutPixel(out, s, y, x, maps.y.indices[y], maps.x.indices[x]);
        }
    }
}

void BilinearRgb24(Canvas& out, const Source& s, const Maps& maps) {
    ForCorners(out, s, maps, 8, [&](int y, int x, const Corners& c) {
        const int wy = maps.y.weights[y];
        for (int byte = 0; byte < kBytes; ++byte) {
            const int left =
                Blend(Sample(s, c.row, c.column, byte), Sample(s, c.below, c.column, byte), wy);
            const int right =
                Blend(Sample(s, c.row, c.right, byte), Sample(s, c.below, c.rightBelow, byte), wy);
            out.Put(y, kBytes * x + byte, Blend(left, right, maps.x.weights[x]));
        }
    });
}

void NearestHRgb24(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) PutPixel(out, s, y, x, y, maps.x.indices[x]);
    }
}

void BilinearHRgb24(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            const int i = maps.x.indices[x];
            if (i >= s.width - 1) {
                PutPixel(out, s, y, x, y, i);
            } else {
                PutBlend(out, s, y, x, i, maps.x.weights[x]);
            }
        }
    }
}

void NearestHRgb24Forced(Canvas& out, const Source& s, const Maps& maps) {
    NearestHRgb24(out, s, maps);
    FreePaddingOfShortRows(out);
}

void BilinearHRgb24Forced(Canvas& out, const Source& s, const Maps& maps) {
    BilinearHRgb24(out, s, maps);
    FreePaddingOfShortRows(out);
}

void Nearest640Rgb24(Canvas& out, const Source& s, const Maps&) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) PutPixel(out, s, y, x, y, x / 3 * 4 + x % 3);
    }
}

void Nearest640Rgb24Mixed(Canvas& out, const Source& s, const Maps&) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int group = 0; group * 3 < out.Width(); ++group) {
            for (int i = 0; i < 8; ++i) out.Put(y, group * 9 + i, s.At(y, group * 12 + i));
            out.Put(y, group * 9 + 8, s.At(y, group * 12 + 11));
        }
    }
}

void Bilinear640Rgb24(Canvas& out, const Source& s, const Maps&) {
    FourToThreeButForTheLastGroup(out, s);
    const int w = out.Width();
    const int a = s.width - 4;
    for (int y = 0; y < out.Rows(); ++y) {
        PutPixel(out, s, y, w - 3, y, a);
        PutBlend(out, s, y, w - 2, a + 1, 85);
        PutPixel(out, s, y, w - 1, y, a + 2);
        out.Put(y, kBytes * w, Sample(s, y, a + 3, 0));
    }
}

void Bilinear640Rgb24Mmx(Canvas& out, const Source& s, const Maps&) {
    FourToThreeButForTheLastGroup(out, s);
    const int w = out.Width();
    const int a = s.width - 4;
    for (int y = 0; y < out.Rows(); ++y) {
        PutPixel(out, s, y, w - 3, y, a);
        for (int byte = 0; byte < kBytes; ++byte) {
            const int from = Sample(s, y, a + 1, byte);
            const int to = Sample(s, y, a + 2, byte);
            out.Put(y, kBytes * (w - 2) + byte, from + FloorDivide((to - from) * 85, 4096));
        }
        PutPixel(out, s, y, w - 1, y, a + 2);
    }
}

void Nearest720Rgb24(Canvas& out, const Source& s, const Maps&) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) PutPixel(out, s, y, x, y, x / 2 * 3 + x % 2);
    }
}

void Bilinear720Rgb24(Canvas& out, const Source& s, const Maps&) { ThreeToTwo(out, s, 0); }

void Bilinear720Rgb24Up(Canvas& out, const Source& s, const Maps&) { ThreeToTwo(out, s, 1); }

}  // namespace tavo::test
