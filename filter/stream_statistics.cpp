#include "filter/stream_statistics.h"

#include "cpu/double_precision.h"

namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

// Out of line: see DoublePrecisionScope. Integers become doubles inside as well.
TAVO_OUT_OF_LINE double Quotient(int64_t dividend, uint32_t divisor, double factor) {
    return static_cast<double>(dividend) / divisor * factor;
}

void SetQuotient(int64_t dividend, uint32_t divisor, double factor, double* result) {
    const tavo::DoublePrecisionScope scope;
    *result = divisor == 0 ? 0.0 : Quotient(dividend, divisor, factor);
}

}  // namespace

void StreamStatistics::BeginStream(uint32_t now) {
    ResetCounts();
    startTime_ = lastTime_ = now;
}

void StreamStatistics::EndStream() {
    ResetCounts();
    startTime_ = lastTime_ = 0;
}

// Comes before the times change: whoever reads between the two counts no frames, and gets 0.
void StreamStatistics::ResetCounts() {
    processingTime_ = 0;
    processedFrames_ = 0;
    generatedFrames_.store(0);
}

void StreamStatistics::AddWork(uint32_t began, uint32_t ended) {
    lastTime_ = ended;
    processingTime_ += ended - began;
}

void StreamStatistics::GetMeanWork(double* milliseconds) const {
    const uint32_t frames = processedFrames_;
    SetQuotient(processingTime_, frames, 1.0, milliseconds);
}

// The time is read first: see ResetCounts.
void StreamStatistics::GetProcessedPerSecond(double* fps) const {
    const uint32_t milliseconds = StreamingTime();
    SetQuotient(processedFrames_, milliseconds, kMillisecondsPerSecond, fps);
}

void StreamStatistics::GetGeneratedPerSecond(double* fps) const {
    const uint32_t milliseconds = StreamingTime();
    SetQuotient(generatedFrames_.load(), milliseconds, kMillisecondsPerSecond, fps);
}
