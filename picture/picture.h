// A picture's shape, and what follows from it for its memory.

#pragma once

#include <cstdint>

#include "picture/picture_format.h"

namespace tavo {

// How the rows of planar frames lie: see planes.cpp. A source is padded where the frame size that
// its type states, or the length of its first sample, is that of padded rows: see
// LayoutOfFrameBytes.
enum class PlaneLayout { Tight, Padded };

// The shape of a picture as a media type states it. The height keeps its sign.
struct Picture {
    const PictureFormat* format = nullptr;  // null for a format that the filter cannot scale
    int32_t width = 0;
    int32_t height = 0;
    int32_t bitsPerPixel = 0;
    PlaneLayout layout = PlaneLayout::Tight;
    // Pixels from row to row where that is more than the width, else 0. The rows then lie as in a
    // picture of this width, of which only the left part is written. Outputs only.
    int32_t pitch = 0;
};

inline bool IsPitched(const Picture& picture) { return picture.pitch > picture.width; }

// The layout of a planar source that gives its frames this many bytes: padded only if that is
// exactly the size of padded frames, and not of tight ones too. No other padding is recognised.
PlaneLayout LayoutOfFrameBytes(const Picture& picture, int64_t bytes);

// Bytes that a media type counts for one row. Of planar formats those of all planes together (1.5
// times the width for 4:2:0), so no distance between rows: planes.h has that.
int64_t RowStride(FormatGroup group, int64_t width, int32_t bitsPerPixel);

// The same of this picture, by the depth of its format: chroma planes have a part of it.
int64_t RowPitch(const Picture& picture);

// Bytes of a whole frame as a media type states it: what allocators are asked for.
int64_t FrameBytes(const Picture& picture);

// Bytes that the kernels read or write of a picture, row ends and chroma planes included. Never
// more than FrameBytes of a usable picture, unless its rows are padded. The last row at a pitch
// ends with its last pixel.
int64_t KernelBytes(const Picture& picture);

// Whether frames of this picture can be read or written at all: known format, positive width, no
// empty height, enough bits per pixel, and a frame that 32-bit sizes can express.
bool IsUsablePicture(const Picture& picture);

// Whether the filter can scale to this picture: usable, and packed 4:2:2 of an even width.
bool IsUsableOutput(const Picture& picture);

}  // namespace tavo
