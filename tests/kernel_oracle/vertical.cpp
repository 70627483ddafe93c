// Height only, every format. Nearest neighbour copies the padding of a row with it; bilinear may
// blend it or leave it as it was.

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {
namespace {

void PutByte(Canvas& out, int y, int at, int value) {
    if (at < BytesPerPixel(out.PixelFormat()) * out.Width()) {
        out.Put(y, at, value);
    } else {
        out.MayPut(y, at, value);
    }
}

void BlendByteRow(Canvas& out, const Source& s, int y, int iy, int weight) {
    for (int at = 0; at < out.Stride(); ++at) {
        const int a = s.At(iy, at);
        PutByte(out, y, at, s.IsLastRow(iy) ? a : Blend(a, s.At(iy + 1, at), weight));
    }
}

Fields FieldsAt(const Source& s, int row, int at) {
    return Unpack(s.format, s.At(row, at) + 256 * s.At(row, at + 1));
}

void BlendWordRow(Canvas& out, const Source& s, int y, int iy, int weight) {
    for (int at = 0; at < out.Stride(); at += 2) {
        Fields fields = FieldsAt(s, iy, at);
        if (!s.IsLastRow(iy)) fields = BlendFields(fields, FieldsAt(s, iy + 1, at), weight);
        const int word = Pack(s.format, fields);
        PutByte(out, y, at, word % 256);
        PutByte(out, y, at + 1, word / 256);
    }
}

}  // namespace

void NearestVertical(Canvas& out, const Source& s, const Maps& maps) {
    for (int y = 0; y < out.Rows(); ++y) {
        for (int at = 0; at < out.Stride(); ++at) {
            out.Put(y, at, s.At(maps.y.indices[y], at));
        }
    }
}

void BilinearVertical(Canvas& out, const Source& s, const Maps& maps) {
    const bool words = s.format == Format::Rgb555 || s.format == Format::Rgb565;
    for (int y = 0; y < out.Rows(); ++y) {
        const int iy = maps.y.indices[y];
        const int weight = maps.y.weights[y];
        if (words) {
            BlendWordRow(out, s, y, iy, weight);
        } else {
            BlendByteRow(out, s, y, iy, weight);
        }
    }
}

}  // namespace tavo::test
