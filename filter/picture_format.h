// The pixel formats that the filter handles, and what follows from one for a picture's memory.

#pragma once

#include "streams.h"

#include <cstdint>

namespace tavo {

enum class FormatGroup { Planar, Packed422, Rgb };

// The rows of the kernel table that serve a format.
struct FormatRows {
    int32_t copy;
    int32_t vertical;
    int32_t horizontal720To480;
    int32_t horizontal640To480;
    int32_t horizontal;
    int32_t both;
};

struct PictureFormat {
    GUID subtype;
    FormatGroup group;
    int32_t bitsPerPixel;      // what the kernels assume; a type may state more
    int32_t chromaShift;       // planar: the chroma planes are smaller by this power of two
    bool keepsHeightSign;      // the sign of an output height survives: bottom-up destination
    DWORD writtenCompression;  // biCompression of the types offered, 0 to leave it as it came
    const FormatRows* rows;
};

// Null for a subtype that the filter cannot scale.
const PictureFormat* FindPictureFormat(const GUID& subtype);

// The subtype that a PixelFormat setting asks for; null for AUTO and for codes that are none.
const GUID* SubtypeOfSetting(int pixelFormatCode);

// How the rows of planar frames lie: see picture_planes.cpp.
enum class PlaneLayout { Tight, Padded };

// The shape of a picture as a media type states it. The height keeps its sign.
struct Picture {
    const PictureFormat* format = nullptr;
    int32_t width = 0;
    int32_t height = 0;
    int32_t bitsPerPixel = 0;
    PlaneLayout layout = PlaneLayout::Tight;
};

// The bitmap header inside a format block of FORMAT_VideoInfo or FORMAT_VideoInfo2, with the fields
// around it that a new size changes. All null for any other block, and for one that is absent or
// shorter than its header.
struct VideoHeader {
    BITMAPINFOHEADER* bitmap = nullptr;
    RECT* source = nullptr;
    RECT* target = nullptr;
    REFERENCE_TIME* averageTimePerFrame = nullptr;

    explicit operator bool() const { return bitmap != nullptr; }
};
VideoHeader LocateVideoHeader(const AM_MEDIA_TYPE& type);

// The picture that a type describes; no format, or no size, when the type describes none. Less bits
// per pixel than the format has count as the format's own. Frames are laid out tightly.
Picture ReadPicture(const AM_MEDIA_TYPE& type);

// The same for a source, whose planar frames may be laid out in padded rows.
Picture ReadSourcePicture(const AM_MEDIA_TYPE& type);

// The layout of a planar source that gives its frames this many bytes: padded if that is what
// padded rows take and tight ones do not.
PlaneLayout LayoutOfFrameBytes(const Picture& picture, int64_t bytes);

// Whether a type leaves it to its first frame which layout the planes have: planar, of no stated
// size.
bool LeavesLayoutOpen(const AM_MEDIA_TYPE& type);

// Bytes from row to row as the type states it.
int64_t RowStride(FormatGroup group, int64_t width, int32_t bitsPerPixel);

// Bytes of a whole frame as the type states it: what allocators are asked for.
int64_t FrameBytes(const Picture& picture);

// Bytes that the kernels read or write of a picture, row ends and chroma planes included. Never
// more than FrameBytes of a usable picture, unless its rows are padded.
int64_t KernelBytes(const Picture& picture);

// Whether frames of this picture can be read or written at all: known format, positive width, no
// empty height, enough bits per pixel, and a frame that 32-bit sizes can express.
bool IsUsablePicture(const Picture& picture);

// Whether the filter can scale to this picture: usable, and packed 4:2:2 of an even width.
bool IsUsableOutput(const Picture& picture);

}  // namespace tavo
