// Pixels of one little-endian word with three fields of bits.

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {
namespace {

int Word(const Source& s, int row, int column) {
    return s.At(row, 2 * column) + 256 * s.At(row, 2 * column + 1);
}

Fields PixelFields(const Source& s, int row, int column) {
    return Unpack(s.format, Word(s, row, column));
}

void PutWord(Canvas& out, int y, int x, int word) {
    out.Put(y, 2 * x, word % 256);
    out.Put(y, 2 * x + 1, word / 256);
}

void PutFields(Canvas& out, int y, int x, const Fields& fields) {
    PutWord(out, y, x, Pack(out.PixelFormat(), fields));
}

void Keep(Canvas& out, const Source& s, int srcGroup, int dstGroup) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            PutWord(out, y, x, Word(s, y, x / dstGroup * srcGroup + x % dstGroup));
        }
    }
}

Fields Halfway(const Fields& a, const Fields& b, int rounding) {
    return {(a.blue + b.blue + rounding) / 2, (a.green + b.green + rounding) / 2,
            (a.red + b.red + rounding) / 2};
}

void ThreeToTwo(Canvas& out, const Source& s, int rounding) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, column = 0; x < out.Width(); x += 2, column += 3) {
            PutFields(out, y, x, PixelFields(s, y, column));
            PutFields(
                out, y, x + 1,
                Halfway(PixelFields(s, y, column + 1), PixelFields(s, y, column + 2), rounding));
        }
    }
}

}  // namespace

Fields Unpack(Format format, int pixel) {
    if (format == Format::Rgb555) return {pixel % 32, pixel / 32 % 32, pixel / 1024 % 32};
    return {pixel % 32, pixel / 32 % 64, pixel / 2048};
}

int Pack(Format format, const Fields& fields) {
    const int redPlace = format == Format::Rgb555 ? 1024 : 2048;
    return fields.blue + fields.green * 32 + fields.red * redPlace;
}

Fields BlendFields(const Fields& a, const Fields& b, int weight) {
    return {Blend(a.blue, b.blue, weight), Blend(a.green, b.green, weight),
            Blend(a.red, b.red, weight)};
}

void NearestRgb16(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            PutWord(out, y, x, Word(s, maps.y.indices[y], maps.x.indices[x]));
        }
    }
}

void BilinearRgb16(Canvas& out, const Source& s, const Maps& maps) {
    ForCorners(out, s, maps, 4, [&](int y, int x, const Corners& c) {
        const int wy = maps.y.weights[y];
        const Fields left =
            BlendFields(PixelFields(s, c.row, c.column), PixelFields(s, c.below, c.column), wy);
        const Fields right =
            BlendFields(PixelFields(s, c.row, c.right), PixelFields(s, c.below, c.rightBelow), wy);
        PutFields(out, y, x, BlendFields(left, right, maps.x.weights[x]));
    });
}

void NearestHRgb16(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) PutWord(out, y, x, Word(s, y, maps.x.indices[x]));
    }
}

void BilinearHRgb16(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            const int i = maps.x.indices[x];
            const Fields a = PixelFields(s, y, i);
            const Fields b = s.IsLastColumn(i) ? a : PixelFields(s, y, i + 1);
            PutFields(out, y, x, BlendFields(a, b, maps.x.weights[x]));
        }
    }
}

void Nearest640Rgb16(Canvas& out, const Source& s, const Maps&) { Keep(out, s, 4, 3); }

void Bilinear640Rgb16(Canvas& out, const Source& s, const Maps&) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0, column = 0; x < out.Width(); x += 3, column += 4) {
            const Fields s1 = PixelFields(s, y, column + 1);
            const Fields s2 = PixelFields(s, y, column + 2);
            const Fields s3 = PixelFields(s, y, column + 3);
            PutFields(out, y, x, PixelFields(s, y, column));
            PutFields(out, y, x + 1, BlendFields(s1, s2, 85));
            PutFields(out, y, x + 2, BlendFields(s2, s3, 170));
        }
    }
}

void Nearest720Rgb16(Canvas& out, const Source& s, const Maps&) { Keep(out, s, 3, 2); }

void Bilinear720Rgb16(Canvas& out, const Source& s, const Maps&) { ThreeToTwo(out, s, 0); }

void Bilinear720Rgb16Up(Canvas& out, const Source& s, const Maps&) { ThreeToTwo(out, s, 1); }

}  // namespace tavo::test
