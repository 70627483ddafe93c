// Axis maps and pixel formulas, written for reading and not for speed.
#include "tests/picture/support/expected_pixels.h"

#include <algorithm>
#include <cmath>

namespace tavo_test {
namespace {

struct Axis {
    std::vector<int> index;
    std::vector<int> weight;

    Axis(int from, int to) {
        const double ratio = static_cast<double>(from) / to;
        const double offset = ratio >= 1.0 ? 0.25 : 0.0;
        for (int i = 0; i < to; ++i) {
            const double x = i * ratio;
            index.push_back(static_cast<int>(x));
            weight.push_back(static_cast<int>(std::min((x - std::floor(x) + offset) * 256, 255.0)));
        }
    }
};

int Blend(int a, int b, int weight) { return a + (((b - a) * weight) >> 8); }

// One plane of a source and the matching one of a destination.
struct PlanePair {
    const uint8_t* source;
    Plane from;
    Plane to;
    bool bottomUp;

    int At(int x, int y) const { return source[static_cast<int64_t>(y) * from.width + x]; }
    int64_t Target(int x, int y) const {
        const int row = bottomUp ? to.height - 1 - y : y;
        return to.offset + static_cast<int64_t>(row) * to.width + x;
    }
};

void TakeNearest(const PlanePair& plane, const Axis& columns, const Axis& rows, Expected& result) {
    for (int y = 0; y < plane.to.height; ++y) {
        for (int x = 0; x < plane.to.width; ++x) {
            const int fromX = columns.index[x];
            const int fromY = rows.index[y];
            const bool inside = fromX < plane.from.width && fromY < plane.from.height;
            if (inside) result.Set(plane.Target(x, y), plane.At(fromX, fromY));
        }
    }
}

// The last entry that does not name the last sample, rounded down: what lies before it is interior.
int InteriorOf(const std::vector<int>& index, int count, int sourceCount, int step) {
    int last = count - 1;
    while (last >= 0 && index[last] >= sourceCount - 1) --last;
    return last < 0 ? 0 : last / step * step;
}

void BlendInterior(const PlanePair& plane, const Axis& columns, const Axis& rows,
                   Expected& result) {
    const int width = InteriorOf(columns.index, plane.to.width, plane.from.width, 8);
    const int height = InteriorOf(rows.index, plane.to.height, plane.from.height, 2);
    for (int y = 0; y < height; ++y) {
        const int iy = rows.index[y];
        for (int x = 0; x < width; ++x) {
            const int ix = columns.index[x];
            const int left = Blend(plane.At(ix, iy), plane.At(ix, iy + 1), rows.weight[y]);
            const int right = Blend(plane.At(ix + 1, iy), plane.At(ix + 1, iy + 1), rows.weight[y]);
            result.Set(plane.Target(x, y), Blend(left, right, columns.weight[x]));
        }
    }
}

// Byte places in a packed pair of pixels.
struct PairLayout {
    int luma;
    int chroma;
    explicit PairLayout(const PixelFormat& format)
        : luma(std::string(format.name) == "UYVY" ? 1 : 0), chroma(1 - luma) {}
};

void TakePackedRow(const PixelFormat& format, const uint8_t* row, const Axis& columns, int64_t at,
                   Expected& result) {
    const PairLayout pair(format);
    for (size_t x = 0; x + 1 < columns.index.size(); x += 2) {
        const int first = columns.index[x];
        const int second = columns.index[x + 1];
        const auto pairAt = at + static_cast<int64_t>(x) * 2;
        result.Set(pairAt + pair.luma, row[first * 2 + pair.luma]);
        result.Set(pairAt + pair.luma + 2, row[second * 2 + pair.luma]);
        for (const int chroma : {pair.chroma, pair.chroma + 2}) {
            const int sum = row[first / 2 * 4 + chroma] + row[second / 2 * 4 + chroma];
            result.Set(pairAt + chroma, sum >> 1);
        }
    }
}

void TakePixelRow(int pixelBytes, const uint8_t* row, const Axis& columns, int64_t at,
                  Expected& result) {
    for (size_t x = 0; x < columns.index.size(); ++x) {
        for (int i = 0; i < pixelBytes; ++i) {
            result.Set(at + static_cast<int64_t>(x) * pixelBytes + i,
                       row[columns.index[x] * pixelBytes + i]);
        }
    }
}

template <typename Fill>
Expected ForEachPlane(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                      Size to, bool bottomUp, Fill fill) {
    const Axis columns(from.width, to.width);
    const Axis rows(from.height, to.height);
    Expected result(RuleFrameBytes(format, to.width, to.height));
    for (int i = 0; i < 3; ++i) {
        const Plane plane = PlaneOf(format, i, from.width, from.height);
        fill(PlanePair{source.data() + plane.offset, plane, PlaneOf(format, i, to.width, to.height),
                       bottomUp},
             columns, rows, result);
    }
    return result;
}

}  // namespace

Expected NearestPlanar(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                       Size to, bool bottomUp) {
    return ForEachPlane(format, source, from, to, bottomUp, TakeNearest);
}

Expected NearestFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                      Size to) {
    if (format.layout == Layout::kPlanar) return NearestPlanar(format, source, from, to);
    const Axis columns(from.width, to.width);
    const Axis rows(from.height, to.height);
    Expected result(RuleFrameBytes(format, to.width, to.height));
    for (int y = 0; y < to.height; ++y) {
        const uint8_t* const row =
            source.data() + RuleStride(format, from.width) * rows.index[static_cast<size_t>(y)];
        const int64_t at = RuleStride(format, to.width) * y;
        if (format.layout == Layout::kPacked) {
            TakePackedRow(format, row, columns, at, result);
        } else {
            TakePixelRow(format.bits / 8, row, columns, at, result);
        }
    }
    return result;
}

