// A format, two pictures (TakePicture), a method, where the buffers begin and what is behind them.
// Pictures of any size go through the arithmetic of sizes. Those of modest size are converted, in
// buffers of exactly their bytes, on every instruction set of this processor: the pictures must be
// the same.

#include <cstdlib>
#include <cstring>
#include <vector>

#include "picture/conversion.h"
#include "picture/planes.h"
#include "resample/kernel_table.h"
#include "resample/row_ops/instruction_sets.h"
#include "tests/fuzz/fuzz_input.h"

using namespace tavo;

namespace tavo_test {
namespace {

constexpr int64_t kMostBytes = 1 << 16;
constexpr uint8_t kUntouched = 0xa5;

enum ShapeBits { kAnySize = 1, kBottomUp = 2, kDeeper = 4, kPadded = 8 };

// Two bytes: mostly sizes below 80, then some below 2048 and those of the fixed ratios.
int32_t TakeSide(FuzzInput& input) {
    constexpr int32_t kRatioSides[] = {640, 720, 480, 320, 360, 240, 160, 180, 120, 644, 484};
    const int32_t value = input.Take<uint16_t>();
    if (value < 0xc000) return 1 + value % 80;
    if (value < 0xe000) return 1 + value % 2048;
    return kRatioSides[value % std::size(kRatioSides)];
}

// A byte of ShapeBits, then width and height of two or four bytes each.
Picture TakePicture(FuzzInput& input, const PictureFormat& format) {
    const auto bits = input.Take<uint8_t>();
    Picture picture = {&format, 0, 0, format.bitsPerPixel, PlaneLayout::Tight};
    const bool anySize = bits & kAnySize;
    picture.width = anySize ? input.Take<int32_t>() : TakeSide(input);
    picture.height = anySize ? input.Take<int32_t>() : TakeSide(input);
    if (bits & kBottomUp && picture.height > 0) picture.height = -picture.height;
    if (bits & kDeeper) picture.bitsPerPixel = input.Take<uint16_t>();
    const bool isPlanar = format.group == FormatGroup::Planar;
    if (bits & kPadded && isPlanar) picture.layout = PlaneLayout::Padded;
    return picture;
}

// Everything that is usable has its planes inside its bytes.
void CheckSizes(const Picture& picture) {
    if (!IsUsablePicture(picture)) return;
    const int64_t bytes = KernelBytes(picture);
    Require(bytes > 0 && bytes < INT32_MAX && FrameBytes(picture) < INT32_MAX);
    if (picture.format->group != FormatGroup::Planar) {
        Require(bytes <= FrameBytes(picture));
        return;
    }
    const bool isPadded = picture.layout == PlaneLayout::Padded;
    if (isPadded) Require(bytes == PaddedFrameBytes(picture));
    Require(isPadded || bytes <= FrameBytes(picture));
    int64_t end = 0;
    for (const Plane& plane : PlanesOf(picture).planes) {
        Require(plane.offset >= end && plane.width <= plane.pitch);
        if (plane.IsEmpty()) continue;
        end = plane.offset + int64_t{plane.pitch} * (std::abs(plane.height) - 1) + plane.width;
        Require(end <= bytes);
    }
}

// Memory of exactly so many bytes, from an address of any alignment.
class ExactBuffer {
  public:
    ExactBuffer(size_t size, size_t offset) : bytes_(size + offset, kUntouched), offset_(offset) {
        bytes_.shrink_to_fit();
    }
    FrameSpan Span() { return {bytes_.data() + offset_, bytes_.size() - offset_}; }
    bool IsWholeBefore() const {
        return std::count(First(), First() + Offset(), kUntouched) == Offset();
    }
    bool IsUntouched() const {
        return std::count(First(), bytes_.end(), kUntouched) == std::ssize(bytes_);
    }

  private:
    std::vector<uint8_t>::const_iterator First() const { return bytes_.begin(); }
    ptrdiff_t Offset() const { return static_cast<ptrdiff_t>(offset_); }

