// The shape in which a picture is to be shown.

#pragma once

#include "host/avi/aspect_ratio.h"
#include "host/graph/output_size.h"
#include "streams.h"

namespace tavo {

// As the type says, or else as pixels of that shape make it. Unknown when nobody says.
AspectRatio ShownAspect(const AM_MEDIA_TYPE& type, PictureSize size, AspectRatio pixel);

// Whether a picture of that size has this shape with square pixels.
bool IsSameShape(AspectRatio aspect, PictureSize size);

}  // namespace tavo
