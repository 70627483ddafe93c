// One case done by the kernels of this project, called as the filter calls them.

#pragma once

#include "bench/picture.h"
#include "bench/workloads.h"
#include "resample/axis_map.h"
#include "resample/kernel_table.h"

namespace tavo::bench {

class Scaling {
  public:
    Scaling(const FamilyInfo& family, const Sizes& sizes)
        : row_(family.RowFor(sizes)),
          bitsPerPixel_(family.bitsPerPixel),
          sizes_(sizes),
          src_(family.Stride(sizes.srcWidth), sizes.srcHeight, Picture::Use::Source),
          dst_(family.Stride(sizes.dstWidth), sizes.dstHeight, Picture::Use::Destination),
          xMap_(BuildAxisMap(sizes.srcWidth, sizes.dstWidth, 0)),
          yMap_(BuildAxisMap(sizes.srcHeight, sizes.dstHeight, 0)) {}

    bool IsReady() const { return xMap_ && yMap_; }
    int32_t Row() const { return row_; }
    size_t Bytes() const { return src_.Bytes() + dst_.Bytes(); }

    void Run(const KernelEntry& entry) const {
        if (row_ < kFirstScaleRow) {
            entry.copy(dst_.Data(), src_.Data(), sizes_.dstWidth, sizes_.dstHeight, bitsPerPixel_);
        } else {
            entry.scale(dst_.Data(), src_.Data(), sizes_.dstWidth, sizes_.dstHeight,
                        sizes_.srcWidth, sizes_.srcHeight, xMap_.get(), yMap_.get());
        }
    }

  private:
    int32_t row_;
    int32_t bitsPerPixel_;
    Sizes sizes_;
    Picture src_;
    Picture dst_;
    AxisMapPtr xMap_;
    AxisMapPtr yMap_;
};

}  // namespace tavo::bench