    std::vector<uint8_t> bytes_;
    size_t offset_;
};

void Fill(FrameSpan frame, uint32_t seed) {
    uint32_t state = seed * 2654435761u + 1;
    for (size_t i = 0; i < frame.size; ++i) {
        state = state * 1664525u + 1013904223u;
        frame.data[i] = static_cast<uint8_t>(state >> 24);
    }
}

// The bytes of the picture, without the padding of rows and the gaps between planes.
std::vector<uint8_t> PixelsOf(const Picture& picture, const uint8_t* frame) {
    std::vector<uint8_t> pixels;
    const auto add = [&](int64_t offset, int64_t bytes, int64_t stride, int32_t rows) {
        for (int64_t row = 0; row < rows; ++row) {
            const uint8_t* const from = frame + offset + row * stride;
            pixels.insert(pixels.end(), from, from + bytes);
        }
    };
    const PictureFormat& format = *picture.format;
    const int32_t rows = std::abs(picture.height);
    if (format.group == FormatGroup::Planar) {
        for (const Plane& plane : PlanesOf(picture).planes) {
            if (!plane.IsEmpty())
                add(plane.offset, plane.width, plane.pitch, std::abs(plane.height));
        }
    } else {
        const int64_t bytes = int64_t{picture.width} * format.bitsPerPixel / 8;
        add(0, bytes, RowStride(format.group, picture.width, format.bitsPerPixel), rows);
    }
    return pixels;
}

// What the rest of the header says of a conversion.
struct Trial {
    int32_t method;
    size_t sourceOffset;
    size_t outputOffset;
    size_t slack;  // behind both
    uint8_t seed;
};

std::vector<uint8_t> Convert(Conversion& conversion, const Trial& trial) {
    const auto sourceBytes = static_cast<size_t>(KernelBytes(conversion.Source()));
    ExactBuffer source(sourceBytes + trial.slack, trial.sourceOffset);
    ExactBuffer output(conversion.OutputPictureBytes() + trial.slack, trial.outputOffset);
    Fill(source.Span(), trial.seed);
    const std::vector<uint8_t> given(source.Span().data, source.Span().data + source.Span().size);

    Require(conversion.Scale(output.Span(), source.Span(), trial.method));
    Require(std::memcmp(source.Span().data, given.data(), given.size()) == 0);
    Require(source.IsWholeBefore() && output.IsWholeBefore());
    return PixelsOf(conversion.Output(), output.Span().data);
}

void CheckRefusals(Conversion& conversion, const Trial& trial) {
    const auto sourceBytes = static_cast<size_t>(KernelBytes(conversion.Source()));
    ExactBuffer source(sourceBytes, 0);
    ExactBuffer output(conversion.OutputPictureBytes(), 0);
    const FrameSpan from = source.Span();
    const FrameSpan to = output.Span();
    Require(!conversion.Scale({to.data, to.size - 1}, from, trial.method));
    Require(!conversion.Scale(to, {from.data, from.size - 1}, trial.method));
    Require(!conversion.Scale({nullptr, to.size}, from, trial.method));
    Require(!conversion.Scale(to, {nullptr, from.size}, trial.method));
    Require(output.IsUntouched());
}

void CheckConversion(const Picture& source, const Picture& output, const Trial& trial) {
    static const bool isFilled = (FillKernelTable(), true);
    Require(isFilled);
    const std::unique_ptr<Conversion> conversion = Conversion::Build(source, output);
    Require(conversion && conversion->OutputFrameBytes() >= conversion->OutputPictureBytes());
    CheckRefusals(*conversion, trial);
    std::vector<uint8_t> first;
    for (const InstructionSetInfo& set : InstructionSets()) {
        if (!set.canRun()) continue;
        ChooseRowOps(set.set);
        const std::vector<uint8_t> pixels = Convert(*conversion, trial);
        if (first.empty()) first = pixels;
        Require(pixels == first);
    }
}

bool IsModest(const Picture& picture) {
    return FrameBytes(picture) <= kMostBytes && KernelBytes(picture) <= kMostBytes;
}

}  // namespace

void FuzzConversion(FuzzBytes bytes) {
    FuzzInput input(bytes);
    const auto formats = AllPictureFormats();
    const PictureFormat& format = formats[input.Take<uint8_t>() % formats.size()];
    const Picture source = TakePicture(input, format);
    Picture output = TakePicture(input, format);
    CheckSizes(source);
    CheckSizes(output);
    output.layout = PlaneLayout::Tight;
    if (!IsUsablePicture(source) || !IsUsableOutput(output)) return;
    if (!IsModest(source) || !IsModest(output)) return;
    Trial trial;
    trial.method = input.Take<int8_t>();
    trial.sourceOffset = input.Take<uint8_t>() % 32;
    trial.outputOffset = input.Take<uint8_t>() % 32;
    trial.slack = input.Take<uint8_t>() % 16;
    trial.seed = input.Take<uint8_t>();
    CheckConversion(source, output, trial);
}

}  // namespace tavo_test
