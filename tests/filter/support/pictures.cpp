// Media types of the test pictures.
#include "tests/filter/support/pictures.h"

namespace tavo_test {

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

}  // namespace tavo_test
