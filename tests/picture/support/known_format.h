// From the tests' formats to the product's.
#pragma once

#include "picture/picture_format.h"
#include "tests/picture/support/pixel_formats.h"

namespace tavo_test {

inline const tavo::PictureFormat* KnownFormat(const PixelFormat& format) {
    return format.layout == Layout::kRgb ? tavo::FormatOfSetting(format.setting)
                                         : tavo::FormatOfFourCc(format.compression);
}

}  // namespace tavo_test
