// CTransformInputPin.

#include "dshow/helpers.h"
#include "dshow/transform_filter.h"
#include "dshow/transform_pins.h"
#include "dshow/wide_string.h"

CTransformInputPin::CTransformInputPin(LPCTSTR pObjectName, CTransformFilter* pTransformFilter,
                                       HRESULT* phr, LPCWSTR pName)
    : CBaseInputPin(pObjectName, pTransformFilter, &pTransformFilter->m_csFilter, phr, pName),
      m_pTransformFilter(pTransformFilter) {}

STDMETHODIMP CTransformInputPin::QueryId(LPWSTR* pId) { return AMGetWideString(L"In", pId); }

HRESULT CTransformInputPin::CheckConnect(IPin* pPin) {
    const HRESULT hr = m_pTransformFilter->CheckConnect(PINDIR_INPUT, pPin);
    return FAILED(hr) ? hr : CBaseInputPin::CheckConnect(pPin);
}

HRESULT CTransformInputPin::BreakConnect() {
    m_pTransformFilter->BreakConnect(PINDIR_INPUT);
    return CBaseInputPin::BreakConnect();
}

HRESULT CTransformInputPin::CompleteConnect(IPin* pReceivePin) {
    const HRESULT hr = m_pTransformFilter->CompleteConnect(PINDIR_INPUT, pReceivePin);
    return FAILED(hr) ? hr : CBaseInputPin::CompleteConnect(pReceivePin);
}

HRESULT CTransformInputPin::CheckMediaType(const CMediaType* pmt) {
    const HRESULT hr = m_pTransformFilter->CheckInputType(pmt);
    if (hr != S_OK) return hr;
    CTransformOutputPin* output = m_pTransformFilter->m_pOutput;
    if (!output || !output->IsConnected()) return hr;
    return m_pTransformFilter->CheckTransform(pmt, &output->CurrentMediaType());
}

HRESULT CTransformInputPin::SetMediaType(const CMediaType* pmt) {
    const HRESULT hr = CBaseInputPin::SetMediaType(pmt);
    return FAILED(hr) ? hr : m_pTransformFilter->SetMediaType(PINDIR_INPUT, pmt);
}

HRESULT CTransformInputPin::CheckStreaming() {
    CTransformOutputPin* output = m_pTransformFilter->m_pOutput;
    if (!output || !output->IsConnected()) return VFW_E_NOT_CONNECTED;
    if (IsFlushing()) return S_FALSE;
    if (IsStopped()) return VFW_E_WRONG_STATE;
    if (m_bRunTimeError) return VFW_E_RUNTIME_ERROR;
    return S_OK;
}

STDMETHODIMP CTransformInputPin::Receive(IMediaSample* pSample) {
    CAutoLock lock(&m_pTransformFilter->m_csReceive);
    const HRESULT hr = CBaseInputPin::Receive(pSample);
    return hr == S_OK ? m_pTransformFilter->Receive(pSample) : hr;
}

STDMETHODIMP CTransformInputPin::EndOfStream() {
    CAutoLock lock(&m_pTransformFilter->m_csReceive);
    const HRESULT hr = CheckStreaming();
    return hr == S_OK ? m_pTransformFilter->EndOfStream() : hr;
}

STDMETHODIMP CTransformInputPin::BeginFlush() {
    CAutoLock lock(&m_pTransformFilter->m_csFilter);
    CTransformOutputPin* output = m_pTransformFilter->m_pOutput;
    if (!IsConnected() || !output || !output->IsConnected()) return VFW_E_NOT_CONNECTED;
    const HRESULT hr = CBaseInputPin::BeginFlush();
    return FAILED(hr) ? hr : m_pTransformFilter->BeginFlush();
}

STDMETHODIMP CTransformInputPin::EndFlush() {
    CAutoLock lock(&m_pTransformFilter->m_csFilter);
    CTransformOutputPin* output = m_pTransformFilter->m_pOutput;
    if (!IsConnected() || !output || !output->IsConnected()) return VFW_E_NOT_CONNECTED;
    const HRESULT hr = m_pTransformFilter->EndFlush();
    return FAILED(hr) ? hr : CBaseInputPin::EndFlush();
}

STDMETHODIMP CTransformInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop,
                                            double rate) {
    CBasePin::NewSegment(tStart, tStop, rate);
    return m_pTransformFilter->NewSegment(tStart, tStop, rate);
}
