// Frames of unchanged size.

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo::test {
namespace {

// In the order of memory, whichever row of the picture is stored first.
void CopyRows(Canvas& out, const Source& s, int moved) {
    for (int stored = 0; stored < out.Rows(); ++stored) {
        const int row = out.RowStoredAt(stored);
        for (int at = 0; at < moved; ++at) out.Put(row, at, s.At(row, at));
    }
    out.EndAfterLastByte();
}

int RowBytes(const Canvas& out) { return BytesPerPixel(out.PixelFormat()) * out.Width(); }

}  // namespace

void CopyWords(Canvas& out, const Source& s, const Maps&) { CopyRows(out, s, RowBytes(out)); }

void CopyBlocks(Canvas& out, const Source& s, const Maps&) {
    CopyRows(out, s, (RowBytes(out) + 7) / 8 * 8);
}

}  // namespace tavo::test
