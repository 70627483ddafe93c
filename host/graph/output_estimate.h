// How many frames a run will write, and how large its file will be.

#pragma once

#include <cstdint>
#include <optional>

namespace tavo {

// Times are in units of 100 ns; 0 where they are unknown.
struct EstimateFacts {
    int64_t duration = 0;                 // of the input
    int64_t frameDuration = 0;            // that the input names
    std::optional<uint64_t> inputFrames;  // where they were counted
    double fps = 0.0;                     // fixed rate; 0 when there is none
    uint32_t frameBytes = 0;              // of an output frame
    uint32_t soundBytesPerSecond = 0;     // 0 without sound
};

// Empty where nothing can be said. Frames of irregular times are not foreseen.
struct OutputEstimate {
    std::optional<uint64_t> frames;
    std::optional<uint64_t> bytes;
};

OutputEstimate EstimateOutput(const EstimateFacts& facts);

}  // namespace tavo
