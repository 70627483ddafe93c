// Formats lines without allocating, and writes them in blocks.

#include "host/graph/frame_log.h"

#include <charconv>
#include <cstring>

#include "host/avi/frame_rate.h"

namespace tavo {
namespace {

constexpr char kHeading[] = "input,in_start,in_stop,output,out_start,out_stop,what,ms\n";

// A line in the making; longer than any.
struct Line {
    char text[256];
    size_t length = 0;

    void Put(const char* part, size_t size) {
        std::memcpy(text + length, part, size);
        length += size;
    }
    void Put(const char* part) { Put(part, std::strlen(part)); }
    void Number(uint64_t value) {
        const auto result = std::to_chars(text + length, text + sizeof(text), value);
        length = static_cast<size_t>(result.ptr - text);
    }
    // `value` of 10^-digits, below 10^-digits * 2^64.
    void Decimal(uint64_t value, uint64_t unit) {
        Number(value / unit);
        text[length++] = '.';
        for (uint64_t rest = value % unit, place = unit / 10; place > 0; place /= 10) {
            text[length++] = static_cast<char>('0' + rest / place % 10);
        }
    }
    void Seconds(const std::optional<int64_t>& time) {
        if (!time) return;
        if (*time < 0) text[length++] = '-';
        const auto bits = static_cast<uint64_t>(*time);
        Decimal(*time < 0 ? 0 - bits : bits, kUnitsPerSecond);
    }
};

}  // namespace

FrameLog::FrameLog(ByteStore& store, Clock clock)
    : store_(store), clock_(clock), block_(std::make_unique<char[]>(kBlock)) {
    Append(kHeading, sizeof(kHeading) - 1);
}

void FrameLog::FrameIn(const FrameTimes& times) {
    inputTimes_ = times;
    taken_ = false;
    workedAll_ = 0;
    began_ = clock_();
}

void FrameLog::OutBegins() {
    worked_ = clock_() - began_;
    workedAll_ += worked_;
}

void FrameLog::OutEnds(const FrameTimes& times, bool shows, bool accepted) {
    if (accepted) {
        const bool timed = inputTimes_.start && inputTimes_.stop;
        const bool takes = !taken_ && (shows || !timed);
        WriteLine(&times, takes ? "taken" : "repeated", worked_);
        taken_ = taken_ || takes;
        ++output_;
    }
    began_ = clock_();
}

void FrameLog::FrameDone(bool accepted) {
    if (!accepted) return;
    if (!taken_) WriteLine(nullptr, "dropped", workedAll_ + clock_() - began_);
    ++input_;
}

void FrameLog::WriteLine(const FrameTimes* output, const char* what, int64_t nanoseconds) {
    Line line;
    line.Number(input_);
    line.Put(",");
    line.Seconds(inputTimes_.start);
    line.Put(",");
    line.Seconds(inputTimes_.stop);
    line.Put(",");
    if (output != nullptr) line.Number(output_);
    line.Put(",");
    if (output != nullptr) line.Seconds(output->start);
    line.Put(",");
    if (output != nullptr) line.Seconds(output->stop);
    line.Put(",");
    line.Put(what);
    line.Put(",");
    // In thousandths.
    line.Decimal(nanoseconds > 0 ? static_cast<uint64_t>(nanoseconds) / 1000 : 0, 1000);
    line.Put("\n");
    Append(line.text, line.length);
    ++lines_;
}

void FrameLog::Append(const char* text, size_t length) {
    if (kBlock - used_ < length) Flush();
    std::memcpy(block_.get() + used_, text, length);
    used_ += length;
}

void FrameLog::Flush() {
    if (result_ == IoResult::Ok) {
        const std::span<const char> block(block_.get(), used_);
        result_ = store_.WriteAt(written_, std::as_bytes(block));
        written_ += used_;
    }
    used_ = 0;
}

IoResult FrameLog::Finish() {
    Flush();
    return result_;
}

}  // namespace tavo
