// Forwards everything to the pin downstream, and counts samples.

#include "host/filters/frame_counter_filter.h"

#include "host/filters/stopped_receiver.h"

using tavo::TimeSection;

namespace {

// {A7D0C0C1-2E5B-4C44-8F0C-0E6A0B6D9C57}; never registered.
constexpr CLSID kCounterClass = {
    0xa7d0c0c1, 0x2e5b, 0x4c44, {0x8f, 0x0c, 0x0e, 0x6a, 0x0b, 0x6d, 0x9c, 0x57}};

}  // namespace

CFrameCounter::CFrameCounter(Arrivals& arrivals, HRESULT* phr)
    : CBaseFilter(NAME("Frame counter"), nullptr, &m_lock, kCounterClass),
      m_arrivals(arrivals),
      m_input(this, &m_lock, phr),
      m_output(this, &m_lock, phr) {}

CBasePin* CFrameCounter::GetPin(int n) {
    if (n == 0) return &m_input;
    return n == 1 ? static_cast<CBasePin*>(&m_output) : nullptr;
}

CFrameCounter::Counts CFrameCounter::Read() {
    CAutoLock lock(&m_countsLock);
    return m_counts;
}

HRESULT CFrameCounter::Receive(IMediaSample* sample) {
    if (m_section.IsAll()) return Pass(sample);
    if (m_sectionEnded) return m_arrivals.WantsMore() ? S_OK : S_FALSE;
    m_place = PlaceOf(*sample);
    if (m_place == TimeSection::Place::Before) {
        HoldType(*sample);
        return S_OK;
    }
    if (m_place == TimeSection::Place::Behind) {
        m_sectionEnded = true;
        m_output.DeliverEndOfStream();
        return m_arrivals.WantsMore() ? S_OK : S_FALSE;
    }
    const HRESULT hr = Shift(*sample);
    return SUCCEEDED(hr) ? Pass(sample) : hr;
}

// A frame without a time goes where the one before it went, the first one to the beginning.
TimeSection::Place CFrameCounter::PlaceOf(IMediaSample& sample) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (FAILED(sample.GetTime(&start, &stop))) {
        return m_section.start == 0 && m_place == TimeSection::Place::Before
                   ? TimeSection::Place::Inside
                   : m_place;
    }
    return m_section.PlaceOf(m_segment + start);
}

// The next frame has to bring it.
void CFrameCounter::HoldType(IMediaSample& sample) {
    AM_MEDIA_TYPE* type = nullptr;
    if (sample.GetMediaType(&type) != S_OK || type == nullptr) return;
    m_heldType.Set(*type);
    DeleteMediaType(type);
}

HRESULT CFrameCounter::Shift(IMediaSample& sample) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    if (SUCCEEDED(times)) {
        const REFERENCE_TIME shift = m_segment - m_section.start;
        start += shift;
        stop += shift;
        const HRESULT hr = sample.SetTime(&start, times == S_OK ? &stop : nullptr);
        if (FAILED(hr)) return hr;
    }
    if (!m_heldType.IsValid()) return S_OK;
    AM_MEDIA_TYPE* type = nullptr;
    const bool hasOwn = sample.GetMediaType(&type) == S_OK;
    DeleteMediaType(type);
    const HRESULT hr = hasOwn ? S_OK : sample.SetMediaType(&m_heldType);
    if (SUCCEEDED(hr)) m_heldType.InitMediaType();
    return hr;
}

HRESULT CFrameCounter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    m_segment = start;
    if (m_section.IsAll()) return m_output.DeliverNewSegment(start, stop, rate);
    return m_output.DeliverNewSegment(0, m_section.duration, rate);
}

HRESULT CFrameCounter::EndOfStream() {
    if (m_sectionEnded) return S_OK;
    return m_output.DeliverEndOfStream();
}

