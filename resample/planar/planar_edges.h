// The edges of a bilinear planar picture.

#pragma once

#include "resample/frame_drivers.h"

namespace tavo {

// What lies right of the interior, in some of its rows.
void BlendPlaneRight(const Frame& frame, Interior interior, Rows rows);

// All that lies below the interior.
void BlendPlaneBottom(const Frame& frame, Interior interior);

}  // namespace tavo
