// The patterns.

#include "tests/resample/support/test_data.h"

namespace tavo::test {
namespace {

uint8_t ByteAt(Pattern pattern, int32_t column, int32_t row, Random& random) {
    const auto extreme = [](int32_t n) { return static_cast<uint8_t>(n % 2 ? 255 : 0); };
    switch (pattern) {
        case Pattern::Random: return random.NextByte();
        case Pattern::Zeros: return 0;
        case Pattern::Full: return 255;
        case Pattern::RandomExtremes: return extreme(random.NextByte());
        case Pattern::AlternateColumns: return extreme(column);
        case Pattern::AlternateRows: return extreme(row);
        case Pattern::Checkerboard: return extreme(column + row);
        case Pattern::RampAcross: return static_cast<uint8_t>(column * 7);
        case Pattern::RampDown: return static_cast<uint8_t>(255 - row * 5);
    }
    return 0;
}

}  // namespace

const char* NameOf(Pattern pattern) {
    switch (pattern) {
        case Pattern::Random: return "random";
        case Pattern::Zeros: return "zeros";
        case Pattern::Full: return "full";
        case Pattern::RandomExtremes: return "random extremes";
        case Pattern::AlternateColumns: return "alternate columns";
        case Pattern::AlternateRows: return "alternate rows";
        case Pattern::Checkerboard: return "checkerboard";
        case Pattern::RampAcross: return "ramp across";
        case Pattern::RampDown: return "ramp down";
    }
    return "?";
}

std::vector<uint8_t> MakeBytes(Pattern pattern, int32_t stride, int32_t rows, uint64_t seed) {
    Random random(seed);
    std::vector<uint8_t> bytes;
    bytes.reserve(static_cast<size_t>(stride) * static_cast<size_t>(rows));
    for (int32_t row = 0; row < rows; ++row) {
        for (int32_t column = 0; column < stride; ++column) {
            bytes.push_back(ByteAt(pattern, column, row, random));
        }
    }
    return bytes;
}

}  // namespace tavo::test
