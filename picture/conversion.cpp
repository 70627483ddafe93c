// Choosing and calling the kernel for one frame.

#include "picture/conversion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "picture/planes.h"
#include "resample/copy_kernels.h"

namespace tavo {
namespace {

int32_t Change(int32_t source, int32_t output) {
    return source > output ? -1 : source < output ? 1 : 0;
}

// What a chroma plane holds where there is no colour.
constexpr int kNeutralChroma = 128;

// Copies the samples of a plane, without the padding of its rows. A negative height stores them
// from the bottom up.
void CopyRows(uint8_t* output, const Plane& to, const uint8_t* source, const Plane& from) {
    const int32_t rows = std::abs(to.height);
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t stored = to.height < 0 ? rows - 1 - y : y;
        std::memcpy(output + to.offset + int64_t{stored} * to.pitch,
                    source + from.offset + int64_t{y} * from.pitch, static_cast<size_t>(to.width));
    }
}

enum class RowOrder { AsStated, Kept };

// The same of all planes. Rows of other formats count as one plane of bytes.
void CopyPixels(uint8_t* output, const Picture& to, const uint8_t* source, const Picture& from,
                RowOrder order) {
    const auto planesOf = [](const Picture& picture) -> Planes {
        if (picture.format->group == FormatGroup::Planar) return PlanesOf(picture);
        const int32_t bytes = picture.width * picture.format->bitsPerPixel / 8;
        return {{{0, bytes, picture.height, static_cast<int32_t>(RowPitch(picture))}}, 0};
    };
    const Planes targets = planesOf(to);
    const Planes sources = planesOf(from);
    for (int i = 0; i < kPlaneCount; ++i) {
        Plane target = targets.planes[i];
        if (order == RowOrder::Kept) target.height = std::abs(target.height);
        CopyRows(output, target, source, sources.planes[i]);
    }
}

Picture WithoutPitch(Picture picture) {
    picture.pitch = 0;
    return picture;
}

// The pitch to put into a map: 0 where it equals the width.
int32_t StatedPitch(const Plane& plane) { return plane.pitch == plane.width ? 0 : plane.pitch; }

}  // namespace

Conversion::Conversion(const Picture& source, const Picture& output, KernelSelector selectKernel)
    : source_(source), output_(output), selectKernel_(selectKernel) {}

std::unique_ptr<Conversion> Conversion::Build(const Picture& source, const Picture& output,
                                              KernelSelector selectKernel) {
    std::unique_ptr<Conversion> conversion(new (std::nothrow)
                                               Conversion(source, output, selectKernel));
    if (!conversion) return nullptr;
    if (!output.format) return conversion;
    conversion->horizontalChange_ = Change(source.width, output.width);
    // Deliberate: the source's height is compared with its sign, against the output's magnitude. So
    // a top-down source counts as smaller than any output, and is scaled even to its own size.
    conversion->verticalChange_ = Change(source.height, std::abs(output.height));
    if (!conversion->BuildMaps() || !conversion->BuildBuffers()) return nullptr;
    return conversion;
}

bool Conversion::BuildMaps() {
    horizontalMap_.reset(BuildAxisMap(source_.width, output_.width, 0));
    verticalMap_.reset(BuildAxisMap(source_.height, output_.height, 0));
    if (!horizontalMap_ || !verticalMap_) return false;
    if (IsPitched(output_)) horizontalMap_->dstPitch = static_cast<int32_t>(RowPitch(output_));
    if (output_.format->group != FormatGroup::Planar) return true;

    const Planes source = PlanesOf(source_);
    horizontalMap_->srcPitch = StatedPitch(source.planes[0]);
    const Plane& from = source.planes[1];
    const Plane to = PlanesOf(output_).planes[1];
    if (from.IsEmpty() || to.IsEmpty()) return true;
    chromaHorizontalMap_.reset(BuildBoundedAxisMap(*horizontalMap_, from.width, to.width));
    chromaVerticalMap_.reset(
        BuildBoundedAxisMap(*verticalMap_, std::abs(from.height), std::abs(to.height)));
    if (!chromaHorizontalMap_ || !chromaVerticalMap_) return false;
    chromaHorizontalMap_->srcPitch = StatedPitch(from);
    chromaHorizontalMap_->dstPitch = StatedPitch(to);
    return true;
}

bool Conversion::BuildBuffers() {
    sourceBytes_ = static_cast<size_t>(KernelBytes(source_));
    outputBytes_ = static_cast<size_t>(KernelBytes(output_));
    outputFrameBytes_ = static_cast<size_t>(FrameBytes(output_));
    if (!workBuffer_.Allocate(FrameBytes(output_))) return false;

    const int64_t unpitchedBytes = KernelBytes(WithoutPitch(output_));
    // It always moves blocks, but for rows at a pitch.
    if (IsSameSize() && !IsPitched(output_) && SpillOfCopy(SlotBilinearAuto) != 0) {
        return spillSource_.Allocate(KernelBytes(source_)) && spillOutput_.Allocate(unpitchedBytes);
    }
    bool spills = false;
    for (int32_t slot = 0; slot < kKernelSlots; ++slot) {
        spills = spills || ScaleSpill(selectKernel_(ChooseRow(), slot).scale) != 0;
    }
    return !spills || spillOutput_.Allocate(unpitchedBytes);
}

