// What each kind of kernel has to write, one function for each set of bytes; kernels that must
// agree share one. Slow and plain, and apart from the engine in code, headers and tables.

#pragma once

#include "tests/kernel_oracle/picture.h"

namespace tavo::test {

// Fills the canvas as a kernel fills a destination of its size. A function without maps is for a
// fixed ratio. The formats that a function serves are those of its family.
using Oracle = void (*)(Canvas& out, const Source& source, const Maps& maps);

// planar.cpp
void NearestPlanar(Canvas& out, const Source& source, const Maps& maps);
void BilinearPlanar(Canvas& out, const Source& source, const Maps& maps);
void NearestHPlanar(Canvas& out, const Source& source, const Maps& maps);
void BilinearHPlanar(Canvas& out, const Source& source, const Maps& maps);
void Nearest640Planar(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640Planar(Canvas& out, const Source& source, const Maps& maps);
void Nearest720Planar(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Planar(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720PlanarUp(Canvas& out, const Source& source, const Maps& maps);

// rgb24.cpp
void NearestRgb24(Canvas& out, const Source& source, const Maps& maps);
void BilinearRgb24(Canvas& out, const Source& source, const Maps& maps);
void NearestHRgb24(Canvas& out, const Source& source, const Maps& maps);
void BilinearHRgb24(Canvas& out, const Source& source, const Maps& maps);
// The same where the first step of a row always writes a whole register.
void NearestHRgb24Forced(Canvas& out, const Source& source, const Maps& maps);
void BilinearHRgb24Forced(Canvas& out, const Source& source, const Maps& maps);
void Nearest640Rgb24(Canvas& out, const Source& source, const Maps& maps);
void Nearest640Rgb24Mixed(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640Rgb24(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640Rgb24Mmx(Canvas& out, const Source& source, const Maps& maps);
void Nearest720Rgb24(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Rgb24(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Rgb24Up(Canvas& out, const Source& source, const Maps& maps);

// rgb16.cpp
void NearestRgb16(Canvas& out, const Source& source, const Maps& maps);
void BilinearRgb16(Canvas& out, const Source& source, const Maps& maps);
void NearestHRgb16(Canvas& out, const Source& source, const Maps& maps);
void BilinearHRgb16(Canvas& out, const Source& source, const Maps& maps);
void Nearest640Rgb16(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640Rgb16(Canvas& out, const Source& source, const Maps& maps);
void Nearest720Rgb16(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Rgb16(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Rgb16Up(Canvas& out, const Source& source, const Maps& maps);

// packed422.cpp
void NearestPacked(Canvas& out, const Source& source, const Maps& maps);
void BilinearPacked(Canvas& out, const Source& source, const Maps& maps);
void BilinearPackedUp(Canvas& out, const Source& source, const Maps& maps);
void NearestHPacked(Canvas& out, const Source& source, const Maps& maps);
void BilinearHPacked(Canvas& out, const Source& source, const Maps& maps);
void BilinearHPackedUp(Canvas& out, const Source& source, const Maps& maps);

// packed422_fixed.cpp
void Nearest640Packed(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640Packed(Canvas& out, const Source& source, const Maps& maps);
void Bilinear640PackedDimmed(Canvas& out, const Source& source, const Maps& maps);
void Nearest720Packed(Canvas& out, const Source& source, const Maps& maps);
void Bilinear720Packed(Canvas& out, const Source& source, const Maps& maps);

// vertical.cpp
void NearestVertical(Canvas& out, const Source& source, const Maps& maps);
void BilinearVertical(Canvas& out, const Source& source, const Maps& maps);

// copies.cpp: rows of bytes, without their padding, in the order of memory; blocks of eight reach
// beyond the end of a row. The canvas ends with the last byte that is moved, and so may the source.
void CopyWords(Canvas& out, const Source& source, const Maps& maps);
void CopyBlocks(Canvas& out, const Source& source, const Maps& maps);

// The fields of a 16-bit pixel.
struct Fields {
    int blue;
    int green;
    int red;
};
Fields Unpack(Format format, int pixel);
int Pack(Format format, const Fields& fields);
Fields BlendFields(const Fields& a, const Fields& b, int weight);

}  // namespace tavo::test
