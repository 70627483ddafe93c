#include "regulator/frame_duration.h"

#include "cpu/double_precision.h"

namespace tavo {
namespace {

// Of a rate of one hundredth.
constexpr int64_t kHundredthsDuration = 1'000'000'000;

// Out of line: see DoublePrecisionScope.
TAVO_OUT_OF_LINE int64_t Truncated(const double& framesPerSecond) {
    const double hundredths = framesPerSecond * 100;
    if (!(hundredths >= 1.0) || hundredths >= static_cast<double>(kHundredthsDuration) + 1.0) {
        return 0;
    }
    return kHundredthsDuration / static_cast<int64_t>(hundredths);
}

}  // namespace

int64_t FrameDuration(const double& framesPerSecond) {
    const DoublePrecisionScope scope;
    return Truncated(framesPerSecond);
}

}  // namespace tavo
