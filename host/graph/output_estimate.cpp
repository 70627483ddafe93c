// Counts frames by time.

#include "host/graph/output_estimate.h"

#include "host/avi/frame_rate.h"

namespace tavo {
namespace {

// Most of it is the space for the list of segments.
constexpr uint64_t kHeaderBytes = 17'000;
constexpr uint64_t kSoundHeaderBytes = 16'600;
// A chunk header and the entries in two indexes.
constexpr uint64_t kBytesBesideFrame = 8 + 8 + 16;
constexpr uint64_t kBytesBesideSound = kBytesBesideFrame;

// A slot that ends with the input is not begun.
uint64_t SlotsWithin(int64_t duration, double fps) {
    const double slots = static_cast<double>(duration - 1) / kUnitsPerSecond * fps;
    return slots < 0 ? 0 : static_cast<uint64_t>(slots);
}

std::optional<uint64_t> FramesOf(const EstimateFacts& facts) {
    if (facts.fps > 0) {
        if (facts.duration <= 0) return std::nullopt;
        return SlotsWithin(facts.duration, facts.fps);
    }
    if (facts.inputFrames) return facts.inputFrames;
    if (facts.duration <= 0 || facts.frameDuration <= 0) return std::nullopt;
    return static_cast<uint64_t>((facts.duration + facts.frameDuration / 2) / facts.frameDuration);
}

}  // namespace

OutputEstimate EstimateOutput(const EstimateFacts& facts) {
    OutputEstimate estimate;
    estimate.frames = FramesOf(facts);
    if (!estimate.frames || facts.frameBytes == 0) return estimate;
    const uint64_t chunk = (uint64_t{facts.frameBytes} + 1) / 2 * 2 + kBytesBesideFrame;
    estimate.bytes = kHeaderBytes + *estimate.frames * chunk;
    if (facts.soundBytesPerSecond > 0) {
        const double seconds = static_cast<double>(facts.duration) / kUnitsPerSecond;
        *estimate.bytes += kSoundHeaderBytes + *estimate.frames * kBytesBesideSound +
                           static_cast<uint64_t>(seconds * facts.soundBytesPerSecond);
    }
    return estimate;
}

}  // namespace tavo
