// Holds all shared work memory, as kernels on other threads may, so that the next ones have to do
// with their own.

#pragma once

#include <memory>
#include <vector>

#include "resample/work_memory.h"

namespace tavo::test {

class HeldMemory {
  public:
    HeldMemory() {
        do {
            held_.push_back(std::make_unique<WorkMemory>());
        } while (held_.back()->IsShared());
        held_.pop_back();
    }

    size_t Pieces() const { return held_.size(); }

  private:
    std::vector<std::unique_ptr<WorkMemory>> held_;
};

}  // namespace tavo::test
