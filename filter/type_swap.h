// Exchanges two media types without a copy, which could fail.

#pragma once

#include "streams.h"

#include <utility>

inline void SwapTypes(CMediaType& a, CMediaType& b) {
    std::swap(static_cast<AM_MEDIA_TYPE&>(a), static_cast<AM_MEDIA_TYPE&>(b));
}
