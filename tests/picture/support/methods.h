// All scale methods.

#pragma once

#include <cstdint>

namespace tavo_test {

inline constexpr int32_t kMethods[] = {0, 1, 2, 5, 6, 7, 10, 11, 12};

}  // namespace tavo_test
