// The subtypes of media types, for filters. The one header of this folder that needs Windows.

#pragma once

#include <guiddef.h>

#include "picture/picture_format.h"

namespace tavo {

inline GUID SubtypeOf(const PictureFormat& format) {
    if (format.group == FormatGroup::Rgb) {
        return {format.subtype, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
    }
    return {format.subtype, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
}

// Null for a subtype that the filter cannot scale.
inline const PictureFormat* FormatOfSubtype(const GUID& subtype) {
    for (const PictureFormat& format : AllPictureFormats()) {
        if (IsEqualGUID(SubtypeOf(format), subtype)) return &format;
    }
    return nullptr;
}

}  // namespace tavo
