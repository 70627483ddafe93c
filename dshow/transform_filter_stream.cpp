// CTransformFilter: the way of a sample, and the events of the stream.

#include <cstddef>

#include "dshow/com_ptr.h"
#include "dshow/transform_filter.h"

using tavo::ComPtr;
using tavo::QueryFor;

namespace {

// Bytes of the properties before the times, and before the stream id: what is read from an output
// sample, and what is written to it.
constexpr DWORD kBytesBeforeTimes = offsetof(AM_SAMPLE2_PROPERTIES, tStart);
constexpr DWORD kBytesBeforeStreamId = offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId);
static_assert(kBytesBeforeTimes == 16 && kBytesBeforeStreamId == 32);

// The type flag stays the output sample's own, and its type, stream id and length are not touched.
void CarryProperties(const AM_SAMPLE2_PROPERTIES& input, IMediaSample2* output) {
    AM_SAMPLE2_PROPERTIES props = {};
    output->GetProperties(kBytesBeforeTimes, reinterpret_cast<BYTE*>(&props));
    props.cbData = kBytesBeforeStreamId;
    props.dwTypeSpecificFlags = input.dwTypeSpecificFlags;
    props.dwSampleFlags = (props.dwSampleFlags & AM_SAMPLE_TYPECHANGED) |
                          (input.dwSampleFlags & ~AM_SAMPLE_TYPECHANGED);
    props.tStart = input.tStart;
    props.tStop = input.tStop;
    output->SetProperties(kBytesBeforeStreamId, reinterpret_cast<const BYTE*>(&props));
}

// The same for a sample without properties, as far as its methods go.
void CarryByHand(AM_SAMPLE2_PROPERTIES& input, IMediaSample* inputSample, IMediaSample* output) {
    if (input.dwSampleFlags & AM_SAMPLE_TIMEVALID) output->SetTime(&input.tStart, &input.tStop);
    if (input.dwSampleFlags & AM_SAMPLE_SPLICEPOINT) output->SetSyncPoint(TRUE);
    if (input.dwSampleFlags & AM_SAMPLE_DATADISCONTINUITY) output->SetDiscontinuity(TRUE);
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    if (inputSample->GetMediaTime(&mediaStart, &mediaStop) == NOERROR) {
        output->SetMediaTime(&mediaStart, &mediaStop);
    }
}

}  // namespace

HRESULT CTransformFilter::InitializeOutputSample(IMediaSample* pSample,
                                                 IMediaSample** ppOutSample) {
    *ppOutSample = nullptr;
    if (!m_pOutput->m_pAllocator) return VFW_E_NO_ALLOCATOR;

    AM_SAMPLE2_PROPERTIES& input = *m_pInput->SampleProps();
    DWORD flags = 0;
    if (m_bSampleSkipped) flags |= AM_GBF_PREVFRAMESKIPPED;
    if (!(input.dwSampleFlags & AM_SAMPLE_SPLICEPOINT)) flags |= AM_GBF_NOTASYNCPOINT;

    ComPtr<IMediaSample> output;
    const HRESULT hr = m_pOutput->m_pAllocator->GetBuffer(
        output.Put(), input.dwSampleFlags & AM_SAMPLE_TIMEVALID ? &input.tStart : nullptr,
        input.dwSampleFlags & AM_SAMPLE_STOPVALID ? &input.tStop : nullptr, flags);
    if (FAILED(hr)) {
        output.Detach();
        return hr;
    }
    if (!output) return E_FAIL;

    if (const auto output2 = QueryFor<IMediaSample2>(output.Get(), IID_IMediaSample2)) {
        CarryProperties(input, output2.Get());
    } else {
        CarryByHand(input, pSample, output.Get());
    }
    if (input.dwSampleFlags & AM_SAMPLE_DATADISCONTINUITY) m_bSampleSkipped = FALSE;
    *ppOutSample = output.Detach();
    return S_OK;
}

HRESULT CTransformFilter::Receive(IMediaSample* pSample) {
    if (!m_pOutput->m_pInputPin) return VFW_E_NOT_CONNECTED;
    if (m_pInput->SampleProps()->dwStreamId != AM_STREAM_MEDIA) {
        return m_pOutput->m_pInputPin->Receive(pSample);
    }

    ComPtr<IMediaSample> output;
    HRESULT hr = InitializeOutputSample(pSample, output.Put());
    if (FAILED(hr)) return hr;

    hr = Transform(pSample, output.Get());
    if (hr == S_FALSE) {
        // Released before the event: the sample may hold a lock of the display.
        output.Reset();
        m_bSampleSkipped = TRUE;
        if (!m_bQualityChanged) {
            NotifyEvent(EC_QUALITY_CHANGE, 0, 0);
            m_bQualityChanged = TRUE;
        }
        // S_FALSE would ask the source to send no more.
        return NOERROR;
    }
    if (hr != S_OK) return hr;
    hr = m_pOutput->m_pInputPin->Receive(output.Get());
    m_bSampleSkipped = FALSE;
    return hr;
}

HRESULT CTransformFilter::EndOfStream() {
    return m_pOutput ? m_pOutput->DeliverEndOfStream() : NOERROR;
}

HRESULT CTransformFilter::BeginFlush() {
    return m_pOutput ? m_pOutput->DeliverBeginFlush() : NOERROR;
}

HRESULT CTransformFilter::EndFlush() { return m_pOutput ? m_pOutput->DeliverEndFlush() : NOERROR; }

HRESULT CTransformFilter::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate) {
    return m_pOutput ? m_pOutput->DeliverNewSegment(tStart, tStop, rate) : S_OK;
}
