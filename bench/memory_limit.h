// The least that any scaler must do: read every source byte once, write every destination byte
// once.

#pragma once

#include <algorithm>
#include <cstring>

#include "bench/picture.h"
#include "bench/workloads.h"

namespace tavo::bench {

class MemoryLimit {
  public:
    MemoryLimit(const FamilyInfo& family, const Sizes& sizes)
        : src_(family.Stride(sizes.srcWidth), sizes.srcHeight, Picture::Use::Source),
          dst_(family.Stride(sizes.dstWidth), sizes.dstHeight, Picture::Use::Destination) {}

    void Run() {
        const size_t common = std::min(src_.Bytes(), dst_.Bytes());
        const uint8_t* const src = src_.Data();
        uint8_t* const dst = dst_.Data();
        std::memcpy(dst, src, common);
        std::memset(dst + common, 0, dst_.Bytes() - common);
        uint64_t sum = 0;
        for (size_t i = common; i + sizeof sum <= src_.Bytes(); i += sizeof sum) {
            uint64_t word;
            std::memcpy(&word, src + i, sizeof word);
            sum += word;
        }
        sum_ = sum;
    }

  private:
    Picture src_;
    Picture dst_;
    volatile uint64_t sum_ = 0;
};

}  // namespace tavo::bench
