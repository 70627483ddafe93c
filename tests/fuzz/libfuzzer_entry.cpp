// Makes a libFuzzer program of the target that TAVO_FUZZ_TARGET names.

#include "tests/fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tavo_test::TAVO_FUZZ_TARGET({data, size});
    return 0;
}
