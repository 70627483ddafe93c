// One conversion from a source picture to an output picture: everything that a frame needs, built
// once. All that can write outside a buffer is here and in the kernels. Not thread-safe.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "picture/frame_buffer.h"
#include "picture/picture.h"
#include "resample/axis_map.h"
#include "resample/kernel_table.h"
#include "resample/scale_kernel.h"

namespace tavo {

class Conversion {
  public:
    // Null when memory runs out. Both pictures must be usable (IsUsablePicture, IsUsableOutput) and
    // of the same format; or the output has no format, and then every frame fails.
    static std::unique_ptr<Conversion> Build(const Picture& source, const Picture& output,
                                             KernelSelector selectKernel = SelectKernel);

    // Scales one frame with the kernel that the format, the change of size and the code of the
    // method select. False, with nothing written, when a buffer is absent or too small for its
    // picture, or no kernel exists.
    [[nodiscard]] bool Scale(FrameSpan output, FrameSpan source, int32_t scaleMethod);

    const Picture& Source() const { return source_; }
    const Picture& Output() const { return output_; }

    // Copies an output frame as it lies, of no more bytes than either buffer has; of rows at a
    // pitch only the pixels, and both buffers must have room for the picture.
    void CopyOutput(FrameSpan to, FrameSpan from) const;

    // Bytes of an output frame, as the type states it.
    size_t OutputFrameBytes() const { return outputFrameBytes_; }

    // What of them holds the picture: less than the frame for some odd sizes of planar formats.
    size_t OutputPictureBytes() const { return outputBytes_; }

    // One output frame, kept by the time regulator between two samples.
    FrameSpan WorkBuffer() const { return workBuffer_.Span(); }
    // Takes over the frame that a conversion to the same output has kept.
    void TakeWorkBuffer(Conversion& other) { std::swap(workBuffer_, other.workBuffer_); }

  private:
    Conversion(const Picture& source, const Picture& output, KernelSelector selectKernel);

    bool BuildMaps();
    bool BuildBuffers();
    bool Copy(FrameSpan output, FrameSpan source, int32_t slot);
    void CopyPicture(uint8_t* output, const uint8_t* source, int32_t slot) const;
    void ScaleUnpitched(ScaleKernel kernel, uint8_t* output, const uint8_t* source);
    bool IsSameSize() const { return horizontalChange_ == 0 && verticalChange_ == 0; }
    int32_t ChooseRow() const;
    void ScalePicture(ScaleKernel kernel, uint8_t* output, const uint8_t* source) const;
    size_t SpillOfCopy(int32_t slot) const;

    Picture source_;
    Picture output_;
    KernelSelector selectKernel_;
    int32_t horizontalChange_ = 0;  // -1 source larger, 0 equal, 1 source smaller
    int32_t verticalChange_ = 0;
    size_t sourceBytes_ = 0;  // what the kernels touch
    size_t outputBytes_ = 0;
    size_t outputFrameBytes_ = 0;

    AxisMapPtr horizontalMap_;
    AxisMapPtr verticalMap_;
    // The same for chroma planes, bounded to them; null for pictures without such planes.
    AxisMapPtr chromaHorizontalMap_;
    AxisMapPtr chromaVerticalMap_;

    FrameBuffer workBuffer_;
    // Stand in for samples without room for what a kernel moves past the picture.
    FrameBuffer spillSource_;
    FrameBuffer spillOutput_;

    ScaleKernel currentKernel_ = nullptr;
};

}  // namespace tavo
