// Frames that the tests of the AVI sink send.

#pragma once

#include <cstddef>

#include "tests/support/media_types.h"

namespace tavo {

inline constexpr LONG kSide = 16;
inline constexpr size_t kFrameBytes = kSide * kSide * 2;

inline tavo_test::VideoSpec Yuy2() {
    return {.subtype = MEDIASUBTYPE_YUY2, .width = kSide, .height = kSide};
}

}  // namespace tavo
