// What a frame must look like after scaling, as the oracle of the kernels says.
//
//   const Expected want = NearestPlanar(format, source, {352, 288}, {176, 144});
//   EXPECT_TRUE(Matches(want, sample.bytes));
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "tests/picture/support/pixel_formats.h"

namespace tavo_test {

// Bytes of a frame, and which of them are settled: row padding, gaps between planes and pixels that
// a formula leaves open are not.
struct Expected {
    explicit Expected(int64_t size)
        : bytes(static_cast<size_t>(size)), settled(static_cast<size_t>(size)) {}
    void Set(int64_t at, int value) {
        bytes[static_cast<size_t>(at)] = static_cast<uint8_t>(value);
        settled[static_cast<size_t>(at)] = true;
    }

    std::vector<uint8_t> bytes;
    std::vector<bool> settled;
};

struct Size {
    int width;
    int height;
};

// Whole planes by nearest neighbour; chroma samples that the maps of the whole picture would take
// from outside their plane are left open. The sizes are magnitudes; bottomUp turns the destination.
Expected NearestPlanar(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                       Size to, bool bottomUp = false);

// The same by blending. Of a plane that the maps reach out of, only the part is settled that no
// edge is in reach of.
Expected BilinearPlanar(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                        Size to, bool bottomUp = false);

// Nearest neighbour for every format, where both axes change: pixels of the other formats as a
// whole, but the chroma of a packed pair as the mean of those of its two pixels.
Expected NearestFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size from,
                      Size to);

// RGB24 pixels by blending.
Expected BilinearRgb24(const std::vector<uint8_t>& source, Size from, Size to);

// A picture of unchanged size.
Expected CopiedFrame(const PixelFormat& format, const std::vector<uint8_t>& source, Size size,
                     bool bottomUp = false);

testing::AssertionResult Matches(const Expected& expected, const std::vector<uint8_t>& bytes);

}  // namespace tavo_test
