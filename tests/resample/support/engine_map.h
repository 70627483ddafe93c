// An axis map for the engine, made of the entries of the oracle.

#pragma once

#include <cstdint>
#include <vector>

#include "resample/scale_kernel.h"
#include "tests/kernel_oracle/axis_entries.h"

namespace tavo::test {

class EngineMap {
  public:
    explicit EngineMap(const AxisEntries& entries)
        : weights_(entries.weights.begin(), entries.weights.end()),
          indices_(entries.indices),
          record_{static_cast<int32_t>(indices_.size()), entries.srcSpan, 8, weights_.data(),
                  indices_.data()} {}
    EngineMap(const EngineMap&) = delete;
    EngineMap& operator=(const EngineMap&) = delete;

    const AxisMap* Record() const { return &record_; }

  private:
    std::vector<uint8_t> weights_;
    std::vector<int32_t> indices_;
    AxisMap record_;
};

}  // namespace tavo::test
