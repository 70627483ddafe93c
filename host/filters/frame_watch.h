// Watches each frame on its way through the scaling filter.

#pragma once

#include <cstdint>
#include <optional>

namespace tavo {

// In units of 100 ns; empty when the sample does not say.
struct FrameTimes {
    std::optional<int64_t> start;
    std::optional<int64_t> stop;
};

// From the result of IMediaSample::GetTime and what it returned.
inline FrameTimes TimesOf(int32_t result, int64_t start, int64_t stop) {
    FrameTimes times;
    if (result >= 0) times.start = start;
    if (result == 0) times.stop = stop;
    return times;
}

// For each frame that goes in: FrameIn, then OutBegins and OutEnds for each frame that comes out,
// then FrameDone. All on the streaming thread, and none throws.
class FrameWatch {
  public:
    virtual void FrameIn(const FrameTimes& times) = 0;
    virtual void OutBegins() = 0;
    // `shows`: it is the first one that shows the picture of the frame that went in, as far as
    // times tell.
    virtual void OutEnds(const FrameTimes& times, bool shows, bool accepted) = 0;
    virtual void FrameDone(bool accepted) = 0;

  protected:
    ~FrameWatch() = default;
};

}  // namespace tavo
