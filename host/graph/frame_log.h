// A line of comma-separated values for each frame of a run.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/avi/byte_store.h"
#include "host/filters/frame_watch.h"

namespace tavo {

// Columns: number of the frame that went in, from 0, with its times; number of the frame that came
// out, with its times; "taken", "repeated" or "dropped"; milliseconds that the filter took. Times
// are in seconds. What is unknown, or is not there, is empty.
//
// A frame that is taken shows the picture of its input for the first time; one that is repeated
// shows what came out before. A dropped one never came out. Memory does not grow.
class FrameLog final : public FrameWatch {
  public:
    using Clock = int64_t (*)();  // in nanoseconds

    // `store` is empty and outlives the log. May throw std::bad_alloc.
    FrameLog(ByteStore& store, Clock clock);

    void FrameIn(const FrameTimes& times) override;
    void OutBegins() override;
    void OutEnds(const FrameTimes& times, bool shows, bool accepted) override;
    void FrameDone(bool accepted) override;

    // Writes the rest; after the last frame. Returns the first failure; nothing is written after
    // one.
    IoResult Finish();
    uint64_t LineCount() const { return lines_; }

  private:
    static constexpr size_t kBlock = size_t{64} << 10;

    void WriteLine(const FrameTimes* output, const char* what, int64_t nanoseconds);
    void Append(const char* text, size_t length);
    void Flush();

    ByteStore& store_;
    const Clock clock_;
    const std::unique_ptr<char[]> block_;
    size_t used_ = 0;
    uint64_t written_ = 0;
    IoResult result_ = IoResult::Ok;
    uint64_t lines_ = 0;  // without the heading
    uint64_t input_ = 0;
    uint64_t output_ = 0;
    FrameTimes inputTimes_;
    bool taken_ = false;     // the frame that went in has come out
    int64_t began_ = 0;      // the filter's work on the next frame
    int64_t worked_ = 0;     // on the frame that is coming out
    int64_t workedAll_ = 0;  // on the frame that went in
};

}  // namespace tavo
