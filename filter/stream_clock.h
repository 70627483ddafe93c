// Stream time for samples that carry none: by the graph's clock or, where the graph has none, by
// one of the filter's own, which is made when it is first needed and kept until it is released.
//
// Any thread. The lock is held while a clock is asked for its time, and nobody who holds it asks
// for another lock of the filter's.

#pragma once

#include "streams.h"

#include "regulator/stream_time.h"

class StreamClock {
  public:
    StreamClock() = default;
    ~StreamClock();
    StreamClock(const StreamClock&) = delete;
    StreamClock& operator=(const StreamClock&) = delete;

    // The graph has this clock from now on, or none; stream time goes on where it is, and where the
    // new clock does not tell the time, as soon as one does.
    void SetGraphClock(IReferenceClock* clock);

    // The stream begins now. Without a clock that tells the time it does not begin.
    void BeginStream();
    // The stream begins when it is next asked for its time.
    void ForgetStream();

    // Where the stream is. 0, without a clock that tells the time.
    REFERENCE_TIME Now();

    void ReleaseOwnClock();

  private:
    bool Read(REFERENCE_TIME* now);
    IReferenceClock* OwnClock();

    CCritSec lock_;
    tavo::StreamTime streamTime_;
    IReferenceClock* graphClock_ = nullptr;  // counted
    IReferenceClock* ownClock_ = nullptr;    // counted
};
