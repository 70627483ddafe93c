// The one output type that the filter offers.

#pragma once

#include "streams.h"

#include "picture/picture.h"

// Width and height that change together.
struct OutputSize {
    int32_t width;
    int32_t height;
};

// What decides the offered type, together with the input type.
struct OutputWishes {
    tavo::Picture source;
    int32_t bitsPerPixel;          // of the type set last, of either direction
    OutputSize size;               // 0 for that of the source
    REFERENCE_TIME frameDuration;  // 0 to keep the input's
};

// Turns a copy of the input type into the output type. `size` is given the size that comes out; it
// stays for a format that the filter cannot scale. E_INVALIDARG for a type that is not scalable to
// that size, E_OUTOFMEMORY.
HRESULT BuildOutputType(const OutputWishes& wishes, CMediaType* type, OutputSize* size);

// Writes the duration of a frame into a type's header, unless it is 0.
void WriteFrameDuration(const CMediaType& type, REFERENCE_TIME duration);
