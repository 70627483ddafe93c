// The row ends and the mixed pixels of RGB24 at 640 to 480.

#include "resample/rgb24/rgb24_fixed.h"

#include "resample/fixed_ratio.h"

namespace tavo {
namespace {

constexpr int32_t kPixelBytes = 3;
constexpr PixelKind kRgb24 = &PixelOpsTable::rgb24;

}  // namespace

int32_t NearestRgb24FourToThreeMixed(const Frame& frame, KernelVariant variant) {
    Frame bytes = frame;
    bytes.dstWidth *= kPixelBytes;
    bytes.srcWidth *= kPixelBytes;
    bytes.bytesPerPixel = 1;
    return NearestFrameFixed(bytes, kFourToThreeMixedRgb24, &PixelOpsTable::plane, variant);
}

// Deliberate: each row also writes the byte after it, with the blue of the row's last source pixel.
// Where rows have no padding that is the first byte of the next row in memory, or the byte after
// the picture. This happens after all rows are done.
int32_t BlendRgb24FourToThreeSpilling(const Frame& frame, KernelVariant variant) {
    BlendFrameFixedCopyingLast(frame, kFourToThree, Rounding::Down, kRgb24, variant);
    for (int32_t y = 0; y < frame.dstHeight; ++y) {
        frame.DstRow(y)[frame.dstRowBytes] = frame.SrcRow(y)[(frame.srcWidth - 1) * kPixelBytes];
    }
    return frame.dstHeight;
}

// Deliberate: the last pixel but one of each row is blended with a sixteenth of its weight: it
// moves up by five or down by six at most.
int32_t BlendRgb24FourToThreeWithFaintEnd(const Frame& frame, KernelVariant variant) {
    BlendFrameFixedCopyingLast(frame, kFourToThree, Rounding::Down, kRgb24, variant);
    for (int32_t y = 0; y < frame.dstHeight; ++y) {
        uint8_t* dst = frame.DstRow(y) + (frame.dstWidth - 2) * kPixelBytes;
        const uint8_t* src = frame.SrcRow(y) + (frame.srcWidth - 3) * kPixelBytes;
        for (int32_t i = 0; i < kPixelBytes; ++i) {
            dst[i] = static_cast<uint8_t>(src[i] + (((src[i + kPixelBytes] - src[i]) * 85) >> 12));
        }
    }
    return frame.dstHeight;
}

}  // namespace tavo
