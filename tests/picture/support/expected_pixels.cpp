// Frames put together from what the oracle says of their planes.
#include "tests/picture/support/expected_pixels.h"

#include <algorithm>
#include <string>

#include "tests/kernel_oracle/kernel_oracle.h"

namespace tavo_test {
namespace {

namespace oracle = tavo::test;

// What a canvas settles, its rows laid into a frame at the given place and stride. Calls
// isOpen(x, y) with bytes and rows of the canvas, as they lie in memory, to leave some out.
template <typename IsOpen>
void Add(const oracle::Canvas& canvas, int64_t at, int64_t stride, Expected& result,
         IsOpen isOpen) {
    for (size_t place = 0; place < canvas.Size(); ++place) {
        const int x = static_cast<int>(place) % canvas.Stride();
        const int y = static_cast<int>(place) / canvas.Stride();
        if (canvas.IsExact(place) && !isOpen(x, y)) {
            result.Set(at + y * stride + x, canvas.Expected(place, 0));
        }
    }
}

constexpr auto kAllSettled = [](int, int) { return false; };

// The part of a map of the whole picture that serves one plane of it.
struct PlaneAxis {
    oracle::AxisEntries entries;  // bounded to the plane
    std::vector<bool> outside;    // which of them were not inside
    bool allInside;

    PlaneAxis(int from, int to, int planeFrom, int planeTo)
        : entries(oracle::FirstEntries(oracle::MakeAxisEntries(from, to), planeTo)) {
        for (int32_t& index : entries.indices) {
            outside.push_back(index >= planeFrom);
            index = std::min(index, planeFrom - 1);
        }
        allInside = std::find(outside.begin(), outside.end(), true) == outside.end();
    }
};

struct PlanePair {
    Plane from;
    Plane to;
    PlaneAxis columns;
    PlaneAxis rows;
    bool bottomUp;

    PlanePair(const PixelFormat& format, int plane, Size source, Size target, bool turned)
        : from(PlaneOf(format, plane, source.width, source.height)),
          to(PlaneOf(format, plane, target.width, target.height)),
          columns(source.width, target.width, from.width, to.width),
          rows(source.height, target.height, from.height, to.height),
          bottomUp(turned) {}

    oracle::Canvas Scale(oracle::Oracle scale, const std::vector<uint8_t>& frame) const {
        const auto first = frame.begin() + static_cast<ptrdiff_t>(from.offset);
        const oracle::Source source = {oracle::Format::Planar,
                                       from.width,
                                       from.height,
                                       {first, first + from.width * from.height}};
        oracle::Canvas canvas(oracle::Format::Planar, to.width, bottomUp ? -to.height : to.height);
        scale(canvas, source, {columns.entries, rows.entries});
        return canvas;
    }
    int RowAt(int stored) const { return bottomUp ? to.height - 1 - stored : stored; }
};

template <typename IsOpen>
Expected ScaledPlanes(oracle::Oracle scale, const PixelFormat& format,
                      const std::vector<uint8_t>& source, Size from, Size to, bool bottomUp,
                      IsOpen isOpen) {
    Expected result(RuleFrameBytes(format, to.width, to.height));
    for (int i = 0; i < 3; ++i) {
        const PlanePair plane(format, i, from, to, bottomUp);
        if (plane.from.width == 0 || plane.from.height == 0) continue;
        Add(plane.Scale(scale, source), plane.to.offset, plane.to.width, result,
            [&](int x, int stored) { return isOpen(plane, x, plane.RowAt(stored)); });
    }
    return result;
}

// Columns or rows that no strip reaches.
int MainLength(const PlaneAxis& axis, int to, int from, int step) {
    return oracle::MainLength(axis.entries, to, from - 1, step);
}

struct PixelOracle {
    oracle::Format format;
    oracle::Oracle nearest;
};
PixelOracle OracleOf(const PixelFormat& format) {
    if (format.layout == Layout::kPacked) {
        const bool lumaSecond = std::string(format.name) == "UYVY";
        return {lumaSecond ? oracle::Format::Uyvy : oracle::Format::Yuy2, oracle::NearestPacked};
    }
    if (format.bits == 24) return {oracle::Format::Rgb24, oracle::NearestRgb24};
    return {std::string(format.name) == "RGB555" ? oracle::Format::Rgb555 : oracle::Format::Rgb565,
            oracle::NearestRgb16};
}

Expected ScaledPixels(oracle::Oracle scale, const PixelFormat& format,
                      const std::vector<uint8_t>& source, Size from, Size to) {
    const oracle::Format layout = OracleOf(format).format;
    // A last pixel that has no partner is left open.
    const int width = format.layout == Layout::kPacked ? to.width / 2 * 2 : to.width;
    oracle::Canvas canvas(layout, width, to.height);
    const oracle::AxisEntries columns = oracle::MakeAxisEntries(from.width, to.width);
    const oracle::AxisEntries rows = oracle::MakeAxisEntries(from.height, to.height);
    scale(canvas, {layout, from.width, from.height, source}, {columns, rows});
    Expected result(RuleFrameBytes(format, to.width, to.height));
    Add(canvas, 0, RuleStride(format, to.width), result, kAllSettled);
    return result;
}

}  // namespace

Expected NearestPlanar(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                       Size to, bool bottomUp) {
    return ScaledPlanes(oracle::NearestPlanar, format, source, from, to, bottomUp,
                        [](const PlanePair& plane, int x, int y) {
                            return plane.columns.outside[x] || plane.rows.outside[y];
                        });
}

Expected BilinearPlanar(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                        Size to, bool bottomUp) {
    return ScaledPlanes(
        oracle::BilinearPlanar, format, source, from, to, bottomUp,
        [](const PlanePair& plane, int x, int y) {
            if (plane.columns.allInside && plane.rows.allInside) return false;
            return x >= MainLength(plane.columns, plane.to.width, plane.from.width, 8) ||
                   y >= MainLength(plane.rows, plane.to.height, plane.from.height, 2);
        });
}

Expected NearestFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                      Size to) {
    if (format.layout == Layout::kPlanar) return NearestPlanar(format, source, from, to);
    return ScaledPixels(OracleOf(format).nearest, format, source, from, to);
}

Expected BilinearRgb24(const std::vector<uint8_t>& source, Size from, Size to) {
    return ScaledPixels(oracle::BilinearRgb24, Format("RGB24"), source, from, to);
}

Expected CopiedFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size size,
                     bool bottomUp) {
    if (format.layout == Layout::kPlanar)
        return NearestPlanar(format, source, size, size, bottomUp);
    const oracle::Format layout = OracleOf(format).format;
    oracle::Canvas canvas(layout, size.width, bottomUp ? -size.height : size.height);
    oracle::CopyWords(canvas, {layout, size.width, size.height, source}, {});
    Expected result(RuleFrameBytes(format, size.width, size.height));
    Add(canvas, 0, canvas.Stride(), result, kAllSettled);
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