HRESULT CFrameCounter::Pass(IMediaSample* sample) {
    IMemInputPin* const peer = m_output.PeerInput();
    if (peer == nullptr) return VFW_E_NOT_CONNECTED;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample->GetTime(&start, &stop);
    const bool timed = SUCCEEDED(times);
    if (times == S_OK) m_arrivals.Expect(start, stop);
    if (m_watch != nullptr) m_watch->FrameIn(tavo::TimesOf(times, start, stop));
    const uint64_t before = m_arrivals.Count();
    const HRESULT hr = peer->Receive(sample);
    const uint64_t results = m_arrivals.Count() - before;
    const bool shown = results > 0 && (times != S_OK || m_arrivals.IsShown());
    if (m_watch != nullptr) m_watch->FrameDone(SUCCEEDED(hr) || results > 0);

    CAutoLock lock(&m_countsLock);
    if (FAILED(hr)) {
        const bool isFirst = SUCCEEDED(m_counts.failure);
        if (isFirst && !tavo::ReceiverHasStopped(hr)) m_counts.failure = hr;
        // A stop in mid-sample may let some frames out.
        if (results == 0) return hr;
    }
    ++m_counts.frames;
    if (!shown) ++m_counts.dropped;
    m_counts.repeated += results - (shown ? 1 : 0);
    if (timed) {
        m_counts.position = start;
        m_counts.stamps.Add(start);
    } else {
        m_counts.stamps.AddUnknown();
    }
    return hr;
}

CFrameCounterInput::CFrameCounterInput(CFrameCounter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseInputPin(NAME("Frame counter input"), filter, lock, phr, L"In"), m_counter(*filter) {}

HRESULT CFrameCounterInput::CheckMediaType(const CMediaType* type) {
    IPin* const peer = m_counter.Output().GetConnected();
    if (peer == nullptr) return VFW_E_NOT_CONNECTED;
    return peer->QueryAccept(type) == S_OK ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

STDMETHODIMP CFrameCounterInput::GetAllocator(IMemAllocator** allocator) {
    CheckPointer(allocator, E_POINTER);
    IMemInputPin* const peer = m_counter.Output().PeerInput();
    return peer != nullptr ? peer->GetAllocator(allocator) : VFW_E_NO_ALLOCATOR;
}

STDMETHODIMP CFrameCounterInput::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
    const HRESULT hr = CBaseInputPin::NotifyAllocator(allocator, readOnly);
    IMemInputPin* const peer = m_counter.Output().PeerInput();
    return SUCCEEDED(hr) && peer != nullptr ? peer->NotifyAllocator(allocator, readOnly) : hr;
}

STDMETHODIMP CFrameCounterInput::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    CheckPointer(properties, E_POINTER);
    IMemInputPin* const peer = m_counter.Output().PeerInput();
    return peer != nullptr ? peer->GetAllocatorRequirements(properties) : E_NOTIMPL;
}

STDMETHODIMP CFrameCounterInput::Receive(IMediaSample* sample) {
    HRESULT hr = CBaseInputPin::Receive(sample);
    if (hr != S_OK) return hr;
    hr = m_counter.Receive(sample);
    if (m_counter.HasSectionEnded()) return hr;
    // A dropped frame gives S_FALSE, which many sources take for the end of the stream.
    return hr == S_FALSE && !IsFlushing() && !IsStopped() ? S_OK : hr;
}

STDMETHODIMP CFrameCounterInput::EndOfStream() {
    const HRESULT hr = CheckStreaming();
    return hr == S_OK ? m_counter.EndOfStream() : hr;
}

STDMETHODIMP CFrameCounterInput::BeginFlush() {
    const HRESULT hr = CBaseInputPin::BeginFlush();
    return SUCCEEDED(hr) ? m_counter.Output().DeliverBeginFlush() : hr;
}

STDMETHODIMP CFrameCounterInput::EndFlush() {
    m_counter.RestartSection();
    const HRESULT hr = m_counter.Output().DeliverEndFlush();
    return SUCCEEDED(hr) ? CBaseInputPin::EndFlush() : hr;
}

STDMETHODIMP CFrameCounterInput::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop,
                                            double rate) {
    CBaseInputPin::NewSegment(start, stop, rate);
    return m_counter.NewSegment(start, stop, rate);
}

CFrameCounterOutput::CFrameCounterOutput(CFrameCounter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseOutputPin(NAME("Frame counter output"), filter, lock, phr, L"Out") {}

HRESULT CFrameCounterOutput::CheckMediaType(const CMediaType* type) {
    return type->majortype == MEDIATYPE_Video ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

// The pins upstream and downstream negotiate the allocator through the input pin here.
HRESULT CFrameCounterOutput::DecideAllocator(IMemInputPin*, IMemAllocator** allocator) {
    *allocator = nullptr;
    return S_OK;
}