bool Conversion::Scale(FrameSpan output, FrameSpan source, int32_t scaleMethod) {
    if (!output_.format) return false;
    if (!output.data || !source.data) return false;
    if (output.size < outputBytes_ || source.size < sourceBytes_) return false;

    const int32_t slot = MethodToSlot(scaleMethod);
    const bool isAutomatic = slot <= SlotBilinearAuto;
    if (IsSameSize() && isAutomatic) return Copy(output, source, slot);
    const int32_t row = ChooseRow();
    currentKernel_ = selectKernel_(row, slot).scale;
    if (!currentKernel_) return false;
    const auto spill = static_cast<size_t>(ScaleSpill(currentKernel_));
    if (IsPitched(output_) && spill != 0) {
        if (!spillOutput_) return false;
        ScaleUnpitched(currentKernel_, output.data, source.data);
        return true;
    }
    const bool hasRoom = output.size >= outputBytes_ + spill;
    if (!hasRoom && !spillOutput_) return false;
    uint8_t* const target = hasRoom ? output.data : spillOutput_.Data();
    ScalePicture(currentKernel_, target, source.data);
    if (!hasRoom) CopyBytes(output.data, target, outputBytes_);
    return true;
}

int32_t Conversion::ChooseRow() const {
    const FormatRows& rows = *output_.format->rows;
    if (verticalChange_ != 0) return horizontalChange_ != 0 ? rows.both : rows.vertical;
    if (source_.width == 720 && output_.width == 480) return rows.horizontal720To480;
    if (source_.width == 640 && output_.width == 480) return rows.horizontal640To480;
    return rows.horizontal;
}

void Conversion::ScalePicture(ScaleKernel kernel, uint8_t* output, const uint8_t* source) const {
    if (output_.format->group != FormatGroup::Planar) {
        kernel(output, source, output_.width, output_.height, source_.width, source_.height,
               horizontalMap_.get(), verticalMap_.get());
        return;
    }
    const Planes sources = PlanesOf(source_);
    const Planes outputs = PlanesOf(output_);
    for (int i = 0; i < kPlaneCount; ++i) {
        const Plane& from = sources.planes[i];
        const Plane& to = outputs.planes[i];
        if (to.IsEmpty()) continue;
        uint8_t* const target = output + to.offset;
        if (from.IsEmpty()) {
            for (int32_t y = 0; y < std::abs(to.height); ++y) {
                std::memset(target + int64_t{y} * to.pitch, kNeutralChroma,
                            static_cast<size_t>(to.width));
            }
            continue;
        }
        const AxisMap* xMap = i == 0 ? horizontalMap_.get() : chromaHorizontalMap_.get();
        const AxisMap* yMap = i == 0 ? verticalMap_.get() : chromaVerticalMap_.get();
        kernel(target, source + from.offset, to.width, to.height, from.width, from.height, xMap,
               yMap);
    }
}

// What a kernel writes past a row belongs to the next row, not to the bytes that lie between rows
// at a pitch: the pixels are those of a picture without one.
void Conversion::ScaleUnpitched(ScaleKernel kernel, uint8_t* output, const uint8_t* source) {
    AxisMap map = *horizontalMap_;
    map.dstPitch = 0;
    kernel(spillOutput_.Data(), source, output_.width, output_.height, source_.width,
           source_.height, &map, verticalMap_.get());
    CopyPixels(output, output_, spillOutput_.Data(), WithoutPitch(output_), RowOrder::Kept);
}

// Bytes that a kernel touches past the picture, in the source as in the output. What it moves past
// a luma plane lands in the chroma planes: it counts only where these are smaller than a block.
size_t Conversion::SpillOfCopy(int32_t slot) const {
    const PictureFormat& format = *output_.format;
    const auto spill = static_cast<size_t>(
        CopySpill(selectKernel_(format.rows->copy, slot).copy, output_.width, format.bitsPerPixel));
    if (format.group != FormatGroup::Planar) return spill;
    const size_t chromaBytes =
        outputBytes_ - static_cast<size_t>(PlanesOf(output_).planes[1].offset);
    return spill > chromaBytes ? spill - chromaBytes : 0;
}

bool Conversion::Copy(FrameSpan output, FrameSpan source, int32_t slot) {
    if (source_.layout == PlaneLayout::Padded || IsPitched(output_)) {
        // The copy kernels know no pitch.
        CopyPixels(output.data, output_, source.data, source_, RowOrder::AsStated);
        return true;
    }
    const size_t spill = SpillOfCopy(slot);
    const bool sourceHasRoom = source.size >= sourceBytes_ + spill;
    const bool outputHasRoom = output.size >= outputBytes_ + spill;
    if (sourceHasRoom && outputHasRoom) {
        CopyPicture(output.data, source.data, slot);
        return true;
    }
    if (!spillSource_ || !spillOutput_) return false;
    CopyBytes(spillSource_.Data(), source.data, sourceBytes_);
    CopyPicture(spillOutput_.Data(), spillSource_.Data(), slot);
    CopyBytes(output.data, spillOutput_.Data(), outputBytes_);
    return true;
}

void Conversion::CopyPicture(uint8_t* output, const uint8_t* source, int32_t slot) const {
    const PictureFormat& format = *output_.format;
    const CopyKernel copy = selectKernel_(format.rows->copy, slot).copy;
    copy(output, source, output_.width, output_.height, format.bitsPerPixel);
    if (format.group != FormatGroup::Planar) return;
    const Planes planes = PlanesOf(output_);
    for (int i = 1; i < kPlaneCount; ++i) {
        const Plane& plane = planes.planes[i];
        CopyPlane_Portable(output + plane.offset, source + plane.offset, plane.width, plane.height,
                           8);
    }
}

void Conversion::CopyOutput(FrameSpan to, FrameSpan from) const {
    if (IsPitched(output_)) {
        CopyPixels(to.data, output_, from.data, output_, RowOrder::Kept);
    } else {
        CopyBytes(to.data, from.data, std::min(to.size, from.size));
    }
}

}  // namespace tavo
