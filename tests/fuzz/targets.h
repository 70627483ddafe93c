// The fuzz targets. Each takes any bytes, its file says what they mean, and returns when the code
// under test has kept its promises; else it aborts. Targets are deterministic.
//
// libfuzzer_entry.cpp makes a program of each for libFuzzer, replay_test.cpp one test of all.
#pragma once

#include <cstdint>
#include <span>

namespace tavo_test {

using FuzzBytes = std::span<const uint8_t>;

void FuzzAviReader(FuzzBytes bytes);
void FuzzAxisMap(FuzzBytes bytes);
void FuzzConversion(FuzzBytes bytes);
void FuzzMediaProbe(FuzzBytes bytes);
void FuzzMediaType(FuzzBytes bytes);
void FuzzOptions(FuzzBytes bytes);
void FuzzRegulator(FuzzBytes bytes);

}  // namespace tavo_test
