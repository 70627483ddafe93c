// The edges of a bilinear planar picture.

#pragma once

#include "resample/frame_drivers.h"

namespace tavo {

// The columns right of the interior, in some of its rows.
void BlendPlaneRight(const Frame& frame, Interior interior, Rows rows);

// All rows below the interior.
void BlendPlaneBottom(const Frame& frame, Interior interior);

}  // namespace tavo
