// Walks the rows and slots of the dispatch table with every backend.

#pragma once

#include <cstdint>
#include <string>

#include "tests/kernel_check/backends.h"
#include "tests/kernel_check/cases.h"

namespace tavo::test {

struct WalkOptions {
    Effort effort;
    std::string filter;  // part of a label, see LabelOf
};

// Passed and failed comparisons. Reports the first failures of each kernel and backend.
class Tally {
  public:
    void Pass() { ++passed_; }
    void Fail(const std::string& label, const std::string& what, const std::string& where);

    uint64_t Passed() const { return passed_; }
    uint64_t Failed() const { return failed_; }

  private:
    uint64_t passed_ = 0;
    uint64_t failed_ = 0;
    std::string lastLabel_;
    int ofLabel_ = 0;
};

// For instance "row 27 UYVY Both slot 8 ScaleBilinear_UYVY_SSE, MMX operations".
std::string LabelOf(const ScaleRow& row, int slot, const Backend& backend);
std::string LabelOf(const CopyRow& row, int slot, const Backend& backend);

bool Matches(const std::string& label, const std::string& filter);

// The slots that a backend is for: all of them for a level, the constant ones for an instruction
// set, without the one that repeats another.
bool CoversSlot(const Backend& backend, int slot);

void WalkScaleRow(const ScaleRow& row, const WalkOptions& options, Tally& tally);
void WalkCopyRow(const CopyRow& row, const WalkOptions& options, Tally& tally);

}  // namespace tavo::test
