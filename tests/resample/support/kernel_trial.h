// Runs planar kernels on one picture and its maps, everything between guard pages, and compares
// what they write with the oracle.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "resample/scale_kernel.h"
#include "tests/kernel_oracle/kernel_oracle.h"
#include "tests/resample/support/kernel_caller.h"
#include "tests/resample/support/test_data.h"

namespace tavo::test {

// The sizes as a kernel is given them; heights may be negative.
struct FrameShape {
    int32_t dstWidth;
    int32_t dstHeight;
    int32_t srcWidth;
    int32_t srcHeight;
};

class KernelTrial {
  public:
    // With the maps that the sizes call for.
    KernelTrial(const FrameShape& shape, Pattern pattern, uint64_t seed);

    // With given maps, of which a kernel reads as many entries as the destination has.
    KernelTrial(const FrameShape& shape, AxisEntries xMap, AxisEntries yMap,
                std::vector<uint8_t> source);

    Expectation Expect(Oracle oracle) const;

    // Calls the kernel with every buffer and map at the chosen guard. Fails unless the destination
    // then holds exactly these bytes, nothing else changed, the result is the number of rows and
    // the x87 registers are left empty.
    testing::AssertionResult Run(ScaleKernel kernel, const Expectation& expected,
                                 BufferGuard guard) const;

    // Run against the oracle at both guards.
    testing::AssertionResult Matches(ScaleKernel kernel, Oracle oracle) const;

    // What the kernel writes.
    std::vector<uint8_t> Output(ScaleKernel kernel) const;

    std::string Describe() const;

  private:
    FrameShape shape_;
    Maps maps_;
    Source source_;
    std::string dataName_;
};

}  // namespace tavo::test
