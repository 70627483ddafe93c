// What the oracle reads and writes: a source picture, and a canvas that remembers for each byte of
// the destination what a kernel has to leave there. Knows nothing of the engine.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/kernel_oracle/axis_entries.h"

namespace tavo::test {

// Words8 has one byte a pixel and rows of whole words. No video has it, but copies take any depth.
enum class Format { Planar, Rgb24, Rgb565, Rgb555, Uyvy, Yuy2, Words8 };

inline int BytesPerPixel(Format format) {
    if (format == Format::Planar || format == Format::Words8) return 1;
    return format == Format::Rgb24 ? 3 : 2;
}

inline int StrideOf(Format format, int width) {
    const int bytes = BytesPerPixel(format) * width;
    if (format == Format::Planar) return bytes;
    return (bytes + 3) / 4 * 4;
}

// The entries of both axes, as far as the destination reaches.
struct Maps {
    AxisEntries x;
    AxisEntries y;
};

struct Source {
    Format format;
    int width;
    int height;
    std::vector<uint8_t> bytes;

    int At(int row, int byteInRow) const {
        return bytes[static_cast<size_t>(row) * StrideOf(format, width) + byteInRow];
    }
    bool IsLastColumn(int column) const { return column == width - 1; }
    bool IsLastRow(int row) const { return row == height - 1; }
};

class Canvas {
  public:
    // A negative height stores row 0 last.
    Canvas(Format format, int width, int height);

    Format PixelFormat() const { return format_; }
    int Width() const { return width_; }
    int Rows() const { return rows_; }
    int Stride() const { return stride_; }
    int RowStoredAt(int place) const { return bottomUp_ ? rows_ - 1 - place : place; }

    // The byte at an offset from the beginning of a row; offsets beyond the row spill into the
    // row that follows in memory, or behind the picture.
    void Put(int row, int offset, int value);

    // The same for a byte that may also stay as it was.
    void MayPut(int row, int offset, int value);

    // A byte of whatever value.
    void Free(int row, int offset);

    // Ends the canvas behind the last byte that has been put.
    void EndAfterLastByte();

    // The bytes that a kernel may touch at all.
    size_t Size() const { return values_.size(); }

    // The place of the first byte that is not as it should be, where untouched ones hold fill;
    // Size() when all are.
    size_t FirstDifference(const uint8_t* actual, uint8_t fill) const;

    uint8_t Expected(size_t place, uint8_t fill) const;
    bool IsExact(size_t place) const { return rules_[place] == Rule::Exact; }

  private:
    enum class Rule : uint8_t { Untouched, Exact, ExactOrUntouched, Anything };

    void Set(int row, int offset, int value, Rule rule);

    Format format_;
    int width_;
    int rows_;
    int stride_;
    bool bottomUp_;
    std::vector<uint8_t> values_;
    std::vector<Rule> rules_;
};

// The quotient rounded toward minus infinity.
inline int FloorDivide(int dividend, int divisor) {
    const int quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// a moved toward b by weight 256ths of the way, rounded toward minus infinity.
inline int Blend(int a, int b, int weight) { return a + FloorDivide((b - a) * weight, 256); }

// How many entries come before the edge of an axis: the last entry that does not name the last
// source sample, rounded down to a multiple of step; 0 when every entry names it.
int MainLength(const AxisEntries& entries, int count, int lastIndex, int step);

// Where the four samples of a blend lie. In the strips at the edges, what would lie outside is
// replaced by what is inside.
struct Corners {
    int row;
    int column;
    int right;
    int below;
    int rightBelow;  // the column in the row below
};

// Calls use(y, x, corners) for every pixel. The strips begin after the main block, which is a
// multiple of widthStep pixels wide and of two rows high.
template <typename Use>
void ForCorners(const Canvas& out, const Source& s, const Maps& maps, int widthStep, Use use) {
    const int mainWidth = MainLength(maps.x, out.Width(), s.width - 1, widthStep);
    const int mainHeight = MainLength(maps.y, out.Rows(), s.height - 1, 2);
    for (int y = 0; y < out.Rows(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            const int row = maps.y.indices[y];
            const int column = maps.x.indices[x];
            const bool inStrip = x >= mainWidth || y >= mainHeight;
            const int right = inStrip && s.IsLastColumn(column) ? column : column + 1;
            const bool lastRow = inStrip && s.IsLastRow(row);
            use(y, x,
                Corners{row, column, right, lastRow ? row : row + 1, lastRow ? column : right});
        }
    }
}

}  // namespace tavo::test
