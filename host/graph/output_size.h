// The size that is asked of the filter: from the command line, the source, and what the format of
// the pictures can hold.

#pragma once

#include "host/avi/aspect_ratio.h"
#include "host/avi/pixel_format.h"
#include "host/graph/run_options.h"

namespace tavo {

struct PictureSize {
    int width = 0;
    int height = 0;

    bool operator==(const PictureSize&) const = default;
};

// How a picture is shown whose pixels have that shape.
AspectRatio DisplayAspect(PictureSize size, AspectRatio pixel);

// Rounded up to a size whose planes have whole samples, or where that is too large, down.
PictureSize RoundedFor(PixelFormat format, PictureSize size);

// The largest size within `box` that shows a picture of `source` in its shape, with square pixels.
// A picture that is shown no larger than the box keeps its size. `pixel` may be unknown: square.
PictureSize FitInside(PictureSize box, PictureSize source, AspectRatio pixel);

struct SizeChoice {
    PictureSize wanted;   // without regard to the format
    PictureSize rounded;  // what comes out
    // For the filter: 0 where a side stays as the source's.
    PictureSize setting;
};

SizeChoice ChooseSize(const RunOptions& options, PixelFormat format, PictureSize source,
                      AspectRatio pixel);

}  // namespace tavo
