// A double is a mantissa of 53 bits and a shift; quotient and product are rounded to nearest, ties
// to even. All other steps of the map are exact in double arithmetic and need no rounding: the
// fraction of x, a quarter added to it, and the multiplication by 256.

#include "tests/kernel_oracle/axis_entries.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace tavo::test {
namespace {

constexpr uint64_t kImplicitBit = uint64_t{1} << 52;

// mantissa / 2^shift
struct Binary {
    uint64_t mantissa;
    int shift;
};

Binary RoundedQuotient(uint64_t dividend, uint64_t divisor) {
    uint64_t quotient = dividend / divisor;
    uint64_t rest = dividend % divisor;
    int shift = 0;
    while (quotient < kImplicitBit) {
        rest *= 2;
        const bool bit = rest >= divisor;
        quotient = quotient * 2 + bit;
        if (bit) rest -= divisor;
        ++shift;
    }
    const bool up = rest * 2 > divisor || (rest * 2 == divisor && quotient % 2 == 1);
    return {quotient + up, shift};
}

// factor has up to 31 bits, so that the exact product has up to 84: high * 2^32 + low.
Binary RoundedProduct(uint64_t factor, Binary value) {
    const uint64_t lowPart = factor * (value.mantissa & 0xffffffffu);
    const uint64_t high = factor * (value.mantissa >> 32) + (lowPart >> 32);
    const uint64_t low = lowPart & 0xffffffffu;

    const int drop = static_cast<int>(std::bit_width(high)) - (53 - 32);
    if (drop <= 0) return {high << 32 | low, value.shift};

    const uint64_t kept = high << (32 - drop) | low >> drop;
    const uint64_t rest = low & ((uint64_t{1} << drop) - 1);
    const uint64_t half = uint64_t{1} << (drop - 1);
    const bool up = rest > half || (rest == half && kept % 2 == 1);
    return {kept + up, value.shift - drop};
}

// value * 256 without its fraction; value is below 2^31.
uint64_t In256ths(Binary value) {
    const int drop = value.shift - 8;
    return drop > 63 ? 0 : value.mantissa >> drop;
}

}  // namespace

AxisEntries MakeAxisEntries(int32_t srcLen, int32_t dstLen) {
    AxisEntries map;
    if (dstLen == 0) return map;
    const auto source = static_cast<uint64_t>(std::llabs(srcLen));
    const auto count = static_cast<uint64_t>(std::llabs(dstLen));
    const uint64_t quarter = source >= count ? 64 : 0;
    const Binary ratio = RoundedQuotient(source, count);

    map.srcSpan = static_cast<int32_t>(In256ths(RoundedProduct(count, ratio)) >> 8);
    map.indices.reserve(count);
    map.weights.reserve(count);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t position = In256ths(RoundedProduct(i, ratio));
        map.indices.push_back(static_cast<int32_t>(position / 256));
        map.weights.push_back(static_cast<int>(std::min<uint64_t>(position % 256 + quarter, 255)));
    }
    return map;
}

AxisEntries FirstEntries(AxisEntries whole, int32_t count) {
    whole.wholeCount = static_cast<int32_t>(whole.indices.size());
    whole.indices.resize(static_cast<size_t>(count));
    whole.weights.resize(static_cast<size_t>(count));
    return whole;
}

}  // namespace tavo::test
