// Runs one kernel after another on the same picture and maps, everything between guard pages, and
// compares what they write with an oracle.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "resample/scale_kernel.h"
#include "tests/resample/oracle/axis_oracle.h"
#include "tests/resample/oracle/planar_oracle.h"
#include "tests/resample/support/picture_layout.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/guarded_buffer.h"

namespace tavo::test {

using ScaleOracle = void (*)(uint8_t* dst, const uint8_t* src, const FrameShape& shape,
                             const OracleMap& xMap, const OracleMap& yMap);

class KernelTrial {
  public:
    // With the maps that the sizes call for.
    KernelTrial(const PictureLayout& layout, const FrameShape& shape, Pattern pattern,
                uint64_t seed);

    // With given maps, of which a kernel reads as many entries as the destination has.
    KernelTrial(const PictureLayout& layout, const FrameShape& shape, OracleMap xMap,
                OracleMap yMap, std::vector<uint8_t> source);

    // The bytes that the whole destination holds afterwards, those that stay untouched included.
    std::vector<uint8_t> Expect(ScaleOracle oracle) const;

    // Calls the kernel with every buffer and map at the chosen guard. Fails unless the destination
    // then holds exactly these bytes, nothing else changed, the result is the number of rows and
    // the x87 registers are left empty.
    testing::AssertionResult Run(ScaleKernel kernel, const std::vector<uint8_t>& expected,
                                 BufferGuard guard) const;

    // Run against the oracle at both guards.
    testing::AssertionResult Matches(ScaleKernel kernel, ScaleOracle oracle) const;

    // What the kernel writes.
    std::vector<uint8_t> Output(ScaleKernel kernel) const;

    std::string Describe() const;

  private:
    size_t DestinationSize() const;

    PictureLayout layout_;
    FrameShape shape_;
    OracleMap xMap_;
    OracleMap yMap_;
    std::vector<uint8_t> source_;
    std::string dataName_;
};

}  // namespace tavo::test
