// Start, stop and flush of the stream, and the pacing of the time regulator.

#include "filter/vantrel_filter.h"

using tavo::TimeWindow;

namespace {

constexpr UINT kTimerPeriodMilliseconds = 1;

}  // namespace

// The base starts the stream before the pins: when one of them fails, no stop ever comes.
STDMETHODIMP CVantrelFilter::Pause() {
    CAutoLock filterLock(&m_csFilter);
    const HRESULT paused = CTransformFilter::Pause();
    if (FAILED(paused) && IsStopped()) {
        CAutoLock streamingLock(&m_csReceive);
        StopStreaming();
    }
    return paused;
}

HRESULT CVantrelFilter::StartStreaming() {
    if (!isTimerPeriodRaised_) {
        isTimerPeriodRaised_ = timeBeginPeriod(kTimerPeriodMilliseconds) == TIMERR_NOERROR;
    }
    statistics_.BeginStream(timeGetTime());
    isResetPending_ = false;
    regulator_.Restart();
    streamClock_.ForgetStream();
    isStopping_ = false;
    if (stopEvent_) ResetEvent(stopEvent_);

    const HRESULT started = CTransformFilter::StartStreaming();
    if (FAILED(started)) return started;
    if (IsRegulatorOn()) streamClock_.BeginStream();
    return started;
}

HRESULT CVantrelFilter::StopStreaming() {
    LowerTimerPeriod();
    statistics_.EndStream();
    streamClock_.ForgetStream();
    streamClock_.ReleaseOwnClock();
    const HRESULT stopped = CTransformFilter::StopStreaming();
    regulator_.Stop();
    return stopped;
}

// Comes while another thread may be inside Receive: the regulator's state is reset by that thread,
// before its next sample. Reset even while the regulator is off: switched on again, it
// would go on with slots from before the flush. A stopped filter reads no time: it has no clock,
// and the next start reads it anyway.
HRESULT CVantrelFilter::BeginFlush() {
    const HRESULT begun = CTransformFilter::BeginFlush();
    if (FAILED(begun)) return begun;
    statistics_.ResetGeneratedFrames();
    if (IsRegulatorOn() && !IsStopped()) {
        streamClock_.BeginStream();
    } else {
        streamClock_.ForgetStream();
    }
    isResetPending_ = true;
    return begun;
}

void CVantrelFilter::AbandonSample() {
    isStopping_ = true;
    if (stopEvent_) SetEvent(stopEvent_);
}

// isResetPending_ catches a flush that began and ended during this sample: IsFlushing is false
// again by then. The event is not asked: a wait that times out gives the processor away, once for
// every slot.
bool CVantrelFilter::SampleIsAbandoned() const {
    return isResetPending_ || isStopping_ || m_pInput->IsFlushing();
}

HRESULT CVantrelFilter::Receive(IMediaSample* sample) {
    CheckPointer(sample, E_POINTER);
    if (isResetPending_.exchange(false)) {
        regulator_.Restart();
        statistics_.ResetGeneratedFrames();
    }
    if (m_pInput->SampleProps()->dwStreamId != AM_STREAM_MEDIA) {
        return CTransformFilter::Receive(sample);
    }
    // Also for a sample that is dropped: the ones after it do not carry the type again.
    HRESULT followed = FollowInputSampleType();
    if (SUCCEEDED(followed)) followed = SettleSourceLayout(sample);
    if (FAILED(followed)) return followed;
    const REFERENCE_TIME duration = frameDuration_.load();
    const bool hasWorkBuffer = conversion_ && conversion_->WorkBuffer().data;
    if (duration > 0 && hasWorkBuffer) return ReceiveRegulated(sample, duration);

    const HRESULT result = SendFrame(sample);
    statistics_.CountGeneratedFrame();
    return result;
}

HRESULT CVantrelFilter::ReceiveRegulated(IMediaSample* sample, REFERENCE_TIME duration) {
    // Deliberate: a sample that is dropped returns what IsDiscontinuity answered, S_OK for one and
    // S_FALSE for none; the other two answers are ignored.
    sample->IsSyncPoint();
    sample->IsPreroll();
    const HRESULT droppedResult = sample->IsDiscontinuity();
    const TimeWindow window = WindowOf(sample, duration);
    return regulator_.HasSlotIn(window) ? DeliverSlots(sample, window, duration) : droppedResult;
}

// One frame for every slot that ends inside the sample, whatever becomes of the frame; the last
// one's result counts. A rate that changes meanwhile is that of the next slot; 0 ends the slots.
HRESULT CVantrelFilter::DeliverSlots(IMediaSample* sample, TimeWindow window,
                                     REFERENCE_TIME duration) {
    HRESULT result = S_FALSE;
    while (duration > 0 && regulator_.HasSlotIn(window) && !SampleIsAbandoned()) {
        regulator_.BeginSlot(window, duration);
        result = SendFrame(sample);
        statistics_.CountGeneratedFrame();
        const REFERENCE_TIME nextDuration = frameDuration_.load();
        regulator_.EndSlot(nextDuration > 0 ? nextDuration : duration);
        duration = nextDuration;
    }
    return result;
}

// A sample without times, or without an end, lies where the clock is now.
TimeWindow CVantrelFilter::WindowOf(IMediaSample* sample, REFERENCE_TIME duration) {
    TimeWindow window;
    if (sample->GetTime(&window.start, &window.end) == S_OK) return window;
    const REFERENCE_TIME now = streamClock_.Now();
    return {now >= duration ? now - duration : now, now};
}

// The filter lock comes first, as when the stream starts and stops.
STDMETHODIMP CVantrelFilter::SetSyncSource(IReferenceClock* clock) {
    CAutoLock filterLock(&m_csFilter);
    const HRESULT result = CTransformFilter::SetSyncSource(clock);
    streamClock_.SetGraphClock(clock);
    return result;
}

void CVantrelFilter::LowerTimerPeriod() {
    if (isTimerPeriodRaised_) timeEndPeriod(kTimerPeriodMilliseconds);
    isTimerPeriodRaised_ = false;
}
