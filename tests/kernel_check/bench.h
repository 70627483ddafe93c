// Measures the kernels.

#pragma once

#include <string>

namespace tavo::test {

// Every kernel with every instruction set, on a source of 1920x1080 or of the width that a fixed
// ratio is for. Prints ns per frame and MB (10^6 bytes) of destination per second. Returns an exit
// code.
int Bench(const std::string& filter);

}  // namespace tavo::test
