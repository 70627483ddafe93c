// CBaseInputPin.

#include "dshow/base_input_pin.h"

#include "dshow/com_ptr.h"
#include "dshow/helpers.h"
#include "dshow/internal/memory_allocator.h"
#include "dshow/internal/release_member.h"
#include "dshow/internal/task_memory.h"

using tavo::ComPtr;
using tavo::QueryFor;
using tavo::dshow::ReleaseMember;
using tavo::dshow::ViewMediaType;

CBaseInputPin::CBaseInputPin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock,
                             HRESULT* phr, LPCWSTR pName)
    : CBasePin(pObjectName, pFilter, pLock, phr, pName, PINDIR_INPUT) {}

CBaseInputPin::~CBaseInputPin() {
    ReleaseMember(m_pAllocator);
    DeleteMediaType(m_sampleType);
}

STDMETHODIMP CBaseInputPin::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IMemInputPin) return GetInterface(static_cast<IMemInputPin*>(this), ppv);
    return CBasePin::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CBaseInputPin::GetAllocator(IMemAllocator** ppAllocator) {
    CheckPointer(ppAllocator, E_POINTER);
    CAutoLock lock(m_pLock);
    *ppAllocator = nullptr;
    if (!m_pAllocator) {
        const HRESULT hr = tavo::dshow::CreateMemoryAllocator(&m_pAllocator);
        if (FAILED(hr)) return hr;
    }
    m_pAllocator->AddRef();
    *ppAllocator = m_pAllocator;
    return NOERROR;
}

STDMETHODIMP CBaseInputPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL readOnly) {
    CheckPointer(pAllocator, E_POINTER);
    CAutoLock lock(m_pLock);
    pAllocator->AddRef();
    ReleaseMember(m_pAllocator);
    m_pAllocator = pAllocator;
    m_bReadOnly = readOnly ? TRUE : FALSE;
    return NOERROR;
}

STDMETHODIMP CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) { return E_NOTIMPL; }

STDMETHODIMP CBaseInputPin::ReceiveMultiple(IMediaSample** ppSamples, long n, long* pProcessed) {
    CheckPointer(ppSamples, E_POINTER);
    HRESULT hr = S_OK;
    long processed = 0;
    while (processed < n) {
        hr = Receive(ppSamples[processed]);
        if (hr != S_OK) break;
        ++processed;
    }
    if (pProcessed) *pProcessed = processed;
    return hr;
}

STDMETHODIMP CBaseInputPin::ReceiveCanBlock() {
    int connectedOutputs = 0;
    const int count = m_pFilter->GetPinCount();
    for (int i = 0; i < count; ++i) {
        CBasePin* pin = m_pFilter->GetPin(i);
        PIN_DIRECTION direction = PINDIR_INPUT;
        if (!pin || FAILED(pin->QueryDirection(&direction)) || direction != PINDIR_OUTPUT) continue;

        ComPtr<IPin> peer;
        if (FAILED(pin->ConnectedTo(peer.Put()))) continue;
        ++connectedOutputs;
        const auto input = QueryFor<IMemInputPin>(peer.Get(), IID_IMemInputPin);
        if (!input || input->ReceiveCanBlock() != S_FALSE) return S_OK;
    }
    return connectedOutputs ? S_FALSE : S_OK;
}

STDMETHODIMP CBaseInputPin::BeginFlush() {
    CAutoLock lock(m_pLock);
    m_bFlushing = TRUE;
    return S_OK;
}

STDMETHODIMP CBaseInputPin::EndFlush() {
    CAutoLock lock(m_pLock);
    m_bFlushing = FALSE;
    m_bRunTimeError = false;
    return S_OK;
}

STDMETHODIMP CBaseInputPin::Notify(IBaseFilter* pSender, Quality) {
    CheckPointer(pSender, E_POINTER);
    return NOERROR;
}

HRESULT CBaseInputPin::BreakConnect() {
    if (m_pAllocator) {
        const HRESULT hr = m_pAllocator->Decommit();
        if (FAILED(hr)) return hr;
        ReleaseMember(m_pAllocator);
    }
    return NOERROR;
}

HRESULT CBaseInputPin::Inactive() {
    m_bRunTimeError = false;
    if (!m_pAllocator) return VFW_E_NO_ALLOCATOR;
    m_bFlushing = FALSE;
    return m_pAllocator->Decommit();
}

HRESULT CBaseInputPin::CheckStreaming() {
    if (IsStopped()) return VFW_E_WRONG_STATE;
    if (m_bFlushing) return S_FALSE;
    if (m_bRunTimeError) return VFW_E_RUNTIME_ERROR;
    return S_OK;
}

HRESULT CBaseInputPin::PassNotify(Quality& q) {
    if (m_pQSink) return m_pQSink->Notify(m_pFilter, q);
    const auto upstream = QueryFor<IQualityControl>(m_Connected, IID_IQualityControl);
    return upstream ? upstream->Notify(m_pFilter, q) : VFW_E_NOT_FOUND;
}

STDMETHODIMP CBaseInputPin::Receive(IMediaSample* pSample) {
    CheckPointer(pSample, E_POINTER);
    HRESULT hr = CheckStreaming();
    if (hr != S_OK) return hr;

    hr = ReadProperties(pSample);
    if (FAILED(hr)) return hr;
    if (!(m_SampleProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED)) return NOERROR;

    const AM_MEDIA_TYPE* type = m_SampleProps.pMediaType;
    if (type && CheckMediaType(ViewMediaType(type)) == S_OK) return NOERROR;

    m_bRunTimeError = true;
    EndOfStream();
    m_pFilter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
    return VFW_E_INVALIDMEDIATYPE;
}

HRESULT CBaseInputPin::ReadProperties(IMediaSample* pSample) {
    m_SampleProps = {};
    DeleteMediaType(m_sampleType);
    m_sampleType = nullptr;

    if (const auto sample = QueryFor<IMediaSample2>(pSample, IID_IMediaSample2)) {
        return sample->GetProperties(sizeof(m_SampleProps),
                                     reinterpret_cast<BYTE*>(&m_SampleProps));
    }
    return ReadPropertiesByHand(pSample);
}

HRESULT CBaseInputPin::ReadPropertiesByHand(IMediaSample* pSample) {
    AM_SAMPLE2_PROPERTIES& props = m_SampleProps;
    props.cbData = sizeof(props);
    props.dwStreamId = AM_STREAM_MEDIA;
    if (pSample->IsDiscontinuity() == S_OK) props.dwSampleFlags |= AM_SAMPLE_DATADISCONTINUITY;
    if (pSample->IsPreroll() == S_OK) props.dwSampleFlags |= AM_SAMPLE_PREROLL;
    if (pSample->IsSyncPoint() == S_OK) props.dwSampleFlags |= AM_SAMPLE_SPLICEPOINT;
    if (SUCCEEDED(pSample->GetTime(&props.tStart, &props.tStop))) {
        props.dwSampleFlags |= AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID;
    }
    if (pSample->GetMediaType(&m_sampleType) == S_OK) {
        props.dwSampleFlags |= AM_SAMPLE_TYPECHANGED;
        props.pMediaType = m_sampleType;
    }
    props.cbBuffer = pSample->GetSize();
    props.lActual = pSample->GetActualDataLength();
    return pSample->GetPointer(&props.pbBuffer);
}
