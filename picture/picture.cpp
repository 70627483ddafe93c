// The arithmetic of frame sizes, without overflow for any size that a media type can state.

#include "picture/picture.h"

#include <cstdlib>
#include <limits>

#include "picture/planes.h"

namespace tavo {
namespace {

// Frames stay well below what a signed 32-bit size can hold: buffers get some slack on top.
constexpr int64_t kMaxFrameBytes = std::numeric_limits<int32_t>::max() - 4096;

int64_t Magnitude(int32_t value) { return std::abs(static_cast<int64_t>(value)); }

int64_t RowPixels(const Picture& picture) {
    return IsPitched(picture) ? picture.pitch : picture.width;
}

}  // namespace

PlaneLayout LayoutOfFrameBytes(const Picture& picture, int64_t bytes) {
    const bool isPlanar = picture.format && picture.format->group == FormatGroup::Planar;
    if (!isPlanar || !IsUsablePicture(picture)) return PlaneLayout::Tight;
    const bool isPadded = bytes <= kMaxFrameBytes && bytes == PaddedFrameBytes(picture) &&
                          bytes != FrameBytes(picture);
    return isPadded ? PlaneLayout::Padded : PlaneLayout::Tight;
}

int64_t RowStride(FormatGroup group, int64_t width, int32_t bitsPerPixel) {
    const int64_t bytes = width * bitsPerPixel / 8;
    return group == FormatGroup::Planar ? bytes : (bytes + 3) & ~int64_t{3};
}

int64_t RowPitch(const Picture& picture) {
    const PictureFormat& format = *picture.format;
    const bool isPlanar = format.group == FormatGroup::Planar;
    return RowStride(format.group, RowPixels(picture), isPlanar ? 8 : format.bitsPerPixel);
}

int64_t FrameBytes(const Picture& picture) {
    const int64_t height = Magnitude(picture.height);
    if (picture.format->group == FormatGroup::Planar) {
        return picture.bitsPerPixel * RowPixels(picture) * height / 8;
    }
    return RowStride(picture.format->group, RowPixels(picture), picture.bitsPerPixel) * height;
}

int64_t KernelBytes(const Picture& picture) {
    const PictureFormat& format = *picture.format;
    if (format.group == FormatGroup::Planar) return PlanesOf(picture).bytes;
    const int64_t pitch = RowPitch(picture);
    if (!IsPitched(picture)) return pitch * Magnitude(picture.height);
    return pitch * (Magnitude(picture.height) - 1) +
           int64_t{picture.width} * format.bitsPerPixel / 8;
}

bool IsUsablePicture(const Picture& picture) {
    if (!picture.format || picture.bitsPerPixel < picture.format->bitsPerPixel) return false;
    if (picture.width < 1 || picture.height == 0) return false;
    // The kernels count the bits of a row in 32-bit integers.
    constexpr int64_t kMaxRowBits = std::numeric_limits<int32_t>::max();
    if (RowPixels(picture) * picture.format->bitsPerPixel > kMaxRowBits) return false;
    // Three factors below 2^31, 2^31 and 2^16 could overflow even 64 bits.
    if (RowPixels(picture) * Magnitude(picture.height) > kMaxFrameBytes) return false;
    return FrameBytes(picture) <= kMaxFrameBytes && KernelBytes(picture) <= kMaxFrameBytes;
}

bool IsUsableOutput(const Picture& picture) {
    if (!IsUsablePicture(picture)) return false;
    return picture.format->group != FormatGroup::Packed422 || picture.width % 2 == 0;
}

}  // namespace tavo
