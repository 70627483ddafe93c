// The pin of frames: their type, buffers that can wait, and frames as they come.

#include <algorithm>

#include "host/filters/avi_sink_filter.h"

namespace {

// What may wait for the disk: frames, and bytes of all buffers together.
constexpr long kMaxQueueLength = 8;
constexpr long kMaxBufferBytes = 64 << 20;

}  // namespace

CAviSinkPin::CAviSinkPin(CAviSink* filter, CCritSec* lock, HRESULT* phr)
    : CBaseInputPin(NAME("AVI sink pin"), filter, lock, phr, L"Input"), m_sink(*filter) {}

HRESULT CAviSinkPin::CheckMediaType(const CMediaType* type) {
    return tavo::ReadVideoType(*type) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CAviSinkPin::SetMediaType(const CMediaType* type) {
    const auto video = tavo::ReadVideoType(*type);
    if (!video) return VFW_E_TYPE_NOT_ACCEPTED;
    m_video = *video;
    return CBaseInputPin::SetMediaType(type);
}

STDMETHODIMP CAviSinkPin::GetAllocator(IMemAllocator** allocator) {
    CAutoLock lock(m_pLock);
    const bool isNew = m_pAllocator == nullptr;
    const HRESULT hr = CBaseInputPin::GetAllocator(allocator);
    if (SUCCEEDED(hr) && isNew) m_ownAllocator = tavo::ComPtr<IMemAllocator>(*allocator);
    return hr;
}

STDMETHODIMP CAviSinkPin::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
    CAutoLock lock(m_pLock);
    m_queueLength = 0;
    const HRESULT hr = CBaseInputPin::NotifyAllocator(allocator, readOnly);
    if (FAILED(hr) || allocator != m_ownAllocator.Get()) return hr;
    ALLOCATOR_PROPERTIES wish = {};
    if (FAILED(allocator->GetProperties(&wish)) || wish.cbBuffer <= 0) return hr;
    // One more buffer is for the source to fill.
    const long length = std::min(kMaxQueueLength, kMaxBufferBytes / wish.cbBuffer - 1);
    if (length < 1) return hr;
    ALLOCATOR_PROPERTIES granted = {};
    wish.cBuffers = std::max(wish.cBuffers, length + 1);
    if (SUCCEEDED(allocator->SetProperties(&wish, &granted))) m_queueLength = length;
    return hr;
}

STDMETHODIMP CAviSinkPin::Receive(IMediaSample* sample) {
    const HRESULT hr = CBaseInputPin::Receive(sample);
    if (hr != S_OK) return hr;
    if ((m_SampleProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0) {
        const auto video = tavo::ReadVideoType(*m_SampleProps.pMediaType);
        if (!video || video->video != m_video.video) {
            return m_sink.Refuse(VFW_E_TYPE_NOT_ACCEPTED);
        }
    }
    tavo::FrameWatch* const watch = m_sink.Watch();
    return watch != nullptr ? WriteWatched(sample, *watch) : m_sink.TakeFrame(sample);
}

HRESULT CAviSinkPin::WriteWatched(IMediaSample* sample, tavo::FrameWatch& watch) {
    watch.OutBegins();
    const bool wasShown = m_sink.IsShown();
    const HRESULT hr = m_sink.TakeFrame(sample);
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample->GetTime(&start, &stop);
    watch.OutEnds(tavo::TimesOf(times, start, stop), !wasShown && m_sink.IsShown(), SUCCEEDED(hr));
    return hr;
}

STDMETHODIMP CAviSinkPin::BeginFlush() {
    m_sink.EndPace();
    return CBaseInputPin::BeginFlush();
}

STDMETHODIMP CAviSinkPin::EndOfStream() {
    const HRESULT hr = CheckStreaming();
    if (hr != S_OK) return hr;
    m_sink.ReachEnd();
    return S_OK;
}
