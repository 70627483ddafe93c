// Media types as broken or hostile sources make them.
#pragma once

#include <random>

#include "tests/filter/support/pictures.h"

namespace tavo_test {

// The usual value, or now and then one that overflows something.
LONG OddLong(std::mt19937& random, LONG usual);

MediaType MutatedType(std::mt19937& random, const PixelFormat& format);

// Small enough for the buffers of a test.
bool IsSmall(const MediaType& type);

}  // namespace tavo_test
