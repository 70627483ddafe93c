// Display aspect ratios.

#pragma once

#include "host/avi/aspect_ratio.h"
#include "host/graph/output_size.h"
#include "streams.h"

namespace tavo {

// The one in the media type, else the one that follows from the shape of the pixels. Unknown when
// both are.
AspectRatio DisplayAspectOf(const AM_MEDIA_TYPE& type, PictureSize size, AspectRatio pixel);

// Whether a picture of that size has this ratio with square pixels.
bool IsSameShape(AspectRatio aspect, PictureSize size);

}  // namespace tavo
