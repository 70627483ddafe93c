// Pairs of small pictures to scale, in every format and axis mode.
#pragma once

#include <cstdio>
#include <string>

#include "tests/filter/support/pictures.h"

namespace tavo_test {

inline constexpr int kMostPixels = 65;

enum class Shape {
    kWidthOnly,
    kHeightOnly,
    kBoth,
    kTopDownSource,
    kTurnedOutput,
    kSame,
    kSameTurned,
    kSameTopDown,
    kFixedRatio,
    kPadded,  // from here on planar formats only
    kPaddedSame,
    kCount
};

// One picture to scale; heights have their signs.
struct Trial {
    const PixelFormat& format;
    Shape shape;
    Size from;
    Size to;
    bool isRegulated;

    bool IsPadded() const { return shape == Shape::kPadded || shape == Shape::kPaddedSame; }
    const GUID& Block() const {
        const bool second = format.layout != Layout::kRgb && (from.width + to.height) % 2;
        return second ? FORMAT_VideoInfo2 : FORMAT_VideoInfo;
    }
    MediaType SourceType() const {
        return IsPadded() ? PaddedTypeOf(format, from, 1, Block())
                          : TypeOf(format, from.width, from.height, Block());
    }
    MediaType OutputType() const { return TypeOf(format, to.width, to.height, Block()); }
    // All that a frame needs; a type may state a few bytes more.
    long SourceBytes() const {
        return IsPadded() ? PaddedBytes(format, from)
                          : static_cast<long>(PictureBytes(format, from.width, from.height));
    }
    long OutputBytes() const {
        return static_cast<long>(PictureBytes(format, to.width, to.height));
    }
    std::string Text(int method) const {
        char text[120];
        std::snprintf(text, sizeof text, "%s%s %dx%d to %dx%d%s, method %2d", format.name,
                      IsPadded() ? " padded" : "", from.width, from.height, to.width, to.height,
                      isRegulated ? " regulated" : "", method);
        return text;
    }
};

inline Size Turned(Size size) { return {size.width, -size.height}; }

inline Trial MakeTrial(const PixelFormat& format, Shape shape, int from, int to, bool isRegulated) {
    const int fixed = 1 + (from + to) % kMostPixels;
    Size source = {from, to};
    Size output = {to, from};
    switch (shape) {
        case Shape::kWidthOnly:
            source = {from, fixed};
            output = {to, fixed};
            break;
        case Shape::kHeightOnly:
            source = {fixed, from};
            output = {fixed, to};
            break;
        case Shape::kTopDownSource:
            source = {from, -fixed};
            output = {to, to};
            break;
        case Shape::kTurnedOutput: output = Turned(output); break;
        case Shape::kSame:
        case Shape::kPaddedSame: output = source; break;
        case Shape::kSameTurned: output = Turned(source); break;
        case Shape::kSameTopDown:
            output = source;
            source = Turned(source);
            break;
        case Shape::kFixedRatio:
            source = {from % 2 ? 640 : 720, from / 5 + 1};
            output = {480, to % 4 ? source.height : to / 5 + 1};
            break;
        default: break;
    }
    if (format.layout == Layout::kPacked) {
        // Widths of packed outputs are even by rule.
        if (source.width == output.width) source.width += source.width % 2;
        output.width += output.width % 2;
    }
    return {format, shape, source, output, isRegulated};
}

// Calls `use` for every trial of a round until it says no. A round pairs every size with another
// one; in as many rounds as there are sizes each meets each, and regulated ones take turns.
template <typename Use>
void ForTrials(const PixelFormat& format, int round, Use use) {
    const bool isPlanar = format.layout == Layout::kPlanar;
    const Shape end = isPlanar ? Shape::kCount : Shape::kPadded;
    for (int i = 0; i < static_cast<int>(end); ++i) {
        for (int from = 1; from <= kMostPixels; ++from) {
            const int to = 1 + (from * 32 + round) % kMostPixels;
            const bool isRegulated = (from + to + round / kMostPixels) % 2;
            if (!use(MakeTrial(format, static_cast<Shape>(i), from, to, isRegulated))) return;
        }
    }
}

}  // namespace tavo_test
