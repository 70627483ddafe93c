// Reads the aspect ratio of a media type.

#include "host/graph/display_aspect.h"

#include <dvdmedia.h>

#include <algorithm>
#include <cmath>

namespace tavo {

AspectRatio DisplayAspectOf(const AM_MEDIA_TYPE& type, PictureSize size, AspectRatio pixel) {
    if (type.formattype == FORMAT_VideoInfo2 && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
        const auto* const header = reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat);
        const AspectRatio aspect = Reduced(header->dwPictAspectRatioX, header->dwPictAspectRatioY);
        if (aspect.IsKnown() && !IsSameShape(aspect, size)) return aspect;
    }
    return DisplayAspect(size, pixel);
}

// Ratios come rounded; a hundredth does not show.
bool IsSameShape(AspectRatio aspect, PictureSize size) {
    const double wanted = static_cast<double>(aspect.x) / aspect.y;
    const double actual = static_cast<double>(size.width) / std::max(size.height, 1);
    return std::abs(wanted / actual - 1.0) < 0.01;
}

}  // namespace tavo
