// The edges of a bilinear planar picture. In a strip of columns on the right, blended values are
// handed on from column to column, which shows at the last source column and row.

#include "resample/planar/planar_edges.h"

#include <algorithm>

#include "resample/edges.h"

namespace tavo {
namespace {

// The strip begins at the last column that has a next one, rounded down to a multiple of this.
constexpr int32_t kStripStep = 8;

uint8_t Blend(uint8_t a, uint8_t b, int32_t weight) {
    return static_cast<uint8_t>(BlendSamples<Rounding::Down>(a, b, weight));
}

// Walks the source columns of the strip. A column whose index is one more than its predecessor's
// reuses that one's right-hand value as its left-hand one. All others are computed in full.
class StripWalk {
  public:
    // Whether `column` reuses a value.
    bool Next(int32_t column) {
        const bool reuses = hasPrevious_ && column == previous_ + 1;
        if (!reuses) computedInFull_ = column;
        previous_ = column;
        hasPrevious_ = true;
        return reuses;
    }

    // The column that was computed in full last.
    int32_t ComputedInFull() const { return computedInFull_; }

  private:
    bool hasPrevious_ = false;  // the first column of a row reuses nothing
    int32_t previous_ = 0;
    int32_t computedInFull_ = 0;
};

// Where the strip begins.
int32_t StripOf(Interior interior) {
    const int32_t lastInner = std::max(interior.columns - 1, 0);
    return lastInner - lastInner % kStripStep;
}

// The strip at the last source row. A column whose left value is computed in full blends back to
// its own sample; one that reuses the column before as its left value blends toward the last one
// that was computed in full.
void BlendStripBottom(const Frame& frame, int32_t strip, int32_t firstRow) {
    const uint8_t* source = frame.SrcRow(frame.srcHeight - 1);
    const int32_t lastColumn = frame.srcWidth - 1;
    for (int32_t y = firstRow; y < frame.dstHeight; ++y) {
        uint8_t* row = frame.DstRow(y);
        StripWalk walk;
        uint8_t right = 0;
        for (int32_t x = strip; x < frame.dstWidth; ++x) {
            const int32_t column = frame.xMap->indices[x];
            uint8_t left = source[column];
            if (walk.Next(column)) {
                left = right;
                right = source[walk.ComputedInFull()];
            } else {
                const uint8_t next = source[std::min(column + 1, lastColumn)];
                right = Blend(next, source[column], frame.yMap->weights[y]);
            }
            row[x] = Blend(left, right, frame.xMap->weights[x]);
        }
    }
}

}  // namespace

// Deliberate: a column at the last source column that reuses a value blends toward the last column
// computed in full, which lies to its left.
void BlendPlaneRight(const Frame& frame, Interior interior, Rows rows) {
    const int32_t end = interior.columns;
    BlendLastColumns<PlanePixel>(frame, interior, rows);
    if (end == frame.dstWidth) return;
    StripWalk walk;
    for (int32_t x = StripOf(interior); x < end; ++x) walk.Next(frame.xMap->indices[x]);
    if (!walk.Next(frame.xMap->indices[end])) return;
    const int32_t lastColumn = frame.srcWidth - 1;
    for (int32_t y = rows.first; y < rows.end; ++y) {
        const uint8_t* upper = frame.SrcRow(frame.UpperRow(y));
        const uint8_t* lower = frame.SrcRow(frame.LowerRow(y));
        const int32_t weight = frame.yMap->weights[y];
        const int32_t back = walk.ComputedInFull();
        frame.DstRow(y)[end] =
            Blend(Blend(upper[lastColumn], lower[lastColumn], weight),
                  Blend(upper[back], lower[back], weight), frame.xMap->weights[end]);
    }
}

void BlendPlaneBottom(const Frame& frame, Interior interior) {
    const int32_t strip = StripOf(interior);
    BlendLastRows<PlanePixel>(frame, interior.rows, strip);
    BlendStripBottom(frame, strip, interior.rows);
}

}  // namespace tavo
