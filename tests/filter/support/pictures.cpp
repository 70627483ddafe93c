// Media types of the test pictures.
#include "tests/filter/support/pictures.h"

#include <algorithm>

namespace tavo_test {
namespace {

int Up(int value, int step) { return (value + step - 1) / step * step; }

}  // namespace

GUID SubtypeOf(const PixelFormat& format) {
    if (format.bits == 32) return MEDIASUBTYPE_RGB32;  // none of the filter's
    if (format.layout != Layout::kRgb) {
        return {format.compression, 0, 16, {0x80, 0, 0, 0xaa, 0, 0x38, 0x9b, 0x71}};
    }
    if (format.bits == 24) return MEDIASUBTYPE_RGB24;
    return format.compression == BI_RGB ? MEDIASUBTYPE_RGB555 : MEDIASUBTYPE_RGB565;
}

VideoSpec SpecOf(const PixelFormat& format, int width, int height, const GUID& block) {
    VideoSpec spec;
    spec.subtype = SubtypeOf(format);
    spec.formattype = block;
    spec.width = width;
    spec.height = height;
    spec.bitCount = static_cast<WORD>(format.bits);
    spec.sizeImage = static_cast<DWORD>(RuleFrameBytes(format, width, height));
    return spec;
}

MediaType TypeOf(const PixelFormat& format, int width, int height, const GUID& block) {
    return MakeVideoType(SpecOf(format, width, height, block));
}

// Luma rows of 4:2:0 come in pairs, those of YVU9 do not.
PaddedPlane PaddedPlaneOf(const PixelFormat& format, int plane, Size size) {
    const bool pairs = format.chromaShift == 1;
    if (plane == 0) return {Up(size.width, 4), pairs ? Up(size.height, 2) : size.height};
    const int part = pairs ? 2 : 4;
    return {Up(Up(size.width, part) / part, 4), Up(size.height, part) / part};
}

long PaddedBytes(const PixelFormat& format, Size size) {
    long bytes = 0;
    for (int plane = 0; plane < 3; ++plane) {
        const PaddedPlane padded = PaddedPlaneOf(format, plane, size);
        bytes += long{padded.pitch} * padded.rows;
    }
    return bytes;
}

MediaType PaddedTypeOf(const PixelFormat& format, Size size, int heightSign, const GUID& block) {
    VideoSpec spec = SpecOf(format, size.width, size.height * heightSign, block);
    spec.sizeImage = static_cast<DWORD>(PaddedBytes(format, size));
    return MakeVideoType(spec);
}

std::vector<BYTE> PadRows(const PixelFormat& format, Size size, const std::vector<BYTE>& tight) {
    std::vector<BYTE> frame(static_cast<size_t>(PaddedBytes(format, size)), BYTE{0xEE});
    size_t at = 0;
    for (int i = 0; i < 3; ++i) {
        const Plane plane = PlaneOf(format, i, size.width, size.height);
        const PaddedPlane padded = PaddedPlaneOf(format, i, size);
        for (int row = 0; row < plane.height; ++row) {
            std::copy_n(tight.begin() + plane.offset + int64_t{row} * plane.width, plane.width,
                        frame.begin() + static_cast<ptrdiff_t>(at) + row * padded.pitch);
        }
        at += static_cast<size_t>(padded.pitch) * padded.rows;
    }
    return frame;
}

}  // namespace tavo_test
