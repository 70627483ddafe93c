// Start, stop and flush of the stream, and the pacing of the time regulator.

#include "filter/video_regulator.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

constexpr UINT kTimerPeriodMilliseconds = 1;

// Of two times from a clock that may tell anything: wraps where the true difference has no place.
REFERENCE_TIME Difference(REFERENCE_TIME later, REFERENCE_TIME earlier) {
    return static_cast<REFERENCE_TIME>(static_cast<uint64_t>(later) -
                                       static_cast<uint64_t>(earlier));
}

}  // namespace

// May come twice without a stop in between, when the graph fails to pause.
HRESULT CVantrelFilter::StartStreaming() {
    if (!isTimerPeriodRaised_) {
        isTimerPeriodRaised_ = timeBeginPeriod(kTimerPeriodMilliseconds) == TIMERR_NOERROR;
    }
    ResetFrameCounts();
    startTime_ = lastTime_ = timeGetTime();
    isResetPending_ = false;
    regulator_ = RegulatorState();
    ForgetStreamBaseTime();
    if (stopEvent_) ResetEvent(stopEvent_);

    const HRESULT started = CTransformFilter::StartStreaming();
    if (FAILED(started)) return started;
    if (IsRegulatorOn()) ReadStreamBaseTime();
    return started;
}

HRESULT CVantrelFilter::StopStreaming() {
    LowerTimerPeriod();
    ResetFrameCounts();
    startTime_ = lastTime_ = 0;
    ForgetStreamBaseTime();
    ReleaseOwnClock();
    const HRESULT stopped = CTransformFilter::StopStreaming();
    regulator_.bufferEmpty = true;
    return stopped;
}

// Comes while another thread may be inside Receive: the regulator's state is reset by that thread,
// before its next sample. Also while the regulator is off: switched on again, it must not go on
// with slots from before the flush. A stopped filter reads no time: it has no clock, and the next
// start reads it anyway.
HRESULT CVantrelFilter::BeginFlush() {
    const HRESULT begun = CTransformFilter::BeginFlush();
    if (FAILED(begun)) return begun;
    generatedFrames_.store(0);
    if (IsRegulatorOn() && !IsStopped()) {
        ReadStreamBaseTime();
    } else {
        ForgetStreamBaseTime();
    }
    isResetPending_ = true;
    return begun;
}

void CVantrelFilter::AbandonSample() {
    if (stopEvent_) SetEvent(stopEvent_);
}

// A flush that is over already has left its reset behind.
bool CVantrelFilter::SampleIsAbandoned() const {
    return isResetPending_ || m_pInput->IsFlushing() ||
           (stopEvent_ && WaitForSingleObject(stopEvent_, 0) == WAIT_OBJECT_0);
}

HRESULT CVantrelFilter::Receive(IMediaSample* sample) {
    CheckPointer(sample, E_POINTER);
    if (isResetPending_.exchange(false)) {
        regulator_ = RegulatorState();
        generatedFrames_.store(0);
    }
    if (m_pInput->SampleProps()->dwStreamId != AM_STREAM_MEDIA) {
        return CTransformFilter::Receive(sample);
    }
    // Also for a sample that is dropped: the ones after it do not carry the type again.
    HRESULT followed = FollowInputSampleType(sample);
    if (SUCCEEDED(followed)) followed = SettleSourceLayout(sample);
    if (FAILED(followed)) return followed;
    const REFERENCE_TIME duration = frameDuration_.load();
    const bool hasWorkBuffer = conversion_ && conversion_->WorkBuffer().data;
    if (duration > 0 && hasWorkBuffer) return ReceiveRegulated(sample, duration);

    const HRESULT result = CTransformFilter::Receive(sample);
    generatedFrames_.Increment();
    return result;
}

HRESULT CVantrelFilter::ReceiveRegulated(IMediaSample* sample, REFERENCE_TIME duration) {
    sample->IsSyncPoint();
    sample->IsPreroll();
    const HRESULT droppedResult = sample->IsDiscontinuity();
    // Deliberate: every regulated frame is a sync point without preroll or discontinuity, whatever
    // the input says.
    regulator_.syncPoint = TRUE;
    regulator_.preroll = FALSE;
    regulator_.discontinuity = FALSE;

    const SampleWindow window = WindowOf(sample, duration);
    if (regulator_.nextSlotEnd >= window.end) return droppedResult;
    regulator_.isRegulating = true;
    const HRESULT result = DeliverSlots(sample, window, duration);
    regulator_.isRegulating = false;
    return result;
}

