// What fuzz targets are made with: values taken from bytes, and promises that must be kept.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "tests/fuzz/targets.h"

namespace tavo_test {

inline void Require(bool kept, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (kept) return;
    std::fprintf(stderr, "a promise is broken: %s:%d\n", file, line);
    std::abort();
}

// Values from the front of the bytes, in little-endian order; zeros where they end.
class FuzzInput {
  public:
    explicit FuzzInput(FuzzBytes bytes) : bytes_(bytes) {}

    bool IsEmpty() const { return bytes_.empty(); }

    template <typename T>
    T Take() {
        static_assert(std::is_arithmetic_v<T>);
        T value{};
        const size_t size = std::min(bytes_.size(), sizeof value);
        std::memcpy(&value, bytes_.data(), size);
        bytes_ = bytes_.subspan(size);
        return value;
    }

    // From 0 to end - 1. Takes one byte.
    int Below(int end) { return Take<uint8_t>() % end; }

    FuzzBytes TakeBytes(size_t most) {
        const FuzzBytes taken = bytes_.first(std::min(most, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return taken;
    }

  private:
    FuzzBytes bytes_;
};

}  // namespace tavo_test
