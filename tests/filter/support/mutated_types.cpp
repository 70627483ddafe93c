#include "tests/filter/support/mutated_types.h"

#include <algorithm>
#include <cmath>

namespace tavo_test {

LONG OddLong(std::mt19937& random, LONG usual) {
    constexpr LONG kOdd[] = {
        0,     1,     -1,         2,          3,       4,          5,
        7,     -7,    65535,      65536,      -65536,  0x7fffffff, LONG(0x80000000),
        46341, 92682, 0x40000000, 0x10000000, 1 << 20, 37,         719};
    return random() % 3 ? usual : kOdd[random() % (sizeof kOdd / sizeof *kOdd)];
}

MediaType MutatedType(std::mt19937& random, const PixelFormat& format) {
    const GUID blocks[] = {FORMAT_VideoInfo, FORMAT_VideoInfo2, FORMAT_None, GUID_NULL};
    VideoSpec spec = SpecOf(format, 4 + random() % 60, 4 + random() % 50,
                            blocks[random() % 8 < 6 ? random() % 2 : random() % 4]);
    spec.width = OddLong(random, spec.width);
    spec.height = OddLong(random, spec.height);
    if (random() % 8 == 0) spec.bitCount = static_cast<WORD>(random());
    if (random() % 8 == 0) spec.compression = random();
    if (random() % 4 == 0) spec.sizeImage = random();
    if (random() % 8 == 0) spec.formatBytes = random() % 160;
    if (random() % 16 == 0) spec.absentFormat = true;
    MediaType type = MakeVideoType(spec);
    if (type->pbFormat && type->cbFormat && random() % 4 == 0) {
        for (int i = 0; i < 4; ++i)
            type->pbFormat[random() % type->cbFormat] = static_cast<BYTE>(random());
    }
    return type;
}

bool IsSmall(const MediaType& type) {
    const BITMAPINFOHEADER* const bitmap = type.Bitmap();
    if (!bitmap) return false;
    // A mutated type may state no bits a pixel.
    const int bitsPerPixel = std::max<int>(bitmap->biBitCount, 32);
    return std::abs(double(bitmap->biWidth) * bitmap->biHeight * bitsPerPixel) < 32 << 20;
}

}  // namespace tavo_test
