// Lengths of time in the platform's units of 100 ns.

#pragma once

#include <cstdint>

namespace tavo_test {

inline constexpr int64_t kMs = 10'000;
inline constexpr int64_t kHour = 3600 * 1000 * kMs;

}  // namespace tavo_test
