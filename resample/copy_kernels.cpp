// Copies of planes and of packed rows, each portable and in blocks of eight bytes.

#include "resample/copy_kernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "resample/row_ops/row_ops.h"

namespace tavo {
namespace {

struct RowShape {
    int32_t bytes;
    int32_t stride;
};

RowShape PlaneRow(int32_t width) { return {width, width}; }

RowShape PackedRow(int32_t width, int32_t bitsPerPixel) {
    const int32_t bytes = width * bitsPerPixel / 8;
    return {bytes, (bytes + 3) & ~3};
}

// Calls copyRow(dst, src) for every row, in the order of the destination's memory.
template <typename CopyRow>
int32_t CopyRows(uint8_t* dst, const uint8_t* src, int32_t height, int32_t stride,
                 CopyRow copyRow) {
    const int32_t rows = std::abs(height);
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t srcY = height < 0 ? rows - 1 - y : y;
        copyRow(dst + static_cast<ptrdiff_t>(y) * stride,
                src + static_cast<ptrdiff_t>(srcY) * stride);
    }
    return rows;
}

int32_t CopyPlainRows(uint8_t* dst, const uint8_t* src, int32_t height, RowShape row) {
    const RowOpsScope ops(KernelVariant::Portable);
    if (height > 0 && row.bytes == row.stride) {
        ops->CopyRow(dst, src, row.bytes * height);
        return height;
    }
    return CopyRows(dst, src, height, row.stride,
                    [&](uint8_t* to, const uint8_t* from) { ops->CopyRow(to, from, row.bytes); });
}

int32_t CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t height, RowShape row) {
    const RowOpsScope ops(KernelVariant::Mmx);
    const int32_t blocks = (row.bytes + 7) / 8;
    if (height > 0 && blocks * 8 == row.stride) {
        ops->CopyBlocks(dst, src, blocks * height);
        return height;
    }
    return CopyRows(dst, src, height, row.stride,
                    [&](uint8_t* to, const uint8_t* from) { ops->CopyBlocks(to, from, blocks); });
}

}  // namespace

TAVO_COPY_KERNEL(CopyPlane_Portable) {
    (void)bitsPerPixel;
    return CopyPlainRows(dst, src, height, PlaneRow(width));
}

TAVO_COPY_KERNEL(CopyPlane_MMX) {
    (void)bitsPerPixel;
    return CopyBlocks(dst, src, height, PlaneRow(width));
}

TAVO_COPY_KERNEL(CopyPacked_Portable) {
    return CopyPlainRows(dst, src, height, PackedRow(width, bitsPerPixel));
}

TAVO_COPY_KERNEL(CopyPacked_MMX) {
    return CopyBlocks(dst, src, height, PackedRow(width, bitsPerPixel));
}

void CopyBytes(uint8_t* dst, const uint8_t* src, size_t bytes) {
    const RowOpsScope ops(KernelVariant::Portable);
    constexpr size_t kMostAtOnce = 1 << 30;
    for (size_t done = 0; done < bytes;) {
        const size_t part = std::min(bytes - done, kMostAtOnce);
        ops->CopyRow(dst + done, src + done, static_cast<int32_t>(part));
        done += part;
    }
}

}  // namespace tavo
