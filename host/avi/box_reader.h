// Nested boxes, as AVI, MP4 and Matroska have them. Nothing in the file is trusted.

#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "host/avi/byte_store.h"

namespace tavo {

struct Box {
    uint32_t code = 0;
    uint64_t data = 0;
    uint64_t end = 0;
    bool isTruncated = false;  // by the end of the file
};

// Reads numbers and texts: 0, empty or nothing beyond the end of the file.
class BoxReader {
  public:
    explicit BoxReader(ByteStore& store) : store_(store), size_(store.Size()) {}

    uint64_t Size() const { return size_; }

    // Counts the boxes that were read; false when there are too many.
    bool Step() { return ++steps_ < kMaxSteps; }

    // At most 8 bytes.
    std::optional<uint64_t> Number(uint64_t at, unsigned bytes, bool bigEndian);
    uint32_t Little(uint64_t at) { return static_cast<uint32_t>(Number(at, 4, false).value_or(0)); }
    uint32_t Big(uint64_t at) { return static_cast<uint32_t>(Number(at, 4, true).value_or(0)); }

    // Up to a zero, at most 40 characters.
    std::string Text(uint64_t at, uint64_t length);

  private:
    static constexpr int kMaxSteps = 20000;

    ByteStore& store_;
    const uint64_t size_;
    int steps_ = 0;
};

// The four characters of a code.
std::string CodeText(uint32_t code);

// Calls visit(box) for each box from `at` to `end`, clipped to `end`. read(file, at) returns a box
// or nothing.
template <typename Read, typename Visit>
void ForEachBox(BoxReader& file, uint64_t at, uint64_t end, Read read, Visit visit) {
    while (at < std::min(end, file.Size()) && file.Step()) {
        std::optional<Box> box = read(file, at);
        if (!box || box->end <= at) return;
        at = box->end;
        box->isTruncated = box->end > file.Size();
        box->end = std::min({box->end, end, file.Size()});
        visit(*box);
    }
}

}  // namespace tavo
