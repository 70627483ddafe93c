// The canvas, and the edge of an axis.

#include "tests/kernel_oracle/picture.h"

#include <cstdio>
#include <cstdlib>

namespace tavo::test {

Canvas::Canvas(Format format, int width, int height)
    : format_(format),
      width_(width),
      rows_(std::abs(height)),
      stride_(StrideOf(format, width)),
      bottomUp_(height < 0),
      values_(static_cast<size_t>(stride_) * static_cast<size_t>(rows_)),
      rules_(values_.size(), Rule::Untouched) {}

void Canvas::Set(int row, int offset, int value, Rule rule) {
    if (value < 0 || value > 255 || row < 0 || row >= rows_ || offset < 0) {
        std::fprintf(stderr, "The oracle puts %d at row %d, byte %d\n", value, row, offset);
        std::abort();
    }
    const int stored = bottomUp_ ? rows_ - 1 - row : row;
    const size_t place =
        static_cast<size_t>(stored) * static_cast<size_t>(stride_) + static_cast<size_t>(offset);
    if (place >= values_.size()) {
        values_.resize(place + 1);
        rules_.resize(place + 1, Rule::Untouched);
    }
    values_[place] = static_cast<uint8_t>(value);
    rules_[place] = rule;
}

void Canvas::Put(int row, int offset, int value) { Set(row, offset, value, Rule::Exact); }

void Canvas::MayPut(int row, int offset, int value) {
    Set(row, offset, value, Rule::ExactOrUntouched);
}

void Canvas::Free(int row, int offset) { Set(row, offset, 0, Rule::Anything); }

void Canvas::EndAfterLastByte() {
    while (!rules_.empty() && rules_.back() == Rule::Untouched) rules_.pop_back();
    values_.resize(rules_.size());
}

size_t Canvas::FirstDifference(const uint8_t* actual, uint8_t fill) const {
    for (size_t place = 0; place < values_.size(); ++place) {
        const bool untouched = actual[place] == fill;
        const bool exact = actual[place] == values_[place];
        bool right = true;
        switch (rules_[place]) {
            case Rule::Untouched: right = untouched; break;
            case Rule::Exact: right = exact; break;
            case Rule::ExactOrUntouched: right = exact || untouched; break;
            case Rule::Anything: break;
        }
        if (!right) return place;
    }
    return values_.size();
}

uint8_t Canvas::Expected(size_t place, uint8_t fill) const {
    return rules_[place] == Rule::Untouched ? fill : values_[place];
}

int MainLength(const AxisEntries& entries, int count, int lastIndex, int step) {
    for (int i = count - 1; i >= 0; --i) {
        if (entries.indices[static_cast<size_t>(i)] != lastIndex) return i / step * step;
    }
    return 0;
}

}  // namespace tavo::test
