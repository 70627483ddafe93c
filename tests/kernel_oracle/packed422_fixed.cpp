// Packed 4:2:2 at the fixed ratios, group by group.

#include "tests/kernel_oracle/kernel_oracle.h"
#include "tests/kernel_oracle/packed422_pixels.h"

namespace tavo::test {
namespace {

// One group of source pixels and the destination pixels that it gives.
struct Group {
    Canvas& out;
    const Source& source;
    int row;
    int firstPixel;
    int firstX;

    int Y(int pixel) const { return Luma(source, row, firstPixel + pixel); }
    int C(int group, int which) const { return Chroma(source, row, firstPixel / 2 + group, which); }
    void PutY(int pixel, int value) const { PutLuma(out, row, firstX + pixel, value); }
    void PutC(int group, int which, int value) const {
        PutChroma(out, row, firstX / 2 + group, which, value);
    }
};

template <typename Make>
void ForGroups(Canvas& out, const Source& s, int srcGroup, int dstGroup, Make make) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, pixel = 0; x < out.Width(); x += dstGroup, pixel += srcGroup) {
            make(Group{out, s, y, pixel, x});
        }
    }
}

void FourToThreeChroma(const Group& g) {
    for (int c : {0, 1}) {
        const int a1 = Blend(g.C(0, c), g.C(1, c), 85);
        const int a4 = Blend(g.C(2, c), g.C(3, c), 85);
        g.PutC(0, c, (g.C(0, c) + a1) / 2);
        g.PutC(1, c, (g.C(1, c) + a1) / 2);
        g.PutC(2, c, (a4 + g.C(3, c)) / 2);
    }
}

int WeightedSum(int a, int p, int b, int q) { return (a * p + b * q) / 256; }

}  // namespace

void Nearest720Packed(Canvas& out, const Source& s, const Maps&) {
    ForGroups(out, s, 6, 4, [](const Group& g) {
        g.PutY(0, g.Y(0));
        g.PutY(1, g.Y(1));
        g.PutY(2, g.Y(3));
        g.PutY(3, g.Y(4));
        for (int c : {0, 1}) {
            g.PutC(0, c, g.C(0, c));
            g.PutC(1, c, (g.C(1, c) + g.C(2, c)) / 2);
        }
    });
}

void Bilinear720Packed(Canvas& out, const Source& s, const Maps&) {
    ForGroups(out, s, 6, 4, [](const Group& g) {
        g.PutY(0, g.Y(0));
        g.PutY(1, Blend(g.Y(1), g.Y(2), 128));
        g.PutY(2, g.Y(3));
        g.PutY(3, Blend(g.Y(4), g.Y(5), 128));
        for (int c : {0, 1}) {
            const int step = FloorDivide((g.C(1, c) - g.C(0, c)) * 128, 256);
            g.PutC(0, c, FloorDivide(2 * g.C(0, c) + step, 2));
            g.PutC(1, c, (g.C(1, c) + g.C(2, c)) / 2);
        }
    });
}

void Nearest640Packed(Canvas& out, const Source& s, const Maps&) {
    ForGroups(out, s, 8, 6, [](const Group& g) {
        constexpr int kKept[] = {0, 1, 2, 4, 5, 6};
        for (int i = 0; i < 6; ++i) g.PutY(i, g.Y(kKept[i]));
        for (int c : {0, 1}) {
            g.PutC(0, c, g.C(0, c));
            g.PutC(1, c, (g.C(1, c) + g.C(2, c)) / 2);
            g.PutC(2, c, (g.C(2, c) + g.C(3, c)) / 2);
        }
    });
}

void Bilinear640Packed(Canvas& out, const Source& s, const Maps&) {
    ForGroups(out, s, 8, 6, [](const Group& g) {
        for (int half : {0, 1}) {
            const int p = 4 * half;
            g.PutY(3 * half, g.Y(p));
            g.PutY(3 * half + 1, Blend(g.Y(p + 1), g.Y(p + 2), 85));
            g.PutY(3 * half + 2, Blend(g.Y(p + 2), g.Y(p + 3), 170));
        }
        FourToThreeChroma(g);
    });
}

void Bilinear640PackedDimmed(Canvas& out, const Source& s, const Maps&) {
    ForGroups(out, s, 8, 6, [](const Group& g) {
        for (int half : {0, 1}) {
            const int p = 4 * half;
            g.PutY(3 * half, WeightedSum(g.Y(p), 255, g.Y(p + 1), 0));
            g.PutY(3 * half + 1, WeightedSum(g.Y(p + 1), 171, g.Y(p + 2), 85));
            g.PutY(3 * half + 2, WeightedSum(g.Y(p + 2), 86, g.Y(p + 3), 170));
        }
        FourToThreeChroma(g);
    });
}

}  // namespace tavo::test
