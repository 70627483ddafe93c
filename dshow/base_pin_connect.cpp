// CBasePin: how two pins connect and part. All of it runs under the filter lock.

#include "dshow/base_pin.h"
#include "dshow/com_ptr.h"
#include "dshow/helpers.h"
#include "dshow/internal/release_member.h"
#include "dshow/internal/task_memory.h"

using tavo::ComPtr;
using tavo::dshow::OwnedMediaType;
using tavo::dshow::ReleaseMember;
using tavo::dshow::ViewMediaType;

namespace {

// Failures that say no more than "not this type": a later, more telling one replaces them.
bool IsPlainRefusal(HRESULT hr) {
    return hr == E_FAIL || hr == E_INVALIDARG || hr == VFW_E_TYPE_NOT_ACCEPTED;
}

// What a peer is told about a type that CheckMediaType did not answer with S_OK.
HRESULT RefusalOf(HRESULT hr) {
    return SUCCEEDED(hr) || IsPlainRefusal(hr) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
}

}  // namespace

STDMETHODIMP CBasePin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) {
    CheckPointer(pReceivePin, E_POINTER);
    CAutoLock lock(m_pLock);
    if (m_Connected) return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped() && !m_bCanReconnectWhenActive) return VFW_E_NOT_STOPPED;

    const HRESULT hr = AgreeMediaType(pReceivePin, ViewMediaType(pmt));
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    return NOERROR;
}

HRESULT CBasePin::AgreeMediaType(IPin* pReceivePin, const CMediaType* pmt) {
    if (pmt && !pmt->IsPartiallySpecified()) return AttemptConnection(pReceivePin, pmt);

    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (int turn = 0; turn < 2; ++turn) {
        const bool ownTypes = (turn == 0) == m_bTryMyTypesFirst;
        ComPtr<IEnumMediaTypes> types;
        HRESULT hr =
            ownTypes ? EnumMediaTypes(types.Put()) : pReceivePin->EnumMediaTypes(types.Put());
        if (FAILED(hr) || !types) continue;

        hr = TryMediaTypes(pReceivePin, pmt, types.Get());
        if (SUCCEEDED(hr)) return NOERROR;
        if (!IsPlainRefusal(hr)) failure = hr;
    }
    return failure;
}

HRESULT CBasePin::TryMediaTypes(IPin* pReceivePin, const CMediaType* pmt, IEnumMediaTypes* pEnum) {
    HRESULT hr = pEnum->Reset();
    if (FAILED(hr)) return hr;

    HRESULT failure = NOERROR;
    for (;;) {
        AM_MEDIA_TYPE* next = nullptr;
        ULONG fetched = 0;
        hr = pEnum->Next(1, &next, &fetched);
        if (hr != S_OK || !next) return FAILED(failure) ? failure : VFW_E_NO_ACCEPTABLE_TYPES;

        const OwnedMediaType record(next);
        const CMediaType* type = ViewMediaType(next);
        if (pmt && !type->MatchesPartial(pmt)) continue;

        hr = AttemptConnection(pReceivePin, type);
        if (hr == S_OK) return NOERROR;
        if (SUCCEEDED(hr)) {
            // CompleteConnect is not content with the type: the connection it made is taken back.
            pReceivePin->Disconnect();
            BreakConnect();
            ReleaseMember(m_Connected);
        } else if (SUCCEEDED(failure) && !IsPlainRefusal(hr)) {
            failure = hr;
        }
    }
}

HRESULT CBasePin::AttemptConnection(IPin* pReceivePin, const CMediaType* pmt) {
    HRESULT hr = CheckConnect(pReceivePin);
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }

    hr = CheckMediaType(pmt);
    if (hr == S_OK) {
        // Connected from here on, so that what the peer and the overrides ask finds it so.
        pReceivePin->AddRef();
        m_Connected = pReceivePin;
        hr = SetMediaType(pmt);
        if (SUCCEEDED(hr)) hr = pReceivePin->ReceiveConnection(this, pmt);
        if (SUCCEEDED(hr)) {
            hr = CompleteConnect(pReceivePin);
            if (SUCCEEDED(hr)) return hr;
            pReceivePin->Disconnect();
        }
    } else {
        hr = RefusalOf(hr);
    }

    BreakConnect();
    ReleaseMember(m_Connected);
    return hr;
}

STDMETHODIMP CBasePin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) {
    CheckPointer(pConnector, E_POINTER);
    CheckPointer(pmt, E_POINTER);
    CAutoLock lock(m_pLock);
    if (m_Connected) return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped() && !m_bCanReconnectWhenActive) return VFW_E_NOT_STOPPED;

    HRESULT hr = CheckConnect(pConnector);
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    const CMediaType* type = ViewMediaType(pmt);
    hr = CheckMediaType(type);
    if (hr != S_OK) {
        BreakConnect();
        return RefusalOf(hr);
    }

    pConnector->AddRef();
    m_Connected = pConnector;
    hr = SetMediaType(type);
    if (SUCCEEDED(hr)) hr = CompleteConnect(pConnector);
    if (SUCCEEDED(hr)) return NOERROR;

    ReleaseMember(m_Connected);
    BreakConnect();
    return hr;
}

STDMETHODIMP CBasePin::Disconnect() {
    CAutoLock lock(m_pLock);
    if (!IsStopped()) return VFW_E_NOT_STOPPED;
    return DisconnectInternal();
}

STDMETHODIMP CBasePin::DisconnectInternal() {
    if (!m_Connected) return S_FALSE;
    const HRESULT hr = BreakConnect();
    if (FAILED(hr)) return hr;
    ReleaseMember(m_Connected);
    return S_OK;
}
