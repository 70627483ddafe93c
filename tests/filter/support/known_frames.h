// Pictures of one format in a few sizes, and what an undisturbed filter makes of each of them in a
// few other sizes by every method: a frame that is none of these was torn.
#pragma once

#include <map>
#include <vector>

#include "tests/filter/support/pictures.h"

namespace tavo_test {

class KnownFrames {
  public:
    // Their frames have neither padding nor gaps, and no two of one list are of equal size.
    static constexpr Size kFrom[] = {{64, 48}, {32, 24}, {96, 16}, {48, 40}};
    static constexpr Size kTo[] = {{40, 36}, {64, 48}, {40, 48}};
    static constexpr int kMethods[] = {0, 1, 2, 5, 6, 7, 10, 11, 12};

    explicit KnownFrames(const PixelFormat& format);

    const PixelFormat& format() const { return format_; }
    const std::vector<BYTE>& Source(size_t from) const { return sources_[from]; }
    MediaType SourceType(size_t from) const;
    MediaType OutputType(size_t to) const;
    long OutputBytes(size_t to) const;
    // -1 if a frame of so many bytes is none of the output sizes.
    int OutputOfBytes(long bytes) const;
    // Which source the frame shows; -1 for none.
    int ShownSource(size_t to, const std::vector<BYTE>& frame) const;

  private:
    const PixelFormat& format_;
    std::vector<std::vector<BYTE>> sources_;
    std::vector<std::map<std::vector<BYTE>, int>> outputs_;
};

}  // namespace tavo_test
