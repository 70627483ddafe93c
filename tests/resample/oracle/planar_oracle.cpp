// One sample at a time. Where the right strip serves a column from the one before it, and what goes
// with that, is followed step by step rather than simplified.

#include "tests/resample/oracle/planar_oracle.h"

#include <cstdlib>

namespace tavo::test {
namespace {

// a moved toward b by weight 256ths, rounded toward minus infinity.
int Blend(int a, int b, int weight) {
    const int scaled = (b - a) * weight;
    const int floored = scaled >= 0 ? scaled / 256 : -((-scaled + 255) / 256);
    return a + floored;
}

struct Plane {
    const uint8_t* bytes;
    int width;
    int height;

    int At(int row, int column) const { return bytes[static_cast<int64_t>(row) * width + column]; }
    bool IsLastRow(int row) const { return row == height - 1; }
    bool IsLastColumn(int column) const { return column == width - 1; }
};

uint8_t* DestinationRow(uint8_t* dst, const FrameShape& shape, int y) {
    const int rows = std::abs(shape.dstHeight);
    const int stored = shape.dstHeight < 0 ? rows - 1 - y : y;
    return dst + static_cast<int64_t>(stored) * shape.dstWidth;
}

// The last entry that does not name the last source sample, rounded down to a multiple of step; 0
// when every entry names it.
int MainBlockLength(const OracleMap& map, int count, int last, int step) {
    for (int i = count - 1; i >= 0; --i) {
        if (map.indices[i] != last) return i / step * step;
    }
    return 0;
}

int MainBlockSample(const Plane& s, int iy, int ix, int wy, int wx) {
    const int left = Blend(s.At(iy, ix), s.At(iy + 1, ix), wy);
    const int right = Blend(s.At(iy, ix + 1), s.At(iy + 1, ix + 1), wy);
    return Blend(left, right, wx);
}

int BottomStripSample(const Plane& s, int iy, int ix, int wy, int wx) {
    if (!s.IsLastRow(iy)) return MainBlockSample(s, iy, ix, wy, wx);
    const int left = Blend(s.At(iy, ix), s.At(iy, ix), wy);
    const int right = Blend(s.At(iy, ix + 1), s.At(iy, ix), wy);
    return Blend(left, right, wx);
}

// Walks the right strip row by row, carrying what one column leaves for the next.
class RightStrip {
  public:
    explicit RightStrip(const Plane& source) : s_(source) {}

    int Sample(int iy, int ix, int wy, int wx) {
        const int iy1 = s_.IsLastRow(iy) ? iy : iy + 1;
        int left;
        if (anyComputed_ && ix == previousIndex_ + 1) {
            left = previousRight_;
            previousRight_ = RightOfReused(iy, iy1, ix, wy);
        } else {
            left = Blend(s_.At(iy, ix), s_.At(iy1, ix), wy);
            previousRight_ = RightInFull(iy, iy1, ix, wy);
            fullIndex_ = ix;
            anyComputed_ = true;
        }
        previousIndex_ = ix;
        return Blend(left, previousRight_, wx);
    }

  private:
    int RightInFull(int iy, int iy1, int ix, int wy) const {
        const int ix1 = s_.IsLastColumn(ix) ? ix : ix + 1;
        const bool swapped = s_.IsLastRow(iy) && !s_.IsLastColumn(ix);
        return Blend(s_.At(iy, ix1), swapped ? s_.At(iy, ix) : s_.At(iy1, ix1), wy);
    }

    int RightOfReused(int iy, int iy1, int ix, int wy) const {
        if (s_.IsLastRow(iy) || s_.IsLastColumn(ix)) {
            return Blend(s_.At(iy, fullIndex_), s_.At(iy1, fullIndex_), wy);
        }
        return Blend(s_.At(iy, ix + 1), s_.At(iy1, ix + 1), wy);
    }

    const Plane& s_;
    int previousIndex_ = 0;
    int previousRight_ = 0;
    int fullIndex_ = 0;
    bool anyComputed_ = false;
};

}  // namespace

void OracleNearestPlanar(uint8_t* dst, const uint8_t* src, const FrameShape& shape,
                         const OracleMap& xMap, const OracleMap& yMap) {
    const Plane source{src, shape.srcWidth, std::abs(shape.srcHeight)};
    for (int y = 0; y < std::abs(shape.dstHeight); ++y) {
        uint8_t* row = DestinationRow(dst, shape, y);
        for (int x = 0; x < shape.dstWidth; ++x) {
            row[x] = static_cast<uint8_t>(source.At(yMap.indices[y], xMap.indices[x]));
        }
    }
}

void OracleBilinearPlanar(uint8_t* dst, const uint8_t* src, const FrameShape& shape,
                          const OracleMap& xMap, const OracleMap& yMap) {
    const Plane source{src, shape.srcWidth, std::abs(shape.srcHeight)};
    const int rows = std::abs(shape.dstHeight);
    const int mainWidth = MainBlockLength(xMap, shape.dstWidth, source.width - 1, 8);
    const int mainHeight = MainBlockLength(yMap, rows, source.height - 1, 2);

    RightStrip rightStrip(source);
    for (int y = 0; y < rows; ++y) {
        uint8_t* row = DestinationRow(dst, shape, y);
        const int iy = yMap.indices[y];
        const int wy = yMap.weights[y];
        for (int x = 0; x < shape.dstWidth; ++x) {
            const int ix = xMap.indices[x];
            const int wx = xMap.weights[x];
            const int value = x >= mainWidth    ? rightStrip.Sample(iy, ix, wy, wx)
                              : y >= mainHeight ? BottomStripSample(source, iy, ix, wy, wx)
                                                : MainBlockSample(source, iy, ix, wy, wx);
            row[x] = static_cast<uint8_t>(value);
        }
    }
}

}  // namespace tavo::test