Expected BilinearRgb24Interior(const std::vector<uint8_t>& source, Size from, Size to) {
    const PixelFormat& format = Format("RGB24");
    const Axis columns(from.width, to.width);
    const Axis rows(from.height, to.height);
    Expected result(RuleFrameBytes(format, to.width, to.height));
    const int width = InteriorOf(columns.index, to.width, from.width, 8);
    const int height = InteriorOf(rows.index, to.height, from.height, 2);
    for (int y = 0; y < height; ++y) {
        const uint8_t* const upper = source.data() + RuleStride(format, from.width) * rows.index[y];
        const uint8_t* const lower = upper + RuleStride(format, from.width);
        for (int i = 0; i < width * 3; ++i) {
            const int left = columns.index[i / 3] * 3 + i % 3;
            const int right = left + 3;
            result.Set(
                RuleStride(format, to.width) * y + i,
                Blend(Blend(upper[left], lower[left], rows.weight[y]),
                      Blend(upper[right], lower[right], rows.weight[y]), columns.weight[i / 3]));
        }
    }
    return result;
}

Expected BilinearPlanarInterior(const PixelFormat& format, const std::vector<uint8_t>& source,
                                Size from, Size to, bool bottomUp) {
    return ForEachPlane(format, source, from, to, bottomUp, BlendInterior);
}

Expected CopiedFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size size,
                     bool bottomUp) {
    if (format.layout == Layout::kPlanar)
        return NearestPlanar(format, source, size, size, bottomUp);
    Expected result(RuleFrameBytes(format, size.width, size.height));
    const int64_t stride = RuleStride(format, size.width);
    for (int y = 0; y < size.height; ++y) {
        const int64_t to = stride * (bottomUp ? size.height - 1 - y : y);
        for (int64_t i = 0; i < static_cast<int64_t>(size.width) * format.bits / 8; ++i)
            result.Set(to + i, source[static_cast<size_t>(stride * y + i)]);
    }
    return result;
}

testing::AssertionResult Matches(const Expected& expected, const std::vector<uint8_t>& bytes) {
    if (bytes.size() < expected.bytes.size()) {
        return testing::AssertionFailure()
               << bytes.size() << " bytes instead of " << expected.bytes.size();
    }
    size_t settled = 0;
    for (size_t i = 0; i < expected.bytes.size(); ++i) {
        if (!expected.settled[i]) continue;
        ++settled;
        if (expected.bytes[i] == bytes[i]) continue;
        return testing::AssertionFailure()
               << "byte " << i << " is " << int{bytes[i]} << ", not " << int{expected.bytes[i]};
    }
    if (settled == 0) return testing::AssertionFailure() << "nothing to compare";
    return testing::AssertionSuccess();
}

}  // namespace tavo_test
