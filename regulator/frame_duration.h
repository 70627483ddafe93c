// From frames per second to the duration of a frame.

#pragma once

#include <cstdint>

namespace tavo {

// The duration of a frame in units of 100 ns: 1,000,000,000 divided by the rate in hundredths of a
// frame per second, both truncated. 0 for a rate that none can express: below a hundredth, above
// one frame per unit of time, not a number. By reference, so that the rate passes through no
// register of the x87 unit, which may hold MMX values. Any thread.
int64_t FrameDuration(const double& framesPerSecond);

}  // namespace tavo