// One frame for every slot that ends inside the sample, whatever becomes of the frame; the last
// one's result counts. A rate that changes meanwhile is that of the next slot; 0 ends the slots.
HRESULT CVantrelFilter::DeliverSlots(IMediaSample* sample, SampleWindow window,
                                     REFERENCE_TIME duration) {
    HRESULT result = S_FALSE;
    while (regulator_.nextSlotEnd < window.end && !SampleIsAbandoned()) {
        regulator_.BeginSlot(window.start, duration);
        result = CTransformFilter::Receive(sample);
        generatedFrames_.Increment();
        const REFERENCE_TIME nextDuration = frameDuration_.load();
        regulator_.EndSlot(nextDuration > 0 ? nextDuration : duration);
        if (nextDuration <= 0) break;
        duration = nextDuration;
    }
    return result;
}

// The sample's picture is used in the slot in which the sample starts, and in the first slot of
// all; the others repeat the kept frame. Where none could be kept, the sample's has to do.
void CVantrelFilter::RegulatorState::BeginSlot(REFERENCE_TIME sampleStart,
                                               REFERENCE_TIME duration) {
    outputStart = nextSlotEnd - duration;
    if (outputStart < 0) {
        nextSlotEnd = duration;
        outputStart = 0;
    }
    outputStop = nextSlotEnd;
    const bool startsHere = outputStop >= sampleStart && outputStart < sampleStart;
    const bool isFirstSlot = outputStop == duration;
    repeatFrame = true;
    bufferEmpty = startsHere || isFirstSlot || !hasKeptFrame;
}

// The end of time is the end of all slots.
void CVantrelFilter::RegulatorState::EndSlot(REFERENCE_TIME nextDuration) {
    const REFERENCE_TIME left = (std::numeric_limits<REFERENCE_TIME>::max)() - nextSlotEnd;
    nextSlotEnd += (std::min)(left, nextDuration);
}

// A sample without times, or without an end, lies where the clock is now.
CVantrelFilter::SampleWindow CVantrelFilter::WindowOf(IMediaSample* sample,
                                                      REFERENCE_TIME duration) {
    SampleWindow window = {};
    if (sample->GetTime(&window.start, &window.end) == S_OK) return window;
    const REFERENCE_TIME now = StreamTimeByClock();
    return {now >= duration ? now - duration : now, now};
}

// The clock may change while the stream runs; the stream time that it shows goes on. The filter
// lock comes first, as when the stream starts and stops.
STDMETHODIMP CVantrelFilter::SetSyncSource(IReferenceClock* clock) {
    CAutoLock filterLock(&m_csFilter);
    CAutoLock lock(&clockLock_);
    REFERENCE_TIME before = 0;
    REFERENCE_TIME after = 0;
    const bool keepsTime = hasStreamBaseTime_ && ReadClock(&before);
    const HRESULT result = CTransformFilter::SetSyncSource(clock);
    hasStreamBaseTime_ = keepsTime && ReadClock(&after);
    streamBaseTime_ = Difference(after, Difference(before, streamBaseTime_));
    return result;
}

void CVantrelFilter::ReadStreamBaseTime() {
    CAutoLock lock(&clockLock_);
    hasStreamBaseTime_ = ReadClock(&streamBaseTime_);
}

void CVantrelFilter::ForgetStreamBaseTime() {
    CAutoLock lock(&clockLock_);
    hasStreamBaseTime_ = false;
}

// Time since the stream base time, which is now if nobody has read it: the regulator was off then.
// Without a clock that tells the time, the stream stays where it began.
REFERENCE_TIME CVantrelFilter::StreamTimeByClock() {
    CAutoLock lock(&clockLock_);
    if (!hasStreamBaseTime_) ReadStreamBaseTime();
    REFERENCE_TIME now = 0;
    return hasStreamBaseTime_ && ReadClock(&now) ? Difference(now, streamBaseTime_) : 0;
}

// The graph's clock, or one of the filter's own that is made when it is first needed and kept until
// the stream stops. Under the clock lock only.
bool CVantrelFilter::ReadClock(REFERENCE_TIME* now) {
    IReferenceClock* const clock = m_pClock ? m_pClock : OwnClock();
    return clock && SUCCEEDED(clock->GetTime(now));
}

IReferenceClock* CVantrelFilter::OwnClock() {
    if (ownClock_) return ownClock_;
    HRESULT result = S_OK;
    auto* const made =
        new (std::nothrow) CBaseReferenceClock(NAME("System Clock"), nullptr, &result);
    if (!made) return nullptr;
    made->AddRef();
    if (FAILED(result)) {
        made->Release();
        return nullptr;
    }
    return ownClock_ = made;
}

void CVantrelFilter::ReleaseOwnClock() {
    CAutoLock lock(&clockLock_);
    if (ownClock_) ownClock_->Release();
    ownClock_ = nullptr;
}

void CVantrelFilter::LowerTimerPeriod() {
    if (isTimerPeriodRaised_) timeEndPeriod(kTimerPeriodMilliseconds);
    isTimerPeriodRaised_ = false;
}

// Before the times, which change one after the other: whoever reads them meanwhile counts no
// frames.
void CVantrelFilter::ResetFrameCounts() {
    processingTime_ = 0;
    processedFrames_ = 0;
    generatedFrames_.store(0);
}
