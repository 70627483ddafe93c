// Rows of packed 4:2:2 as groups of two pixels, and the kernels of fixed ratios by name.

#pragma once

#include <ostream>
#include <vector>

#include "resample/packed422/packed422_kernels.h"
#include "tests/kernel_check/figures.h"

namespace tavo::test {

struct PackedGroup {
    int even;  // luma
    int odd;
    int first;  // chroma
    int second;

    bool operator==(const PackedGroup&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const PackedGroup& group) {
    return out << "luma " << group.even << ' ' << group.odd << " chroma " << group.first << ' '
               << group.second;
}

inline Picture MakeRows(Format format, const std::vector<std::vector<PackedGroup>>& rows) {
    std::vector<Bytes> bytes;
    for (const auto& groups : rows) {
        Bytes row;
        for (const PackedGroup& g : groups) {
            const int yuy2[] = {g.even, g.first, g.odd, g.second};
            const int uyvy[] = {g.first, g.even, g.second, g.odd};
            for (int i = 0; i < 4; ++i) {
                row.push_back(static_cast<uint8_t>(format == Format::Uyvy ? uyvy[i] : yuy2[i]));
            }
        }
        bytes.push_back(row);
    }
    return MakePicture(format, static_cast<int>(rows[0].size()) * 2, bytes);
}

inline Picture MakeGroups(Format format, const std::vector<PackedGroup>& row) {
    return MakeRows(format, {row});
}

inline PackedGroup GroupAt(const Picture& picture, int row, int group) {
    const Bytes bytes = picture.Row(row);
    const size_t at = static_cast<size_t>(4 * group);
    if (picture.format == Format::Uyvy) {
        return {bytes[at + 1], bytes[at + 3], bytes[at], bytes[at + 2]};
    }
    return {bytes[at], bytes[at + 2], bytes[at + 1], bytes[at + 3]};
}

// Nearest neighbour first, then bilinear: portable, MMX, SSE.
constexpr NamedKernel kFixed720Yuy2[] = {
    NAMED(ScaleNearestH720To480_YUY2_Portable), NAMED(ScaleNearestH720To480_YUY2_MMX),
    NAMED(ScaleBilinearH720To480_YUY2_Portable), NAMED(ScaleBilinearH720To480_YUY2_MMX),
    NAMED(ScaleBilinearH720To480_YUY2_SSE)};
constexpr NamedKernel kFixed720Uyvy[] = {
    NAMED(ScaleNearestH720To480_UYVY_Portable), NAMED(ScaleNearestH720To480_UYVY_MMX),
    NAMED(ScaleBilinearH720To480_UYVY_Portable), NAMED(ScaleBilinearH720To480_UYVY_MMX),
    NAMED(ScaleBilinearH720To480_UYVY_SSE)};
constexpr NamedKernel kFixed640Yuy2[] = {
    NAMED(ScaleNearestH640To480_YUY2_Portable), NAMED(ScaleNearestH640To480_YUY2_MMX),
    NAMED(ScaleBilinearH640To480_YUY2_Portable), NAMED(ScaleBilinearH640To480_YUY2_MMX),
    NAMED(ScaleBilinearH640To480_YUY2_SSE)};
constexpr NamedKernel kFixed640Uyvy[] = {
    NAMED(ScaleNearestH640To480_UYVY_Portable), NAMED(ScaleNearestH640To480_UYVY_MMX),
    NAMED(ScaleBilinearH640To480_UYVY_Portable), NAMED(ScaleBilinearH640To480_UYVY_MMX),
    NAMED(ScaleBilinearH640To480_UYVY_SSE)};

}  // namespace tavo::test
