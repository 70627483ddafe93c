// Fitting and rounding.

#include "host/graph/output_size.h"

#include <algorithm>

namespace tavo {
namespace {

constexpr int kLargestEdge = 65535;

struct Steps {
    int width;
    int height;
};

Steps StepsOf(PixelFormat format) {
    if (format == PixelFormat::Auto) return {1, 1};
    const PictureFormat& info = InfoOf(format);
    switch (info.group) {
        case FormatGroup::Planar: return {1 << info.chromaShift, 1 << info.chromaShift};
        case FormatGroup::Packed422: return {2, 1};
        case FormatGroup::Rgb: break;
    }
    return {1, 1};
}

int RoundEdge(int edge, int step) {
    const int up = (edge + step - 1) / step * step;
    return up <= kLargestEdge ? up : kLargestEdge / step * step;
}

// Down again where rounding up has left the box, unless nothing would remain.
int WithinEdge(int edge, int limit, int step) {
    return edge <= limit ? edge : std::max(limit / step * step, step);
}

}  // namespace

AspectRatio DisplayAspect(PictureSize size, AspectRatio pixel) {
    if (!pixel.IsKnown() || size.width <= 0 || size.height <= 0) return {};
    return Reduced(uint64_t{pixel.x} * static_cast<uint32_t>(size.width),
                   uint64_t{pixel.y} * static_cast<uint32_t>(size.height));
}

PictureSize RoundedFor(PixelFormat format, PictureSize size) {
    const Steps steps = StepsOf(format);
    return {RoundEdge(size.width, steps.width), RoundEdge(size.height, steps.height)};
}

PictureSize FitInside(PictureSize box, PictureSize source, AspectRatio pixel) {
    const double shape = pixel.IsKnown() ? static_cast<double>(pixel.x) / pixel.y : 1.0;
    const double shownWidth = source.width * shape;
    const double factor =
        std::min(box.width / shownWidth, box.height / static_cast<double>(source.height));
    if (factor >= 1.0) return source;
    const auto edge = [&](double shown, int limit) {
        return std::clamp(static_cast<int>(shown * factor + 0.5), 1, limit);
    };
    return {edge(shownWidth, box.width), edge(source.height, box.height)};
}

SizeChoice ChooseSize(const RunOptions& options, PixelFormat format, PictureSize source,
                      AspectRatio pixel) {
    SizeChoice choice;
    if (options.fit) {
        const PictureSize box = {options.width > 0 ? options.width : kMaxSide,
                                 options.height > 0 ? options.height : kMaxSide};
        const Steps steps = StepsOf(format);
        choice.wanted = FitInside(box, source, pixel);
        choice.rounded = RoundedFor(format, choice.wanted);
        choice.rounded.width = WithinEdge(choice.rounded.width, box.width, steps.width);
        choice.rounded.height = WithinEdge(choice.rounded.height, box.height, steps.height);
        choice.setting = choice.rounded;
        return choice;
    }
    choice.wanted = {options.width > 0 ? options.width : source.width,
                     options.height > 0 ? options.height : source.height};
    choice.rounded = RoundedFor(format, choice.wanted);
    choice.setting = choice.rounded;
    if (options.width == 0 && choice.rounded.width == source.width) choice.setting.width = 0;
    if (options.height == 0 && choice.rounded.height == source.height) choice.setting.height = 0;
    return choice;
}

}  // namespace tavo
