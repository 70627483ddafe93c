// For tests with figures worked by hand: calls a kernel on a small picture, with every set of row
// operations in turn.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "resample/scale_kernel.h"
#include "tests/kernel_check/backends.h"
#include "tests/kernel_oracle/picture.h"

namespace tavo::test {

using Bytes = std::vector<uint8_t>;

// A test of this fixture is run once for each instruction set that this processor has.
class Figures : public testing::TestWithParam<Backend> {
  protected:
    void SetUp() override { Activate(GetParam()); }
};

struct NamedKernel {
    const char* name;
    ScaleKernel kernel;
};
#define NAMED(kernel) \
    NamedKernel { #kernel, kernel }

struct FormatKernel {
    Format format;
    NamedKernel kernel;
};

// What the bytes hold that a kernel leaves alone.
constexpr uint8_t kLeftAlone = 0xee;

// A picture with its padding, row by row.
struct Picture {
    Format format;
    int width;
    int height;
    Bytes bytes;

    int Stride() const { return StrideOf(format, width); }
    Bytes Row(int row) const;        // with its padding
    Bytes RowPixels(int row) const;  // without it
    int Word(int row, int column) const;
    Bytes Pixel(int row, int column) const;
};

// Rows of pixels given as bytes; what they lack to the stride is filled with a number.
Picture MakePicture(Format format, int width, const std::vector<Bytes>& rows);
Picture MakeWords(Format format, const std::vector<int>& row);
Picture RandomPicture(Format format, int width, int height, uint64_t seed);

struct Size {
    int width;
    int height;  // negative: bottom-up
};

// What a kernel makes of a picture with the maps that the sizes call for. The picture that is
// returned has the height of the size without its sign, and behind its last row the bytes that
// follow in memory. The source ends at an inaccessible page.
Picture Scale(ScaleKernel kernel, const Picture& source, Size size);

// The same with maps of one's own.
Picture ScaleWith(ScaleKernel kernel, const Picture& source, Size size, const AxisEntries& x,
                  const AxisEntries& y);

// With a map for the width only; rows are taken one by one.
Picture ScaleRowWith(ScaleKernel kernel, const Picture& source, const AxisEntries& x);

constexpr int kBytesBehind = 8;

// That a kernel writes the same rows from the bottom up when the height is negative. The height of
// the source stays.
void ExpectRowsInReverse(const NamedKernel& kernel, const Picture& source, int dstWidth);

// That a kernel of a fixed ratio does not write what the map of its sizes would give.
void ExpectNotAsMapped(ScaleKernel fixed, ScaleKernel mapped, const Picture& source, int dstWidth);

}  // namespace tavo::test
