// CTransformFilter: its pins, its states and what a derived filter may override.

#include "dshow/transform_filter.h"

#include <cwchar>
#include <memory>
#include <new>

#include "dshow/helpers.h"

CTransformFilter::CTransformFilter(LPCTSTR pName, LPUNKNOWN pUnk, REFCLSID clsid)
    : CBaseFilter(pName, pUnk, &m_csFilter, clsid) {}

CTransformFilter::~CTransformFilter() {
    delete m_pInput;
    delete m_pOutput;
}

int CTransformFilter::GetPinCount() { return 2; }

CBasePin* CTransformFilter::GetPin(int n) {
    CAutoLock lock(&m_pinsLock);
    if (!m_pInput) {
        HRESULT hr = S_OK;
        std::unique_ptr<CTransformInputPin> input(
            new (std::nothrow) CTransformInputPin(NAME("input"), this, &hr, L"XForm In"));
        if (!input || FAILED(hr)) return nullptr;
        std::unique_ptr<CTransformOutputPin> output(
            new (std::nothrow) CTransformOutputPin(NAME("output"), this, &hr, L"XForm Out"));
        if (!output || FAILED(hr)) return nullptr;
        m_pOutput = output.release();
        m_pInput = input.release();
    }
    if (n == 0) return m_pInput;
    if (n == 1) return m_pOutput;
    return nullptr;
}

STDMETHODIMP CTransformFilter::FindPin(LPCWSTR id, IPin** ppPin) {
    CheckPointer(ppPin, E_POINTER);
    *ppPin = nullptr;
    int n;
    if (id && std::wcscmp(id, L"In") == 0) {
        n = 0;
    } else if (id && std::wcscmp(id, L"Out") == 0) {
        n = 1;
    } else {
        return VFW_E_NOT_FOUND;
    }
    CBasePin* pin = GetPin(n);
    CheckPointer(pin, E_OUTOFMEMORY);
    pin->AddRef();
    *ppPin = pin;
    return NOERROR;
}

STDMETHODIMP CTransformFilter::Stop() {
    CAutoLock filterLock(&m_csFilter);
    if (m_State == State_Stopped) return NOERROR;
    if (!m_pInput || !m_pOutput || !m_pInput->IsConnected() || !m_pOutput->IsConnected()) {
        m_State = State_Stopped;
        m_bEOSDelivered = FALSE;
        return NOERROR;
    }

    // The input pin comes first, so that a flush is over and its buffers are called back; the
    // streaming lock then waits for the sample in progress.
    m_pInput->Inactive();
    CAutoLock streamingLock(&m_csReceive);
    m_pOutput->Inactive();
    const HRESULT hr = StopStreaming();
    if (SUCCEEDED(hr)) {
        m_State = State_Stopped;
        m_bEOSDelivered = FALSE;
    }
    return hr;
}

STDMETHODIMP CTransformFilter::Pause() {
    CAutoLock filterLock(&m_csFilter);
    HRESULT hr = NOERROR;
    if (m_State == State_Paused) {
        // Nothing to do but to forget what happened before.
    } else if (!m_pInput || !m_pInput->IsConnected()) {
        // Whoever waits downstream would wait for ever: nothing will come.
        if (m_pOutput && !m_bEOSDelivered) {
            m_pOutput->DeliverEndOfStream();
            m_bEOSDelivered = TRUE;
        }
        m_State = State_Paused;
    } else if (!m_pOutput || !m_pOutput->IsConnected()) {
        m_State = State_Paused;
    } else {
        if (m_State == State_Stopped) {
            CAutoLock streamingLock(&m_csReceive);
            hr = StartStreaming();
        }
        if (SUCCEEDED(hr)) hr = CBaseFilter::Pause();
    }
    m_bSampleSkipped = FALSE;
    m_bQualityChanged = FALSE;
    return hr;
}

HRESULT CTransformFilter::Transform(IMediaSample*, IMediaSample*) { return E_UNEXPECTED; }

HRESULT CTransformFilter::StartStreaming() { return NOERROR; }

HRESULT CTransformFilter::StopStreaming() { return NOERROR; }

HRESULT CTransformFilter::AlterQuality(Quality) { return S_FALSE; }

HRESULT CTransformFilter::SetMediaType(PIN_DIRECTION, const CMediaType*) { return NOERROR; }

HRESULT CTransformFilter::CheckConnect(PIN_DIRECTION, IPin*) { return NOERROR; }

HRESULT CTransformFilter::BreakConnect(PIN_DIRECTION) { return NOERROR; }

HRESULT CTransformFilter::CompleteConnect(PIN_DIRECTION, IPin*) { return NOERROR; }
